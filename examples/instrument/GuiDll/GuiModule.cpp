#include "examples/instrument/FrontPanel.h"
#include "examples/instrument/GuiDll/FrontPanelWindow.h"
#include "examples/instrument/ModuleBase.h"
#include "examples/instrument/SettingsDatabase.h"
#include "platform/VQMUtility.h"

#include <QApplication>
#include <QPointer>

#include <utility>

namespace Orvia {

/// The GuiDll module: owns the window of the front panel.
///
/// initialize() and startGui() run on the GUI thread, terminate() and the destructor on the thread that takes
/// the modules down, while the GUI thread's event loop runs.
class GuiModule final : public ModuleBase<FrontPanel, FrontPanel::interfaceMajor>
{
public:
    using ModuleBase::ModuleBase;
    ~GuiModule() override { takeDown(); }

    int initialize(VQMAnchorInterface *anchor, int /*parts*/) override
    {
        takeDown();
        m_isUp = true;
        m_settings = SettingsDatabase::of(anchor);
        m_window = new FrontPanelWindow(m_settings, [this](const QString &text) { log("GUI: " + text); });
        if (m_settings != nullptr)
            m_subscription = m_settings->subscribe([window = m_window](const SettingsMap &) {
                // In the context of the application: the window may be gone when the turn comes.
                QMetaObject::invokeMethod(
                    qApp,
                    [window] {
                        if (window != nullptr)
                            window->refresh();
                    },
                    Qt::QueuedConnection);
            });
        log("GUI: initialized");
        return 0;
    }

    void terminate(VQMAnchorInterface * /*anchor*/) override
    {
        takeDown();
        log("GUI: terminated");
    }

    void modulesFinished() override { log("GUI: all base modules are up"); }
    void completeFinished() override { log("GUI: start-up is complete"); }
    void terminateModules() override { log("GUI: the base modules go down"); }

    QWidget *getMainWidget() override { return m_window; }
    void startGui(VQMAnchorInterface * /*anchor*/) override
    {
        if (m_window == nullptr)
            return;
        m_window->refresh();
        m_window->show();
        log("GUI: started");
    }

    void addPage(QWidget *page) override
    {
        if (m_window != nullptr)
            m_window->addPage(page);
    }
    void removePage(QWidget *page) override
    {
        if (m_window != nullptr)
            m_window->removePage(page);
    }

private:
    /// Closes the window for good and returns when nothing of this library waits on the GUI thread any more:
    /// what listeners posted there comes before this.
    void takeDown()
    {
        if (!std::exchange(m_isUp, false))
            return;
        if (m_settings != nullptr)
            m_settings->unsubscribe(m_subscription);
        m_settings = nullptr;
        VQMUtility::runOnGuiThread([this] { delete m_window; });
    }

    bool m_isUp = false;
    SettingsDatabase *m_settings = nullptr;
    int m_subscription = 0;
    QPointer<FrontPanelWindow> m_window;
};

} // namespace Orvia

VQM_MODULE(Orvia::GuiModule)
