#pragma once

namespace Orvia {

/// The stages of start-up and shutdown, announced to every module object.
enum ESuStage : int
{
    SuInvalid = 0,
    SuModulesFinished = 1,
    SuLoadablesFinished = 2,
    SuPluginsFinished = 3,
    SuPluginLoadablesFinished = 4,
    SuCompleteFinished = 5,
    SuTerminateModules = 6,
    SuTerminateLoadables = 7,
    SuTerminatePlugins = 8,
    SuTerminatePluginLoadables = 9,
};

/// The stage as it is printed; "invalid" for a value outside the enumeration.
constexpr const char *stageText(ESuStage stage)
{
    constexpr const char *texts[] = {
        "invalid",
        "modules finished",
        "loadables finished",
        "plugins finished",
        "plugin loadables finished",
        "complete finished",
        "terminate modules",
        "terminate loadables",
        "terminate plugins",
        "terminate plugin loadables",
    };
    return stage >= SuInvalid && stage <= SuTerminatePluginLoadables ? texts[stage] : texts[SuInvalid];
}

} // namespace Orvia
