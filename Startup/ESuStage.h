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

} // namespace Orvia
