#include "Startup/VQMIntegrationStartup.h"

#include <atomic>
#include <cstdio>

namespace Orvia {

// Plain variables, as other parts of the firmware declare them; every access here is atomic.
bool VQMIntegrationStartup::sm_preventFlag = false;
bool VQMIntegrationStartup::sm_abortFlag = false;
int VQMIntegrationStartup::sm_startupStage = 0;

// cppcheck-suppress passedByValue ; as launchers call it
void VQMIntegrationStartup::setPreventFlag(QString name) // NOLINT(performance-unnecessary-value-param)
{
    std::FILE *processes = ::popen("ps", "r");
    if (processes == nullptr)
        return;
    int launchers = 0;
    char buffer[150];
    while (std::fgets(buffer, sizeof buffer, processes) != nullptr) {
        buffer[sizeof buffer - 1] = '\0';
        QString line = QString::fromLocal8Bit(buffer);
        if (!line.contains("mainstartup"))
            continue;
        line = line.simplified();
        if (line.section(' ', 2, 2).startsWith("./mainstartup") && line.contains(name))
            ++launchers;
    }
    ::pclose(processes);
    if (launchers > 1)
        std::atomic_ref(sm_preventFlag).store(true);
}

bool VQMIntegrationStartup::getPreventFlag()
{
    return std::atomic_ref(sm_preventFlag).load();
}

void VQMIntegrationStartup::setAbortFlag(bool abort)
{
    std::atomic_ref(sm_abortFlag).store(abort);
}

bool VQMIntegrationStartup::getAbortFlag()
{
    return std::atomic_ref(sm_abortFlag).load();
}

void VQMIntegrationStartup::setStartupStage()
{
    ++std::atomic_ref(sm_startupStage);
}

int VQMIntegrationStartup::getStartupStage()
{
    return std::atomic_ref(sm_startupStage).load();
}

} // namespace Orvia
