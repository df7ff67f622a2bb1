#include "launcher/WatchedStartup.h"

#include "launcher/ExitCodes.h"
#include "launcher/Report.h"
#include "launcher/StatusWatch.h"

#include <QScopeGuard>

#include <deque>

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
    // The pass itself returns the status of its last module only.
    std::deque<StatusWatch> watches;
    std::deque<VQMLoadedModuleInformation *> watched;
    ModuleIterator walk(moduleTable);
    for (VQMLoadedModuleInformation *record = walk.toFirst(); record != nullptr; record = walk.next()) {
        if (record->moduleInterface == nullptr)
            continue;
        record->moduleInterface = &watches.emplace_back(record->moduleObject());
        watched.push_back(record);
    }
    const auto endWatch = qScopeGuard([&] {
        for (std::size_t i = 0; i < watched.size(); ++i) {
            watched[i]->moduleInterface = watches[i].module();
            noteStatus(QString("module ") + watched[i]->name, watches[i].status());
        }
    });
    return VQMIntegrationStartup::initializeModules(names, exclude);
}

int WatchedStartup::initializePlugIns(int parts)
{
    return noteStatus("the plug-ins", VQMIntegrationStartup::initializePlugIns(parts));
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

int WatchedStartup::noteStatus(const QString &what, int status)
{
    if (status != 0) {
        report(QString("initialization of %1 ended with status %2").arg(what).arg(status));
        m_status->note(ExitCode::ModuleFailed);
    }
    return status;
}

} // namespace Orvia
