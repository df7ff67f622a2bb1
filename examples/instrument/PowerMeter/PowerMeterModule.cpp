#include "examples/instrument/ModuleBase.h"
#include "examples/instrument/SettingsDatabase.h"
#include "examples/instrument/SourceSettings.h"

namespace Orvia {

namespace {

constexpr NumberSetting averages = {"meter/averages", 1, 1024, 16};

} // namespace

/// The measuring half of a power meter: takes up the averaging that was set last. Serves power meters alone,
/// so that a signal generator whose list names it drops it.
class PowerMeterModule final : public ModuleBase<>
{
public:
    using ModuleBase::ModuleBase;

    int initialize(VQMAnchorInterface *anchor, int /*parts*/) override
    {
        const SettingsDatabase *settings = SettingsDatabase::of(anchor);
        const double count = settings != nullptr ? storedNumber(*settings, averages) : averages.defaultValue;
        log(QString("Power meter: %1 averages").arg(count));
        return 0;
    }

    void terminate(VQMAnchorInterface * /*anchor*/) override { log("Power meter: off"); }
};

} // namespace Orvia

VQM_MODULE(Orvia::PowerMeterModule)
