#include "gui/VQMMainGui.h"
#include "gui/VQMStartupWindow.h"
#include "platform/VQMProperties.h"

#include <QFile>
#include <QTextEdit>
#include <QTextStream>
#include <QVBoxLayout>

namespace Orvia {

void VQMMainGui::displayReleaseNotes() const
{
    const QString path = VQMProperties::getStringProperty("StartupProcess", "ReleaseNotes",
                                                          "y:\\VQM-Gui\\vqm_release_notes.txt", 0, nullptr);
    if (path == "<null>" || path.isEmpty())
        return;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;

    auto *window = new VQMStartupWindow; // stays until the process ends; closing it only hides it
    auto *contents = new QWidget(window);
    auto *layout = new QVBoxLayout(contents);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *view = new QTextEdit(contents);
    layout->addWidget(view);
    window->setCentralWidget(contents);

    QTextStream stream(&file);
    view->setFont(QFont("Courier", 10));
    view->setLineWrapMode(QTextEdit::NoWrap);
    view->setText(stream.readAll());
    view->moveCursor(QTextCursor::Start);
    window->setWindowTitle("VQM Firmware Demonstration Notes");
    window->setGeometry(0, 20, 800, 580);
    window->show();
}

} // namespace Orvia
