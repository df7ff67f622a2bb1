#include "tests/unit/StartupFixture.h"

namespace Orvia {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

struct Announcement
{
    int stage;
    int parts;
    std::string line;
    std::string operation; ///< of the modules, and of the one made by hand
    std::string position;
};

class StagesTest : public StartupTest
{
};

TEST_F(StagesTest, ReachEveryObjectAndThenTheListener)
{
    load({"plugin", "handmade", "base3"});
    anchor.stageListener = startup.record(5)->moduleObject();
    const std::vector<Announcement> cases = {
        {0, 7, "invalid", "", ""},
        {1, 7, "modules finished", "modulesFinished", "7"},
        {2, 5, "loadables finished    Parts: Database Gui ", "loadablesFinished 5", "8 5"},
        {2, -1, "loadables finished", "loadablesFinished -1", "8 -1"},
        {3, 2, "plugins finished    Parts: Scpi ", "pluginsFinished 2", "9 2"},
        {3, 0, "plugins finished    Parts: ", "pluginsFinished 0", "9 0"},
        {4, 7, "plugin loadables finished    Parts: Database Scpi Gui ", "pluginLoadablesFinished 7", "10 7"},
        {5, 7, "complete finished", "completeFinished", "11"},
        {6, 7, "terminate modules", "terminateModules", "12"},
        {7, 7, "terminate loadables", "terminateLoadables", "13"},
        {8, 7, "terminate plugins", "terminatePlugins", "14"},
        {9, 7, "terminate plugin loadables", "terminatePluginLoadables", "15"},
        {10, 7, "invalid", "", ""},
        {-1, 7, "invalid", "", ""},
    };
    for (const Announcement &expected : cases) {
        calls.clear();
        startup.stageInfo(static_cast<ESuStage>(expected.stage), expected.parts);
        std::vector<std::string> texts = {"Stage: " + expected.line};
        if (!expected.operation.empty()) {
            const std::string listener = "handmade position " + expected.position;
            texts.insert(texts.end(),
                         {"base3 " + expected.operation, listener, "plugin " + expected.operation, listener});
        }
        if (expected.stage == 5)
            texts.push_back("7"); // told last that start-up is complete
        EXPECT_THAT(calls.of({"debug", "module", "complete"}), ElementsAreArray(texts));
    }
}

TEST_F(StagesTest, ReachNoObjectThatIsGone)
{
    load({"base3", "plugin", "database"});
    startup.VQMMainStartupImplementation::modulesTerminate({"base3"}, false);
    startup.plugInsTerminate();
    calls.clear();
    startup.stageInfo(SuCompleteFinished, -1);
    EXPECT_THAT(calls.of({"module", "complete"}), ElementsAre("database completeFinished", "-1"));
}

TEST_F(StagesTest, AModuleInPlainCComesUpAndGoesDown)
{
    ASSERT_EQ(discover({"handmade"}), 0);
    startup.initializeModules({}, true);
    startup.VQMMainStartupImplementation::modulesTerminate({}, true);
    const std::string record = QString::asprintf("%p", static_cast<void *>(&anchor)).toStdString();
    EXPECT_THAT(calls.of("module"),
                ElementsAre("handmade position 2", "handmade position 3", "handmade position 4",
                            "handmade position 5 " + record + " -1", "handmade position 7",
                            "handmade position 12", "handmade position 6 " + record, "handmade position 1"));
    EXPECT_THAT(
        calls.of("debug"),
        testing::IsSupersetOf({"Module Name             : HandMade", "Module Id               : 5",
                               "Module Version          : 07.08.09", "Module Interface Version: 00.20.100"}));
}

TEST_F(StagesTest, StartupStepsCallTheRegisteredCallback)
{
    static std::vector<int> steps;
    const auto callback = [](ESwpStartupStep step, VQMMainThread *thread) {
        steps.push_back(thread == nullptr ? step : -1);
    };
    const auto other = [](ESwpStartupStep, VQMMainThread *) { steps.push_back(-2); };
    EXPECT_EQ(startup.initializeSwpRemote(SwpPlugInsInitialized, callback), 0); // none registered
    EXPECT_EQ(startup.initializeSwpRemote(SwpRegisterCallback, callback), 0);
    EXPECT_EQ(startup.initializeSwpRemote(SwpPlugInsInitialized, other), 0);
    EXPECT_EQ(startup.initializeSwpRemote(static_cast<ESwpStartupStep>(7), nullptr), 0);
    EXPECT_EQ(startup.initializeSwpRemote(SwpRegisterCallback, nullptr), 0);
    EXPECT_EQ(startup.initializeSwpRemote(SwpPlugInsInitialized, callback), 0);
    EXPECT_THAT(steps, ElementsAre(2, 7));
}

} // namespace
} // namespace Orvia
