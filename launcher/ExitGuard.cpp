#include "launcher/ExitGuard.h"

#include "launcher/ExitCodes.h"
#include "launcher/Report.h"
#include "platform/VQMUtility.h"

#include <cstdio>
#include <unistd.h>

namespace Orvia {

namespace {

/// exit() destroys the calling thread's objects before all others. A handler would come too late: exit()
/// takes handlers and static objects last first, and other threads create static objects at any time.
struct ThreadExit
{
    bool isGuarded = false;

    ~ThreadExit()
    {
        if (!isGuarded)
            return;
        constexpr int code = static_cast<int>(ExitCode::OutOfMemory);
        report(QString("ended without a shutdown, exit code %1").arg(code));
        std::fflush(nullptr);
        VQMUtility::traceMessage(("exit: " + std::to_string(code)).c_str());
        VQMUtility::stopTrace();
        _exit(code);
    }
};

thread_local ThreadExit threadExit;

} // namespace

ExitGuard::ExitGuard()
{
    threadExit.isGuarded = true;
}

ExitGuard::~ExitGuard()
{
    threadExit.isGuarded = false;
}

} // namespace Orvia
