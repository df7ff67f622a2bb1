#include "examples/instrument/ModuleBase.h"
#include "examples/instrument/SettingsDatabase.h"

namespace Orvia {

/// The reference oscillator, option REFCLOCK: takes up the source that was chosen last.
class RefClockModule final : public ModuleBase<>
{
public:
    using ModuleBase::ModuleBase;

    int initialize(VQMAnchorInterface *anchor, int /*parts*/) override
    {
        const SettingsDatabase *settings = SettingsDatabase::of(anchor);
        const bool external = settings != nullptr && settings->value("reference/source", "INT") == "EXT";
        log(QString("Reference clock: %1, 10 MHz").arg(external ? "external" : "internal"));
        return 0;
    }

    void terminate(VQMAnchorInterface * /*anchor*/) override { log("Reference clock: off"); }
};

} // namespace Orvia

VQM_MODULE(Orvia::RefClockModule)
