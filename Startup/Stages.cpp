#include "Startup/FirstException.h"
#include "Startup/ModuleRules.h"
#include "Startup/VQMMainStartupImplementation.h"
#include "platform/VQMUtility.h"

#include <iterator>

namespace Orvia {

namespace {

/// The operation that announces a stage.
struct Stage
{
    void (VQMDllModuleInterface::*whole)();
    void (VQMDllModuleInterface::*ofParts)(int parts);
};

using Module = VQMDllModuleInterface;

constexpr Stage stages[] = {
    {nullptr, nullptr}, // invalid
    {&Module::modulesFinished, nullptr},
    {nullptr, &Module::loadablesFinished},
    {nullptr, &Module::pluginsFinished},
    {nullptr, &Module::pluginLoadablesFinished},
    {&Module::completeFinished, nullptr},
    {&Module::terminateModules, nullptr},
    {&Module::terminateLoadables, nullptr},
    {&Module::terminatePlugins, nullptr},
    {&Module::terminatePluginLoadables, nullptr},
};

const Stage &rowOf(ESuStage stage)
{
    const bool known = stage >= 0 && stage < static_cast<int>(std::size(stages));
    return stages[known ? stage : SuInvalid];
}

QString describe(ESuStage stage, int parts)
{
    const QString text = QLatin1String("Stage: ") + QLatin1String(stageText(stage));
    const bool hasParts = parts >= 0 && rowOf(stage).ofParts != nullptr;
    return hasParts ? text + "    Parts: " + partsText(parts) : text;
}

void announce(Module *module, const Stage &stage, int parts)
{
    if (stage.ofParts != nullptr)
        (module->*stage.ofParts)(parts);
    else if (stage.whole != nullptr)
        (module->*stage.whole)();
}

void (*swpStartupCallback)(ESwpStartupStep, VQMMainThread *) = nullptr;

} // namespace

void VQMMainStartupImplementation::stageInfo(ESuStage stage, int parts)
{
    const Stage &row = rowOf(stage);
    suDebugMsgOut(0, describe(stage, parts), 3, 0);
    FirstException failure;
    ModuleIterator walk(moduleTable);
    for (VQMLoadedModuleInformation *record = walk.toFirst(); record != nullptr; record = walk.next()) {
        if (record->moduleInterface == nullptr)
            continue;
        const bool first = failure.empty();
        if (!failure.run([&] { announce(record->moduleObject(), row, parts); }) && first && platform)
            noteThrowingModule(record);
    }
    if (anchorInterface->stageListener != nullptr)
        failure.run([&] { announce(anchorInterface->stageListener, row, parts); });
    if (stage == SuCompleteFinished)
        VQMUtility::setStartupComplete(parts);
    failure.rethrow();
}

int VQMMainStartupImplementation::initializeSwpRemote(ESwpStartupStep step,
                                                      void (*callback)(ESwpStartupStep, VQMMainThread *))
{
    if (step == SwpRegisterCallback)
        swpStartupCallback = callback;
    else if (swpStartupCallback != nullptr)
        swpStartupCallback(step, nullptr);
    return 0;
}

} // namespace Orvia
