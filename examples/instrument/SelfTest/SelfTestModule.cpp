#include "examples/instrument/ModuleBase.h"
#include "examples/instrument/SelfTest/SelfTestChecks.h"
#include "platform/ErrorManager.h"

namespace Orvia {

namespace {

constexpr int registrationId = 112;
constexpr int noDatabase = 62001;
constexpr int selfTestFailed = 62002;
constexpr int illegalDateAndTime = 10009; // of the start-up library's own table

constexpr CErrorManager::SErrorDefinition selfTestErrors[] = {
    {selfTestFailed, 1, -330, 0, "Self-test failed", "", ""},
    {-1, 0, 0, 0, "", "", ""},
};

} // namespace

/// Runs the self-test once at start-up. Faults go to the error queue and do not keep the instrument from
/// coming up: the operator needs it to put them right.
class SelfTestModule final : public ModuleBase<>
{
public:
    using ModuleBase::ModuleBase;

    int initialize(VQMAnchorInterface *anchor, int /*parts*/) override
    {
        ErrorManager()->registerErrors(selfTestErrors, registrationId);
        SettingsDatabase *settings = SettingsDatabase::of(anchor);
        if (settings == nullptr)
            return logError("Self-test: no settings database", noDatabase);
        const SelfTestResult result = runSelfTest(*settings);
        for (const QString &reason : result.reasons)
            logError("Self-test: " + reason, selfTestFailed);
        if ((result.faults & (DatabaseFault | DiskFault)) != 0)
            ErrorManager()->signal(selfTestFailed, result.reasons.join(", "));
        if ((result.faults & ClockFault) != 0)
            ErrorManager()->signal(illegalDateAndTime, QString());
        if (result.faults == 0)
            log("Self-test: passed");
        return 0;
    }

    void terminate(VQMAnchorInterface * /*anchor*/) override
    {
        ErrorManager()->registerErrors(nullptr, registrationId);
    }
};

} // namespace Orvia

VQM_MODULE(Orvia::SelfTestModule)
