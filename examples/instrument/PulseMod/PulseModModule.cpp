#include "examples/instrument/ModuleBase.h"
#include "examples/instrument/SettingsDatabase.h"
#include "examples/instrument/SourceSettings.h"

namespace Orvia {

namespace {

constexpr VQMModuleInfo moduleInfo = {{0, 0}, 1, 0, 0, "PulseMod", 21, VQMBaseModule, 0, signalGenerators};

constexpr NumberSetting pulseWidth = {"pulse/width", 20e-9, 1.0, 1e-6}; // in s

} // namespace

/// The pulse modulator, option PULSE: takes up the pulse width that was set last.
class PulseModModule final : public ModuleBase<>
{
public:
    explicit PulseModModule(int id) : ModuleBase(moduleInfo, id) {}

    int initialize(VQMAnchorInterface *anchor, int /*parts*/) override
    {
        const SettingsDatabase *settings = SettingsDatabase::of(anchor);
        const double width =
            settings != nullptr ? storedNumber(*settings, pulseWidth) : pulseWidth.defaultValue;
        log(QString("Pulse modulator: width %1 ns").arg(width * 1e9));
        return 0;
    }

    void terminate(VQMAnchorInterface * /*anchor*/) override { log("Pulse modulator: off"); }
};

} // namespace Orvia

VQM_MODULE_ENTRY_POINTS(Orvia::PulseModModule, Orvia::moduleInfo)
