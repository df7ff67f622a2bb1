/// A Gui module with a window; VQM_TEST_WINDOW chooses what happens once start-up is complete.

#include "platform/VQMUtility.h"
#include "registry/VQMModule.h"
#include "tests/modules/ModuleLog.h"

#include <QApplication>
#include <QEventLoop>
#include <QLabel>
#include <QTimer>

#include <memory>
#include <string_view>

namespace {

bool isAskedTo(std::string_view what)
{
    const char *chosen = std::getenv("VQM_TEST_WINDOW");
    return chosen != nullptr && what == chosen;
}

class WindowModule : public Orvia::VQMModule<>
{
public:
    using VQMModule::VQMModule;
    int initialize(Orvia::VQMAnchorInterface *, int) override
    {
        m_window = std::make_unique<QLabel>("The window");
        m_window->setObjectName("window");
        m_window->resize(320, 200);
        return 0;
    }
    QWidget *getMainWidget() override { return m_window.get(); }
    void startGui(Orvia::VQMAnchorInterface *) override
    {
        moduleLog("startGui");
        if (m_window != nullptr && !isAskedTo("stay hidden"))
            m_window->show();
    }
    void completeFinished() override
    {
        if (isAskedTo("close"))
            QTimer::singleShot(0, m_window.get(), [this] { m_window->close(); });
        else if (isAskedTo("run an event loop"))
            QTimer::singleShot(0, qApp, &WindowModule::runEventLoop);
    }
    void terminate(Orvia::VQMAnchorInterface *) override
    {
        moduleLog("terminate");
        Orvia::VQMUtility::runOnGuiThread([this] { m_window.reset(); });
    }

private:
    static void runEventLoop()
    {
        std::fputs("in an event loop\n", stderr);
        QEventLoop().exec();
        moduleLog("leftEventLoop");
    }

    std::unique_ptr<QLabel> m_window;
};

} // namespace

VQM_MODULE(WindowModule)
