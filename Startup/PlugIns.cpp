#include "Startup/DebugOutput.h"
#include "Startup/FirstException.h"
#include "Startup/ModuleRules.h"
#include "Startup/VQMMainStartupImplementation.h"
#include "platform/VQMUtility.h"

#include <algorithm>
#include <iterator>

namespace Orvia {

namespace {

QString nameOf(const VQMLoadedModuleInformation *record)
{
    return QString::fromLatin1(record->name);
}

/// Whether a requested part of the module has still to be initialized.
bool isPending(const VQMLoadedModuleInformation *record, int part, int parts)
{
    return (parts & record->info->parts & (1 << part)) != 0 && !record->partInitialized[part];
}

QString pendingParts(const VQMLoadedModuleInformation *record, int parts)
{
    int pending = 0;
    for (int part = 0; part < 3; ++part) {
        if (isPending(record, part, parts))
            pending |= 1 << part;
    }
    return partsText(pending);
}

} // namespace

int VQMMainStartupImplementation::initializePlugIns(int parts)
{
    VQMUtility::traceMessage("initializePlugIns");
    if (parts < 0)
        parts &= allModuleParts;
    if (parts == 0 || parts > allModuleParts) {
        debugProgress({"Initializing Plugin: invalid part given"});
        return 0;
    }
    std::uint32_t total = 0;
    std::uint32_t done = 0;
    for (const ModuleGroupCounters &group : groupCounters) {
        total += group.moduleCount;
        done += group.modulesInitialized;
    }
    if (showProgress)
        showProgressBar(&plugInProgressBarId, "Initialize Plugins",
                        total == 0 ? 100 : wholePercent(static_cast<double>(done) / total * 100));
    for (int row = 0; row < static_cast<int>(std::size(plugInTypes)); ++row) {
        if (const int status = initializePlugInsOfType(row, parts, total); status != 0)
            return status;
        if (plugInTypes[row].finished != SuInvalid)
            announceFinishedParts(row, parts);
    }
    return 0;
}

void VQMMainStartupImplementation::plugInsTerminate()
{
    FirstException failure;
    for (auto row = std::rbegin(plugInTypes); row != std::rend(plugInTypes); ++row) {
        ModuleGroupCounters &group = groupCounters[row->group];
        if (row->terminating != SuInvalid && group.modulesInitialized >= group.moduleCount)
            failure.run([this, row] { stageInfo(row->terminating, -1); });
        ModuleIterator walk(moduleTable);
        for (VQMLoadedModuleInformation *record = walk.toLast(); record != nullptr;
             record = walk.previous()) {
            if (!record->moduleLoaded() || (record->info->moduleType & row->type) == 0)
                continue;
            debugProgress({"Terminate Plugin: ", record->name});
            --group.modulesInitialized;
            for (int part = 0; part < 3; ++part) {
                if ((record->info->parts & (1 << part)) != 0)
                    --group.partCounters[part].modulesInitialized;
            }
            if (terminatePlugIn(record, &failure))
                debugProgress({"...ok"});
        }
    }
    failure.rethrow();
}

int VQMMainStartupImplementation::initializePlugInsOfType(int row, int parts, std::uint32_t total)
{
    const PlugInType &type = plugInTypes[row];
    ModuleGroupCounters &group = groupCounters[type.group];
    ModuleIterator walk(moduleTable);
    for (VQMLoadedModuleInformation *record = walk.toFirst(); record != nullptr; record = walk.next()) {
        if (!record->moduleLoaded() || record->moduleInterface == nullptr ||
            (record->info->moduleType & type.type) == 0 || (record->info->parts & parts) == 0)
            continue;
        const QString what = QLatin1String("Initializing ") + QLatin1String(type.text) + nameOf(record);
        suDebugMsgOut(0, what + "    Parts: " + pendingParts(record, parts), 3, 0);
        if (const int status = record->moduleObject()->initialize(anchorInterface, parts); status != 0) {
            suDebugMsgOut(0, what + " failed", 1, status);
            return status;
        }
        notePartsInitialized(record, &group, parts);
        debugProgress({"...ok."});
        if (showProgress)
            showProgressBar(&plugInProgressBarId, "Initialize Plugins", plugInPercent(parts, total));
    }
    return 0;
}

void VQMMainStartupImplementation::notePartsInitialized(VQMLoadedModuleInformation *record,
                                                        ModuleGroupCounters *group, int parts)
{
    bool complete = true;
    for (int part = 0; part < 3; ++part) {
        if (isPending(record, part, parts)) {
            record->partInitialized[part] = true;
            ++group->partCounters[part].modulesInitialized;
        }
        complete = complete && !isPending(record, part, allModuleParts);
    }
    if (complete && !record->initialized) {
        record->initialized = true;
        ++group->modulesInitialized;
    }
}

void VQMMainStartupImplementation::announceFinishedParts(int row, int parts)
{
    int finished = 0;
    for (int part = 0; part < 3; ++part) {
        PartCounters &counters = groupCounters[plugInTypes[row].group].partCounters[part];
        if ((parts & (1 << part)) == 0 || counters.stageReported ||
            counters.modulesInitialized < counters.moduleCount)
            continue;
        counters.stageReported = true;
        finished |= 1 << part;
    }
    if (finished != 0)
        stageInfo(plugInTypes[row].finished, finished);
}

int VQMMainStartupImplementation::plugInPercent(int parts, std::uint32_t total) const
{
    if (total == 0)
        return 100;
    std::uint32_t done = 0;
    for (const ModuleGroupCounters &group : groupCounters)
        done += (parts & VQMDatabasePart) != 0 ? group.partCounters[0].modulesInitialized
                                               : group.modulesInitialized;
    return wholePercent(done * 100.0 / total);
}

bool VQMMainStartupImplementation::terminatePlugIn(VQMLoadedModuleInformation *record,
                                                   FirstException *failure)
{
    if (record->moduleInterface != nullptr && anchorInterface->plugInInterfaces != nullptr)
        std::erase(*anchorInterface->plugInInterfaces, record->moduleInterface);
    if (record->initialized)
        std::fill(std::begin(record->partInitialized), std::end(record->partInitialized), false);
    return terminateModule(record, failure);
}

} // namespace Orvia
