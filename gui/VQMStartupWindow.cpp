#include "gui/VQMStartupWindow.h"

#include "gui/EGuiEventType.h"

#include <QApplication>
#include <QEvent>

namespace Orvia {

VQMStartupWindow::VQMStartupWindow() : QMainWindow(nullptr, Qt::Window)
{
    installEventFilter(this);
}

VQMStartupWindow::~VQMStartupWindow() = default;

void VQMStartupWindow::show()
{
    QApplication::postEvent(this, new QEvent(static_cast<QEvent::Type>(eShowWindow)));
}

void VQMStartupWindow::setVisible(bool visible)
{
    // QWidget::show() is not virtual; all ways of showing a window meet here.
    if (visible)
        show();
    else
        QMainWindow::setVisible(false);
}

bool VQMStartupWindow::eventFilter(QObject *, QEvent *event)
{
    if (event->type() != static_cast<QEvent::Type>(eShowWindow))
        return false;
    QMainWindow::setVisible(true);
    return true;
}

} // namespace Orvia
