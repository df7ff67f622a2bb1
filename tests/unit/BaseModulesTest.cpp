#include "tests/unit/StartupFixture.h"

#include <algorithm>
#include <stdexcept>

namespace Orvia {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class BaseModulesTest : public StartupTest
{
protected:
    /// What `run` throws, or an empty text.
    template <typename Run>
    static std::string thrownBy(Run run)
    {
        try {
            run();
        } catch (const std::exception &exception) {
            return exception.what();
        }
        return {};
    }
    /// The module call throws its own text.
    static void throwAt(std::vector<std::string> texts)
    {
        calls.onCall = [texts = std::move(texts)](const FakeCalls::Call &call) {
            if (std::find(texts.begin(), texts.end(), call.text) != texts.end())
                throw std::runtime_error(call.text);
        };
    }
};

TEST_F(BaseModulesTest, ComeUpInTwoPassesInAscendingOrderOnOneBar)
{
    load({"gui", "database", "plugin", "base3"});
    EXPECT_EQ(startup.initializeModules({"GuiDll"}, true), 0);
    EXPECT_EQ(calls.all.front().service + calls.all.front().text, "traceinitializeModules");
    EXPECT_THAT(calls.of({"debug", "module", "progress"}),
                ElementsAre("new 1 Initialize Base System", "1: 0", "Initializing base3...",
                            "base3 initialize -1", "...ok.", "1: 33", "Initializing Database...",
                            "database initialize -1", "...ok.", "1: 66"));
    calls.clear();
    EXPECT_EQ(startup.initializeModules({"GuiDll"}, false), 0);
    EXPECT_THAT(calls.of({"debug", "module", "progress"}),
                ElementsAre("1: 66", "Initializing GuiDll...", "gui initialize -1", "...ok.", "1: 100",
                            "Stage: modules finished", "base3 modulesFinished", "database modulesFinished",
                            "gui modulesFinished", "plugin modulesFinished"));
    calls.clear();
    EXPECT_EQ(startup.initializeModules({}, false), 0); // selects nothing, but everything is still up
    EXPECT_THAT(calls.of("debug"), ElementsAre("Stage: modules finished"));
}

TEST_F(BaseModulesTest, AreCompleteWhenThereAreNone)
{
    for (int pass = 0; pass < 2; ++pass) {
        calls.clear();
        EXPECT_EQ(startup.initializeModules({}, true), 0);
        EXPECT_THAT(calls.of("debug"), ElementsAre("Stage: modules finished"));
    }
    EXPECT_THAT(calls.of("progress"), ElementsAre("0: 100"));
}

TEST_F(BaseModulesTest, ReportAFailureAndCountAllTheSame)
{
    load({"base3", "status5", "scpi"});
    EXPECT_EQ(startup.initializeModules({"ScpiDll"}, true), 5);
    EXPECT_THAT(calls.of("debug"), ElementsAre("Initializing base3...", "...ok.", "Initializing status5...",
                                               "[1 5] Initialization of Module status5 failed!"));
    EXPECT_TRUE(startup.record(5)->initialized);
    EXPECT_EQ(startup.baseModulesInitialized, 2u);
    EXPECT_EQ(startup.initializeModules({"ScpiDll"}, false), 0);
    calls.clear();
    startup.modulesTerminate({}, true);
    EXPECT_THAT(calls.of("module"), Contains("status5 terminate"));
    // The status is that of the last module to run.
    OpenStartup fresh(1);
    fresh.setTargetId(0x8);
    discover({"status5", "scpi"}, &fresh);
    EXPECT_EQ(fresh.initializeModules({}, true), 0);
}

TEST_F(BaseModulesTest, SkipsWhatIsNotLoadedHasNoObjectOrIsNoBaseModule)
{
    load({"base3", "database", "plugin", "type11", "scpi"});
    for (int key : {3, 4})
        delete std::exchange(startup.record(key)->moduleInterface, nullptr);
    startup.record(3)->closeLibrary();
    startup.record(3)->moduleInterface = startup.record(6)->moduleInterface; // only its library is missing
    calls.clear();
    startup.initializeModules({}, true);
    EXPECT_THAT(calls.of("debug"), ElementsAre("Initializing ScpiDll...", "...ok."));
}

TEST_F(BaseModulesTest, InitializedTwiceGetABoxUnlessThePlatformAllowsIt)
{
    load({"base3", "database"});
    startup.initializeModules({}, true);
    calls.clear();
    EXPECT_EQ(startup.initializeModules({}, true), 0);
    EXPECT_THAT(calls.of({"debug", "box", "progress"}),
                ElementsAre("1: 100", "Initializing base3...",
                            "ERROR | Already initialized: base3 | 1 0 17 0 0", "1: 100",
                            "Initializing Database...", "ERROR | Already initialized: Database | 1 0 17 0 0",
                            "1: 100", "Stage: modules finished"));
    EXPECT_EQ(startup.baseModulesInitialized, 2u);

    OpenStartup::platform = true;
    calls.clear();
    startup.initializeModules({"base3"}, false);
    EXPECT_THAT(calls.of({"box", "module", "progress"}),
                ElementsAre("1: 100", "base3 initialize -1", "1: 150", "base3 modulesFinished",
                            "database modulesFinished"));
    EXPECT_EQ(startup.baseModulesInitialized, 3u);
}

TEST_F(BaseModulesTest, ThatThrowStopThePassAndAreNamedOnThePlatform)
{
    load({"base3", "throws_in_initialize", "scpi"});
    for (bool platform : {false, true}) {
        calls.clear();
        OpenStartup::platform = platform;
        EXPECT_EQ(thrownBy([this] { startup.initializeModules({"base3"}, true); }), "throws_in_initialize");
        EXPECT_STREQ(OpenStartup::exceptionLocation,
                     platform ? "Name_of_25_characte" : "                   ");
        EXPECT_THAT(calls.of({"debug", "module"}), ElementsAre("Initializing Name_of_25_characters_abc...",
                                                               "throws_in_initialize initialize -1"));
        EXPECT_FALSE(startup.record(5)->initialized);
        EXPECT_EQ(startup.baseModulesInitialized, 0u);
    }
    EXPECT_THAT(calls.of("progress"), ElementsAre("1: 0"));
    throwAt({"base3 initialize -1"});
    EXPECT_EQ(thrownBy([this] { startup.initializeModules({}, true); }), "base3 initialize -1");
    EXPECT_EQ(std::string(OpenStartup::exceptionLocation, 20), std::string("base3") + std::string(15, '\0'));
}

TEST_F(BaseModulesTest, GoDownInDescendingOrderWithTheAnchorClearedFirst)
{
    load({"base3", "gui", "scpi", "plugin", "database"});
    startup.initializeModules({}, true);
    calls.clear();
    std::vector<const void *> seen;
    calls.onCall = [&](const FakeCalls::Call &call) {
        if (call.text == "gui terminate")
            seen = {anchor.guiModule, anchor.scpiModule, anchor.databaseModule};
        else if (call.text == "scpi terminate")
            seen.insert(seen.end(), {anchor.scpiModule, anchor.databaseModule});
        else if (call.text == "database terminate")
            seen.push_back(anchor.databaseModule);
    };
    const void *const scpi = anchor.scpiModule;
    const void *const database = anchor.databaseModule;

    EXPECT_EQ(startup.VQMMainStartupImplementation::modulesTerminate({"GuiDll"}, false), 0);
    EXPECT_THAT(calls.of({"debug", "module"}),
                ElementsAre("Stage: terminate modules", "base3 terminateModules", "database terminateModules",
                            "scpi terminateModules", "gui terminateModules", "plugin terminateModules",
                            "Terminate GuiDll...", "gui terminate", "gui deleted", "...ok"));
    calls.clear();
    startup.modulesTerminate({"GuiDll"}, true); // not all are up any more: no stage
    EXPECT_THAT(calls.of({"debug", "module"}),
                ElementsAre("Terminate ScpiDll...", "scpi terminate", "scpi deleted", "...ok",
                            "Terminate Database...", "database terminate", "database deleted", "...ok",
                            "Terminate base3...", "base3 terminate", "base3 deleted", "...ok"));
    EXPECT_THAT(seen, ElementsAre(nullptr, scpi, database, nullptr, database, nullptr));
    EXPECT_EQ(startup.baseModulesInitialized, 0u);
    EXPECT_THAT(calls.of("progress"), IsEmpty());
    calls.clear();
    startup.initializeModules({}, true); // nothing left to bring up
    EXPECT_THAT(calls.of({"debug", "module"}), IsEmpty());
}

TEST_F(BaseModulesTest, NeverInitializedAreDeletedWithoutTerminate)
{
    load({"base3", "database"});
    startup.initializeModules({"base3"}, false);
    calls.clear();
    startup.modulesTerminate({}, true);
    EXPECT_THAT(calls.of("module"), ElementsAre("database deleted", "base3 terminate", "base3 deleted"));
    EXPECT_EQ(startup.baseModulesInitialized, static_cast<std::uint32_t>(-1)); // counted down as written
    calls.clear();
    startup.modulesTerminate({"base3"}, false); // no object any more, but walked and counted
    EXPECT_THAT(calls.of("debug"), ElementsAre("Stage: terminate modules", "Terminate base3...", "...ok"));
}

TEST_F(BaseModulesTest, AllGoDownThoughSomeThrowAndTheFirstExceptionLeaves)
{
    OpenStartup::platform = true;
    load({"base3", "throws_in_terminate", "gui"});
    startup.initializeModules({}, true);
    calls.clear();
    throwAt({"base3 terminate"});
    EXPECT_EQ(thrownBy([this] { startup.modulesTerminate({}, true); }), "throws_in_terminate");
    EXPECT_THAT(calls.of({"module", "debug"}),
                ElementsAre("Stage: terminate modules", "base3 terminateModules",
                            "throws_in_terminate terminateModules", "gui terminateModules",
                            "Terminate GuiDll...", "gui terminate", "gui deleted", "...ok",
                            "Terminate throws_in_terminate...", "throws_in_terminate terminate",
                            "throws_in_terminate deleted", "Terminate base3...", "base3 terminate",
                            "base3 deleted"));
    EXPECT_STREQ(OpenStartup::exceptionLocation, "throws_in_terminate"); // as the exception says
}

TEST_F(BaseModulesTest, AllHearOfAStageThoughOneThrows)
{
    OpenStartup::platform = true;
    load({"base3", "throws_in_stage", "gui"});
    throwAt({"gui modulesFinished"});
    EXPECT_EQ(thrownBy([this] { startup.initializeModules({}, true); }), "throws_in_stage");
    EXPECT_THAT(calls.of("module"), Contains("gui modulesFinished"));
    EXPECT_STREQ(OpenStartup::exceptionLocation, "throws_in_stage");
    EXPECT_EQ(startup.baseModulesInitialized, 3u);
}

} // namespace
} // namespace Orvia
