#include "launcher/WatchedStartup.h"

#include "launcher/ExitCodes.h"
#include "launcher/Report.h"

namespace Orvia {

WatchedStartup::WatchedStartup(int id, ExitStatus *status) : VQMIntegrationStartup(id), m_status(status) {}

WatchedStartup::~WatchedStartup()
{
    ModuleIterator walk(moduleTable);
    for (VQMLoadedModuleInformation *record = walk.toFirst(); record != nullptr; record = walk.next())
        delete record;
}

int WatchedStartup::initializeModules(const QStringList &names, bool exclude)
{
    return noteStatus("base modules", VQMIntegrationStartup::initializeModules(names, exclude));
}

int WatchedStartup::initializePlugIns(int parts)
{
    return noteStatus("plug-ins", VQMIntegrationStartup::initializePlugIns(parts));
}

void WatchedStartup::stageInfo(ESuStage stage, int parts)
{
    setStartupStage();
    m_announced |= 1U << static_cast<unsigned>(stage);
    VQMIntegrationStartup::stageInfo(stage, parts);
}

bool WatchedStartup::hasAnnounced(ESuStage stage) const
{
    return (m_announced & 1U << static_cast<unsigned>(stage)) != 0;
}

int WatchedStartup::noteStatus(const char *pass, int status)
{
    if (status != 0) {
        report(QString("initialization of the %1 ended with status %2").arg(pass).arg(status));
        m_status->note(ExitCode::ModuleFailed);
    }
    return status;
}

} // namespace Orvia
