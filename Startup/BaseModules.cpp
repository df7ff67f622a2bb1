#include "Startup/DebugOutput.h"
#include "Startup/FirstException.h"
#include "Startup/VQMMainStartupImplementation.h"
#include "platform/Debug.h"
#include "platform/VQMProgressBar.h"
#include "platform/VQMUtility.h"

#include <cstring>
#include <utility>

namespace Orvia {

namespace {

constexpr int wholeModule = -1; ///< parts mask of a base module

QString nameOf(const VQMLoadedModuleInformation *record)
{
    return QString::fromLatin1(record->name);
}

} // namespace

int VQMMainStartupImplementation::initializeModules(const QStringList &names, bool exclude)
{
    VQMUtility::traceMessage("initializeModules");
    showBaseProgress();
    int status = 0;
    ModuleIterator walk(moduleTable);
    for (VQMLoadedModuleInformation *record = walk.toFirst(); record != nullptr; record = walk.next()) {
        if (!record->moduleLoaded() || record->moduleInterface == nullptr ||
            record->info->moduleType != VQMBaseModule || isExcluded(record->name, names, exclude))
            continue;
        debugProgress({"Initializing ", record->name, "..."});
        if (!platform && record->initialized) {
            Debug::debugMessageBox("ERROR", "Already initialized: " + nameOf(record), true, 0, 17, 0, 0);
        } else {
            status = platform ? initializeGuarded(record)
                              : record->moduleObject()->initialize(anchorInterface, wholeModule);
            record->initialized = true;
            ++baseModulesInitialized;
            if (status == 0)
                debugProgress({"...ok."});
            else
                suDebugMsgOut(0, "Initialization of Module " + nameOf(record) + " failed!", 1, status);
        }
        showBaseProgress();
    }
    if (baseModulesInitialized >= baseModuleCount)
        stageInfo(SuModulesFinished, -1);
    return status;
}

int VQMMainStartupImplementation::modulesTerminate(const QStringList &names, bool exclude)
{
    FirstException failure;
    if (baseModulesInitialized >= baseModuleCount)
        failure.run([this] { stageInfo(SuTerminateModules, -1); });
    ModuleIterator walk(moduleTable);
    for (VQMLoadedModuleInformation *record = walk.toLast(); record != nullptr; record = walk.previous()) {
        if (!record->moduleLoaded() || record->info->moduleType != VQMBaseModule ||
            isExcluded(record->name, names, exclude))
            continue;
        debugProgress({"Terminate ", record->name, "..."});
        --baseModulesInitialized;
        if (record->moduleId == VQMScpiId)
            anchorInterface->scpiModule = nullptr;
        else if (record->moduleId == VQMGuiId)
            anchorInterface->guiModule = nullptr;
        else if (record->moduleId == VQMDatabaseId)
            anchorInterface->databaseModule = nullptr;
        if (terminateModule(record, &failure))
            debugProgress({"...ok"});
    }
    failure.rethrow();
    return 0;
}

int VQMMainStartupImplementation::initializeGuarded(VQMLoadedModuleInformation *record)
{
    try {
        return record->moduleObject()->initialize(anchorInterface, wholeModule);
    } catch (...) {
        noteThrowingModule(record);
        throw;
    }
}

void VQMMainStartupImplementation::showBaseProgress()
{
    if (showProgress)
        showProgressBar(
            &baseProgressBarId, "Initialize Base System",
            baseModuleCount == 0 ? 100 : wholePercent(baseModulesInitialized * 100.0 / baseModuleCount));
}

void VQMMainStartupImplementation::noteThrowingModule(const VQMLoadedModuleInformation *record)
{
    std::memset(exceptionLocation, 0, sizeof exceptionLocation);
    std::memcpy(exceptionLocation, record->name, ::strnlen(record->name, sizeof exceptionLocation - 1));
}

bool VQMMainStartupImplementation::terminateModule(VQMLoadedModuleInformation *record,
                                                   FirstException *failure)
{
    if (record->moduleInterface == nullptr)
        return true;
    const bool first = failure->empty();
    bool ended = true;
    if (std::exchange(record->initialized, false))
        ended = failure->run([record] { record->moduleObject()->terminate(anchorInterface); });
    if (!ended && first && platform)
        noteThrowingModule(record);
    delete std::exchange(record->moduleInterface, nullptr);
    return ended;
}

} // namespace Orvia
