#include "examples/instrument/ModuleBase.h"
#include "examples/instrument/SettingsDatabase.h"
#include "examples/instrument/SourceSettings.h"

namespace Orvia {

namespace {

constexpr NumberSetting starts = {"service/starts", 0, 1e9, 0};

} // namespace

/// Counts how often the instrument was switched on.
class ServiceCounterModule final : public ModuleBase<>
{
public:
    using ModuleBase::ModuleBase;

    int initialize(VQMAnchorInterface *anchor, int /*parts*/) override
    {
        SettingsDatabase *settings = SettingsDatabase::of(anchor);
        if (settings == nullptr)
            return 0;
        const double count = storedNumber(*settings, starts) + 1;
        settings->set({{starts.key, numberText(count)}});
        log(QString("Service counter: start number %1").arg(count));
        return 0;
    }

    void terminate(VQMAnchorInterface * /*anchor*/) override {}
};

} // namespace Orvia

VQM_MODULE(Orvia::ServiceCounterModule)
