#include "examples/instrument/ModuleBase.h"
#include "examples/instrument/SettingsDatabase.h"
#include "examples/instrument/SourceSettings.h"

namespace Orvia {

namespace {

/// A module type that this generation of the start-up does not know: it drops the module.
constexpr int serviceModule = 0x2;

constexpr VQMModuleInfo moduleInfo = {{0, 0},          1, 0, 0, "ServiceCounter", 14, serviceModule, 0,
                                      signalGenerators};

constexpr NumberSetting starts = {"service/starts", 0, 1e9, 0};

} // namespace

/// Counts how often the instrument was switched on.
class ServiceCounterModule final : public ModuleBase<>
{
public:
    explicit ServiceCounterModule(int id) : ModuleBase(moduleInfo, id) {}

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

VQM_MODULE_ENTRY_POINTS(Orvia::ServiceCounterModule, Orvia::moduleInfo)
