/// A module that does one thing out of the ordinary, chosen by the environment variable VQM_TEST_PROBE.

#include "gui/EGuiEventType.h"
#include "gui/MainWidget.h"
#include "gui/VQMMainGui.h"
#include "platform/Debug.h"
#include "platform/VQMUtility.h"
#include "registry/VQMModule.h"

#include <QApplication>
#include <QEvent>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <string_view>
#include <unistd.h>

namespace {

bool isAskedTo(std::string_view what)
{
    const char *chosen = std::getenv("VQM_TEST_PROBE");
    return chosen != nullptr && what == chosen;
}

/// Says that it waits, until the test has opened and closed the pipe that VQM_TEST_GATE names.
void passGate()
{
    std::fputs("at the gate\n", stderr);
    const int gate = open(std::getenv("VQM_TEST_GATE"), O_RDONLY);
    char byte;
    while (read(gate, &byte, 1) > 0)
        ;
    close(gate);
}

template <typename Work>
void onGuiThread(Work work)
{
    Orvia::VQMUtility::runOnGuiThread(work);
}

QPushButton *abortButton()
{
    const QWidgetList widgets = QApplication::allWidgets();
    for (QWidget *widget : widgets) {
        if (auto *button = qobject_cast<QPushButton *>(widget);
            button != nullptr && !button->isHidden() && button->text() == "Abort")
            return button;
    }
    return nullptr;
}

/// Says what the user sees: "seen:" and the windows with a name, "*" behind the main one, and the abort
/// button.
void describeWindows()
{
    QString seen;
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (const QWidget *window : windows) {
        if (!window->objectName().isEmpty())
            seen += ' ' + window->objectName() + (window == Orvia::mainWidget() ? "*" : "");
    }
    seen += abortButton() != nullptr ? " Abort" : "";
    std::fprintf(stderr, "seen:%s\n", qPrintable(seen));
}

/// Shows a message box, says when it is there, and closes it if it is asked to.
void showMessageBox(const QString &text)
{
    if (!isAskedTo("close message boxes") && !isAskedTo("leave a message box"))
        return;
    onGuiThread([] {
        auto *timer = new QTimer(QCoreApplication::instance());
        QObject::connect(timer, &QTimer::timeout, timer, [timer] {
            const QWidgetList windows = QApplication::topLevelWidgets();
            for (QWidget *window : windows) {
                auto *box = qobject_cast<QMessageBox *>(window);
                if (box == nullptr || box->windowTitle() != "Probe" || !box->isVisible())
                    continue;
                std::fprintf(stderr, "box: %s\n", qPrintable(box->text()));
                timer->stop();
                timer->deleteLater(); // before this library goes
                if (isAskedTo("close message boxes"))
                    box->accept();
            }
        });
        timer->start(1);
    });
    Orvia::Debug::debugMessageBox("Probe", text, true, 0, 0, 0, 0);
    std::fputs("box is closed\n", stderr);
}

void postStartGui()
{
    if (isAskedTo("start the Gui stage at all times"))
        QCoreApplication::postEvent(Orvia::VQMMainGui::receiver,
                                    new QEvent(static_cast<QEvent::Type>(Orvia::eStartGui)));
}

class ProbeModule : public Orvia::VQMModule<>
{
public:
    using VQMModule::VQMModule;
    const char *getModuleName() override { return VQM_MODULE_NAME; } // not by way of the gate below
    int initialize(Orvia::VQMAnchorInterface *, int) override
    {
        if (isAskedTo("wait in initialize"))
            passGate();
        else if (isAskedTo("throw later"))
            QTimer::singleShot(0, [] { throw std::runtime_error("too late"); });
        else if (isAskedTo("describe the windows"))
            onGuiThread(describeWindows);
        showMessageBox("start-up thread");
        postStartGui();
        return 0;
    }
    void modulesFinished() override
    {
        if (isAskedTo("quit"))
            QTimer::singleShot(0, &QCoreApplication::quit);
        else if (isAskedTo("throw later on the GUI thread"))
            QTimer::singleShot(0, [] { throw 5; });
    }
    void completeFinished() override
    {
        if (m_isUp)
            std::fputs("up again\n", stderr);
        else
            postStartGui();
        m_isUp = true;
        showMessageBox("GUI thread");
    }
    void terminateModules() override
    {
        postStartGui();
        if (isAskedTo("describe the windows"))
            onGuiThread(describeWindows);
    }
    void terminate(Orvia::VQMAnchorInterface *) override
    {
        if (isAskedTo("call the GUI thread"))
            onGuiThread([] {});
    }

private:
    bool m_isUp = false;
};

} // namespace

extern "C" const Orvia::VQMModuleInfo *VQMGetModuleInfo()
{
    static const Orvia::VQMModuleInfo info = VQM_MODULE_INFO;
    if (isAskedTo("wait in discovery"))
        passGate();
    else if (isAskedTo("abort discovery"))
        onGuiThread([] { abortButton()->click(); });
    return &info;
}

extern "C" Orvia::VQMModuleInterface *VQMCreateModuleInterfaceInstance(int id)
{
    return new ProbeModule(id);
}
