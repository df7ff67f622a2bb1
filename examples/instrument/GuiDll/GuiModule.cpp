#include "examples/instrument/ModuleBase.h"
#include "examples/instrument/SettingsDatabase.h"

namespace Orvia {

namespace {

constexpr VQMModuleInfo moduleInfo = {{0, 0},          1, 0, 0, "GuiDll", VQMGuiId, VQMBaseModule, 0,
                                      signalGenerators};

} // namespace

/// The GuiDll module: follows the settings and the stages of start-up and says so in the log.
///
/// initialize() runs on the GUI thread, terminate() on the thread that takes the modules down, the listener
/// on whichever thread changes a setting.
class GuiModule final : public ModuleBase<>
{
public:
    explicit GuiModule(int id) : ModuleBase(moduleInfo, id) {}

    int initialize(VQMAnchorInterface *anchor, int /*parts*/) override
    {
        m_settings = SettingsDatabase::of(anchor);
        if (m_settings != nullptr)
            m_subscription =
                m_settings->subscribe([this](const SettingsMap &changed) { logChanges(changed); });
        log("GUI: initialized");
        return 0;
    }

    void terminate(VQMAnchorInterface * /*anchor*/) override
    {
        if (m_settings != nullptr)
            m_settings->unsubscribe(m_subscription);
        m_settings = nullptr;
        log("GUI: terminated");
    }

    void modulesFinished() override { log("GUI: all base modules are up"); }
    void completeFinished() override { log("GUI: start-up is complete"); }
    void terminateModules() override { log("GUI: the base modules go down"); }
    void startGui(VQMAnchorInterface * /*anchor*/) override { log("GUI: started"); }

private:
    void logChanges(const SettingsMap &changed) const
    {
        for (const auto &[key, value] : changed)
            log(QString("GUI: %1 is %2").arg(QString::fromStdString(key), QString::fromStdString(value)));
    }

    SettingsDatabase *m_settings = nullptr;
    int m_subscription = 0;
};

} // namespace Orvia

VQM_MODULE_ENTRY_POINTS(Orvia::GuiModule, Orvia::moduleInfo)
