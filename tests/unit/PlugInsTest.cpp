#include "tests/unit/StartupFixture.h"

#include <stdexcept>

namespace Orvia {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PlugInsTest : public StartupTest
{
protected:
    /// Those of the calls in modules that are no stage.
    static std::vector<std::string> initializations()
    {
        std::vector<std::string> found = calls.of("module");
        std::erase_if(found,
                      [](const std::string &call) { return call.find(" initialize ") == std::string::npos; });
        return found;
    }
    /// The stages announced, as the module with this name hears them.
    static std::vector<std::string> stagesOf(const std::string &file)
    {
        std::vector<std::string> found;
        for (const std::string &call : calls.of("module")) {
            if (call.starts_with(file + " ") && call.find("inished") != std::string::npos)
                found.push_back(call.substr(file.size() + 1));
        }
        return found;
    }
};

TEST_F(PlugInsTest, RejectMasksWithoutAPart)
{
    load({"plugin"});
    for (int parts : {0, 8, 1000, -8}) {
        calls.clear();
        EXPECT_EQ(startup.initializePlugIns(parts), 0);
        EXPECT_THAT(calls.of({"trace", "debug", "module", "progress"}),
                    ElementsAre("initializePlugIns", "Initializing Plugin: invalid part given",
                                "Initializing Plugin: invalid part given"))
            << parts;
    }
    startup.initializePlugIns(-1); // its low three bits
    EXPECT_THAT(initializations(), ElementsAre("plugin initialize 7"));
}

TEST_F(PlugInsTest, ComeUpTypeByTypeAndAnnounceEachGroup)
{
    load({"plugin", "plugload256", "loadable32", "plugload128", "loadable16", "plugin_scpi"});
    EXPECT_EQ(startup.initializePlugIns(7), 0);
    std::vector<std::string> lines = calls.of("debug");
    std::erase(lines, "...ok.");
    EXPECT_THAT(lines, ElementsAre("Initializing Loadable loadable16    Parts: Database Scpi ",
                                   "Initializing Loadable loadable32    Parts: Database Scpi Gui ",
                                   "Stage: loadables finished    Parts: Database Scpi Gui ",
                                   "Initializing Plugin plugin    Parts: Database Gui ",
                                   "Initializing Plugin plugin_scpi    Parts: Scpi ",
                                   "Stage: plugins finished    Parts: Database Scpi Gui ",
                                   "Initializing Plugin Loadable plugload128    Parts: Gui ",
                                   "Initializing Plugin Loadable plugload256    Parts: Database ",
                                   "Stage: plugin loadables finished    Parts: Database Scpi Gui "));
    EXPECT_THAT(initializations(), ElementsAre("loadable16 initialize 7", "loadable32 initialize 7",
                                               "plugin initialize 7", "plugin_scpi initialize 7",
                                               "plugload128 initialize 7", "plugload256 initialize 7"));
    EXPECT_THAT(stagesOf("plugin"),
                ElementsAre("loadablesFinished 7", "pluginsFinished 7", "pluginLoadablesFinished 7"));
    for (int key : startup.keys())
        EXPECT_TRUE(startup.record(key)->initialized) << key;
}

TEST_F(PlugInsTest, ComeUpPartByPart)
{
    load({"plugin"});
    const VQMLoadedModuleInformation *record = startup.record(10000);
    EXPECT_EQ(startup.initializePlugIns(1), 0);
    EXPECT_THAT(calls.of("debug"), ElementsAre("Stage: loadables finished    Parts: Database ",
                                               "Initializing Plugin plugin    Parts: Database ", "...ok.",
                                               "Stage: plugins finished    Parts: Database ",
                                               "Stage: plugin loadables finished    Parts: Database "));
    EXPECT_THAT(record->partInitialized, ElementsAre(true, false, false));
    EXPECT_FALSE(record->initialized);
    EXPECT_EQ(startup.groupCounters[1].modulesInitialized, 0u);

    calls.clear();
    EXPECT_EQ(startup.initializePlugIns(6), 0);
    EXPECT_EQ(calls.of("debug")[1], "Initializing Plugin plugin    Parts: Gui ");
    EXPECT_EQ(calls.of("debug")[3],
              "Stage: plugins finished    Parts: Scpi Gui "); // no plug-in declares Scpi
    EXPECT_THAT(initializations(), ElementsAre("plugin initialize 6"));
    EXPECT_THAT(record->partInitialized, ElementsAre(true, false, true));
    EXPECT_TRUE(record->initialized);
    EXPECT_EQ(startup.groupCounters[1].modulesInitialized, 1u);
}

TEST_F(PlugInsTest, AskedAgainAreCalledAgainButCountedOnce)
{
    load({"plugin"});
    startup.initializePlugIns(1);
    calls.clear();
    EXPECT_EQ(startup.initializePlugIns(1), 0);
    EXPECT_THAT(calls.of({"debug", "module"}),
                ElementsAre("Initializing Plugin plugin    Parts: ", "plugin initialize 1", "...ok."));
    EXPECT_EQ(startup.groupCounters[1].partCounters[0].modulesInitialized, 1u);
    calls.clear();
    startup.initializePlugIns(2); // no module declares it, no message but the stages
    EXPECT_THAT(initializations(), IsEmpty());
    EXPECT_THAT(stagesOf("plugin"),
                ElementsAre("loadablesFinished 2", "pluginsFinished 2", "pluginLoadablesFinished 2"));
}

TEST_F(PlugInsTest, AFailureStopsTheCallAndALaterCallGoesOn)
{
    load({"plugin", "loadable32", "fails_once", "loadable16"});
    EXPECT_EQ(startup.initializePlugIns(1), 5);
    EXPECT_THAT(calls.of({"debug", "module"}),
                ElementsAre("Initializing Loadable loadable16    Parts: Database ", "loadable16 initialize 1",
                            "...ok.", "Initializing Loadable fails_once    Parts: Database ",
                            "fails_once initialize 1", "[1 5] Initializing Loadable fails_once failed"));
    EXPECT_FALSE(startup.record(22)->partInitialized[0]);
    EXPECT_EQ(startup.groupCounters[0].partCounters[0].modulesInitialized, 1u);
    EXPECT_THAT(calls.of("progress"), ElementsAre("new 1 Initialize Plugins", "1: 0", "1: 25"));
    calls.clear();
    EXPECT_EQ(startup.initializePlugIns(1), 0);
    EXPECT_THAT(initializations(), ElementsAre("loadable16 initialize 1", "fails_once initialize 1",
                                               "loadable32 initialize 1", "plugin initialize 1"));
    EXPECT_THAT(stagesOf("plugin"),
                ElementsAre("loadablesFinished 1", "pluginsFinished 1", "pluginLoadablesFinished 1"));
}

TEST_F(PlugInsTest, SkipWhatIsNotLoadedOrHasNoObject)
{
    load({"plugin", "loadable16", "loadable32"});
    for (int key : {20, 21})
        delete std::exchange(startup.record(key)->moduleInterface, nullptr);
    startup.record(20)->moduleInterface =
        startup.record(10000)->moduleInterface; // only its library is missing
    startup.record(20)->closeLibrary();
    calls.clear();
    EXPECT_EQ(startup.initializePlugIns(4), 0);
    EXPECT_THAT(initializations(), ElementsAre("plugin initialize 4"));
    startup.record(20)->moduleInterface = nullptr;
}

TEST_F(PlugInsTest, ShowTheShareOfTheDatabasePartOrOfWholeModules)
{
    load({"plugin", "plugin_scpi", "loadable16"});
    startup.initializePlugIns(1);
    EXPECT_THAT(calls.of("progress"), ElementsAre("new 1 Initialize Plugins", "1: 0", "1: 33", "1: 66"));
    calls.clear();
    startup.initializePlugIns(6);
    // loadable16 is complete with Scpi, plugin with Gui, plugin_scpi with Scpi.
    EXPECT_THAT(calls.of("progress"), ElementsAre("1: 0", "1: 33", "1: 66", "1: 100"));
    calls.clear();
    startup.initializePlugIns(6);
    EXPECT_EQ(calls.of("progress").front(), "1: 100");
    OpenStartup empty(1);
    calls.clear();
    empty.initializePlugIns(1);
    EXPECT_THAT(calls.of("progress"), ElementsAre("new 2 Initialize Plugins", "2: 100"));
}

TEST_F(PlugInsTest, GoDownTypeByTypeInDescendingOrder)
{
    load({"plugin", "plugload256", "loadable32", "plugload128", "loadable16", "plugin_scpi", "database"});
    startup.initializePlugIns(7);
    EXPECT_EQ(plugIns.size(), 6u);
    calls.clear();
    std::vector<std::size_t> left;
    calls.onCall = [&](const FakeCalls::Call &call) {
        if (call.text.ends_with(" deleted"))
            left.push_back(plugIns.size());
    };
    startup.plugInsTerminate();
    std::vector<std::string> lines = calls.of("debug");
    std::erase(lines, "...ok");
    EXPECT_THAT(lines, ElementsAre("Stage: terminate plugin loadables", "Terminate Plugin: plugload256",
                                   "Terminate Plugin: plugload128", "Stage: terminate plugins",
                                   "Terminate Plugin: plugin_scpi", "Terminate Plugin: plugin",
                                   "Stage: terminate loadables", "Terminate Plugin: loadable32",
                                   "Terminate Plugin: loadable16"));
    EXPECT_THAT(left, ElementsAre(5, 4, 3, 2, 1, 0)); // out of the anchor's vector before it is destroyed
    for (const ModuleGroupCounters &group : startup.groupCounters) {
        EXPECT_EQ(group.modulesInitialized, 0u);
        for (const PartCounters &part : group.partCounters) {
            EXPECT_EQ(part.modulesInitialized, 0u);
            EXPECT_TRUE(part.stageReported); // not reset
        }
    }
    for (int key : {20, 21, 30, 40, 10000, 10001}) {
        EXPECT_EQ(startup.record(key)->moduleInterface, nullptr) << key;
        EXPECT_FALSE(startup.record(key)->initialized) << key;
        EXPECT_THAT(startup.record(key)->partInitialized, testing::Each(false)) << key;
    }
    EXPECT_THAT(calls.of("progress"), IsEmpty());
}

TEST_F(PlugInsTest, PartlyInitializedGoDownWithoutTerminateAndWithoutTheirStage)
{
    load({"plugin", "loadable16"});
    startup.initializePlugIns(1);
    calls.clear();
    startup.plugInsTerminate();
    EXPECT_THAT(calls.of({"debug", "module"}),
                ElementsAre("Stage: terminate plugin loadables", "loadable16 terminatePluginLoadables",
                            "plugin terminatePluginLoadables", "Terminate Plugin: plugin", "plugin deleted",
                            "...ok", "Terminate Plugin: loadable16", "loadable16 deleted", "...ok"));
    EXPECT_THAT(startup.record(10000)->partInitialized, ElementsAre(true, false, false));
    EXPECT_EQ(startup.groupCounters[1].modulesInitialized, static_cast<std::uint32_t>(-1));
    EXPECT_EQ(startup.groupCounters[1].partCounters[0].modulesInitialized, 0u);
    EXPECT_EQ(startup.groupCounters[1].partCounters[1].modulesInitialized, 0u); // declares no Scpi part
    EXPECT_EQ(startup.groupCounters[1].partCounters[2].modulesInitialized, static_cast<std::uint32_t>(-1));
}

TEST_F(PlugInsTest, AllGoDownThoughOneThrows)
{
    load({"plugin", "plugin_scpi", "loadable16"});
    startup.initializePlugIns(7);
    calls.clear();
    calls.onCall = [](const FakeCalls::Call &call) {
        if (call.text == "plugin_scpi terminate")
            throw std::runtime_error("thrown");
    };
    EXPECT_THROW(startup.plugInsTerminate(), std::runtime_error);
    std::vector<std::string> deleted = calls.of("module");
    std::erase_if(deleted, [](const std::string &call) { return !call.ends_with(" deleted"); });
    EXPECT_THAT(deleted, ElementsAre("plugin_scpi deleted", "plugin deleted", "loadable16 deleted"));
    EXPECT_THAT(plugIns, IsEmpty());
}

} // namespace
} // namespace Orvia
