#include "Startup/IcppAnnouncementWrapper.h"
#include "platform/HwAbstractionLayer.h"
#include "tests/unit/StartupFixture.h"

#include <cstring>
#include <numeric>

namespace Orvia {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

using Row = CErrorManager::SErrorDefinition;

/// The position of a virtual operation, which a pointer to it holds: 1 + its offset in bytes.
template <typename Operation>
int positionOf(Operation operation)
{
    std::ptrdiff_t word = 0;
    std::memcpy(&word, &operation, sizeof word);
    return static_cast<int>((word - 1) / static_cast<std::ptrdiff_t>(sizeof(void *)));
}

std::vector<int> range(int first, int last)
{
    std::vector<int> numbers(last - first + 1);
    std::iota(numbers.begin(), numbers.end(), first);
    return numbers;
}

TEST(VirtualTable, OfTheStartupObjectStandsInTheAgreedOrder)
{
    using S = VQMIntegrationStartup;
    using Base = VQMMainStartupImplementation;
    EXPECT_THAT(
        (std::vector<int>{positionOf(&S::getInterfaceVersion),
                          positionOf(&S::getModuleName),
                          positionOf(&S::getModuleId),
                          positionOf(&S::getTargetId),
                          positionOf<void (S::*)()>(&S::modulesTerminate),
                          positionOf(&S::freeResources),
                          positionOf(&S::destroyAnnouncement),
                          positionOf(&S::destroyAllAnnouncements),
                          positionOf(&S::setId),
                          positionOf(&S::setTargetId),
                          positionOf(&S::freeProgressBar),
                          positionOf(&S::findModules),
                          positionOf<int (Base::*)(const QStringList &, bool)>(&Base::initializeModules),
                          positionOf(&S::initializePlugIns),
                          positionOf(&S::initializeSwpRemote),
                          positionOf(&S::plugInsTerminate),
                          positionOf(&S::stageInfo),
                          positionOf(&S::setProgArgument),
                          positionOf(&S::getProgArgument),
                          positionOf(&S::addLoadListFile),
                          positionOf<int (Base::*)(const QStringList &, bool)>(&Base::modulesTerminate)}),
        ElementsAreArray(range(2, 22)));
}

TEST(VirtualTable, OfModulesAndServicesStandsInTheAgreedOrder)
{
    using M = VQMPlugInDllModuleInterface;
    EXPECT_THAT(
        (std::vector<int>{positionOf(&M::getInterfaceVersion), positionOf(&M::getModuleName),
                          positionOf(&M::getModuleId), positionOf(&M::initialize), positionOf(&M::terminate),
                          positionOf(&M::modulesFinished), positionOf(&M::loadablesFinished),
                          positionOf(&M::pluginsFinished), positionOf(&M::pluginLoadablesFinished),
                          positionOf(&M::completeFinished), positionOf(&M::terminateModules),
                          positionOf(&M::terminateLoadables), positionOf(&M::terminatePlugins),
                          positionOf(&M::terminatePluginLoadables)}),
        ElementsAreArray(range(2, 15)));
    EXPECT_EQ(positionOf(&M::getMainWidget), 18);
    EXPECT_EQ(positionOf(&M::startGui), 21);
    EXPECT_EQ(positionOf(&IcppAnnouncementWrapper::destroyAnnouncement), 0);
    EXPECT_EQ(positionOf(&IcppAnnouncementWrapper::destroyAllAnnouncements), 1);
    EXPECT_EQ(positionOf(&VQMErrorManagerHook::alert), 2);
    EXPECT_EQ(positionOf(&VQMHwRepository::code), 6);
    EXPECT_EQ(positionOf(&VQMHwRepository::unit), 27);
    EXPECT_EQ(positionOf(&VQMHwUnit::setReady), 1);
}

class StartupObjectTest : public testing::Test
{
protected:
    StartupObjectTest() { resetFakes(); }
};

TEST_F(StartupObjectTest, TakesItsIdByTheRule)
{
    for (auto [given, taken] : {std::pair{-1, 2}, {-2, 0}, {-7, 0}, {0, 0}, {1, 1}, {12, 12}}) {
        OpenStartup startup(given);
        EXPECT_EQ(startup.getModuleId(), taken) << given;
    }
    OpenStartup startup(1);
    startup.setId(-7); // no rule here
    EXPECT_EQ(startup.getModuleId(), -7);
}

TEST_F(StartupObjectTest, AnswersAsAModuleAndStartsEmpty)
{
    OpenStartup startup(1);
    EXPECT_STREQ(startup.getModuleName(), "MainStartup");
    const VQMModuleVersion *version = startup.getInterfaceVersion();
    EXPECT_THAT((std::vector{version->major, version->minor, version->build}), ElementsAre(0, 0, 5));
    EXPECT_EQ(startup.getTargetId(), 0u);
    startup.setTargetId(0x80000008);
    EXPECT_EQ(startup.getTargetId(), 0x80000008u);
    EXPECT_EQ(startup.loadProgressBarId, -1);
    EXPECT_EQ(startup.baseProgressBarId, -1);
    EXPECT_EQ(startup.plugInProgressBarId, -1);
    EXPECT_EQ(startup.moduleTable->count, 0);
    EXPECT_FALSE(startup.moduleTable->ownsValues);
    EXPECT_TRUE(startup.moduleTable->ownsEntries);
    const VQMLoadedModuleInformation record;
    EXPECT_STREQ(record.name, "Unknown");
    EXPECT_FALSE(record.moduleLoaded());
}

TEST_F(StartupObjectTest, ShowsProgressForExactlyOne)
{
    for (const char *value : {"0", "", "true", " 1", "1 ", "01", "2"}) {
        answers.progressBarProperty = value;
        EXPECT_FALSE(OpenStartup(1).showProgress) << value;
    }
    answers.progressBarProperty = QString(); // not set
    EXPECT_FALSE(OpenStartup(1).showProgress);
    answers.progressBarProperty = "1";
    EXPECT_TRUE(OpenStartup(1).showProgress);
}

TEST_F(StartupObjectTest, TakesTheLoadListFromItsArguments)
{
    const std::vector<std::pair<std::vector<const char *>, const char *>> cases = {
        {{"app"}, nullptr},
        {{"app", "-l"}, nullptr},
        {{"-l", "a"}, nullptr}, // the program's own name is no option
        {{"app", "l", "a"}, nullptr},
        {{"app", "--l", "a"}, nullptr},
        {{"app", "-", "", "a"}, nullptr},
        {{"app", "-x", "-l", "list.xml"}, "list.xml"},
        {{"app", "-L", "a", "-load", "b"}, "b"},
        {{"app", "-l", "a", "-l"}, "a"},
        {{"app", "-l", "-v"}, "-v"},
        {{"app", "-l", "-l", "b"}, "-l"}, // the scan goes on behind the value
    };
    for (auto [arguments, expected] : cases) {
        OpenStartup startup(1);
        startup.setProgArgument(static_cast<int>(arguments.size()), const_cast<char **>(arguments.data()));
        EXPECT_STREQ(startup.getProgArgument(), expected);
        EXPECT_EQ(&startup.getProgArgument(), &startup.loadListName);
        startup.setProgArgument(0, nullptr);
        EXPECT_STREQ(startup.getProgArgument(), expected);
    }
}

TEST_F(StartupObjectTest, FindsNamesInListsExactly)
{
    const OpenStartup startup(1);
    EXPECT_TRUE(startup.isExcluded("GuiDll", {"ScpiDll", "GuiDll"}, true));
    EXPECT_FALSE(startup.isExcluded("GuiDll", {"GuiDll"}, false));
    EXPECT_TRUE(startup.isExcluded("ScpiDll", {"GuiDll"}, false));
    EXPECT_FALSE(startup.isExcluded("GuiDLL", {"GuiDll"}, true));
    EXPECT_FALSE(startup.isExcluded("Gui", {"GuiDll"}, true));
    EXPECT_TRUE(startup.isExcluded("GuiDll", {}, false));
}

TEST_F(StartupObjectTest, TracesEveryLineAndPrintsThoseWanted)
{
    answers.debugLevel = 1;
    OpenStartup::suDebugMsgOut(0, "progress", 3, 0);
    OpenStartup::suDebugMsgOut(0, QString::fromUtf8("grün"), 1, 77);
    EXPECT_THAT(calls.of("debug"), ElementsAre("[1 77] grün"));
    EXPECT_THAT(calls.of("trace"), ElementsAre("progress", "gr\xfcn"));
}

TEST_F(StartupObjectTest, ReportsErrorsWithAnAlertExceptTheThreeForTheDebugOutput)
{
    const OpenStartup startup(1);
    for (int code : {10001, 10002, 10003, 10004, 10005})
        EXPECT_EQ(startup.dumpError(code, "title", "text"), code);
    EXPECT_THAT(calls.of("debug"), ElementsAre("[1 10001] text", "[1 10002] text", "[1 10003] text",
                                               "[1 10004] text", "[1 10005] text"));
    EXPECT_THAT(calls.of("alert"), ElementsAre("title | text", "title | text"));
    answers.hookInstalled = false;
    EXPECT_EQ(startup.dumpError(10001, "title", "text"), 10001); // nobody to take the alert
}

TEST_F(StartupObjectTest, RemovesItsProgressBarsInOrder)
{
    OpenStartup startup(1);
    startup.loadProgressBarId = 5;
    startup.plugInProgressBarId = 3;
    startup.showProgress = false;
    startup.freeProgressBar();
    EXPECT_THAT(calls.of("progress"), IsEmpty());
    startup.showProgress = true;
    startup.freeProgressBar();
    startup.baseProgressBarId = 0;
    startup.freeProgressBar();
    EXPECT_THAT(calls.of("progress"), ElementsAre("removed 5", "removed 3", "removed 0"));
    EXPECT_EQ(startup.baseProgressBarId, -1);
}

/// The table registered under an id, which must have been registered once whatever has been built.
std::vector<Row> registeredTable(int registrationId)
{
    OpenStartup first(1);
    OpenStartup second(2);
    std::vector<Row> rows;
    int registrations = 0;
    for (auto [id, table] : registeredErrors) {
        if (id != registrationId)
            continue;
        ++registrations;
        while (rows.empty() || rows.back().code != -1)
            rows.push_back(*table++);
    }
    EXPECT_EQ(registrations, 1);
    return rows;
}

void expectRows(const std::vector<Row> &actual, const std::vector<Row> &expected)
{
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(actual[i].code, expected[i].code);
        EXPECT_EQ(actual[i].severity, expected[i].severity) << expected[i].code;
        EXPECT_EQ(actual[i].scpiCode, expected[i].scpiCode) << expected[i].code;
        EXPECT_EQ(actual[i].flag, expected[i].flag) << expected[i].code;
        EXPECT_STREQ(actual[i].text, expected[i].text);
        EXPECT_STREQ(actual[i].text2, "");
        EXPECT_STREQ(actual[i].text3, "");
    }
}

TEST_F(StartupObjectTest, RegistersTheStartupErrorsOnce)
{
    expectRows(
        registeredTable(2),
        {{10000, 1, -310, 0, "Startup error", "", ""},
         {10001, 1, -310, 0, "Startup module not found", "", ""},
         {10002, 1, -310, 0, "Startup plugin module not found", "", ""},
         {10003, 1, -310, 0, "Startup plugin directory not found", "", ""},
         {10004, 1, -310, 0, "Startup interface method not found", "", ""},
         {10005, 1, -310, 0, "No data", "", ""},
         {10006, 1, -310, 0, "Invalid data", "", ""},
         {10007, 3, 0, 0, "Sav/Rcl Handler Info", "", ""},
         {10008, 3, 50, 0, "Startup unkown option ", "", ""},
         {10009, 1, -300, 1,
          "Date and time are set to an illegal value. Please check the date and time settings in dialog "
          "Setup -> Date / Time.",
          "", ""},
         {-1, 0, 0, 0, "", "", ""}});
}

TEST_F(StartupObjectTest, RegistersTheComponentErrorsOnce)
{
    expectRows(registeredTable(11),
               {{90000, 1, -300, 0, "", "", ""},
                {90001, 1, -300, 0, "", "", ""},
                {90002, 2, 50, 0, "Sav/Rcl Manager Warning: property bag contains no data", "", ""},
                {90003, 2, 50, 0, "Sav/Rcl Manager Warning: got invalid data of property bag", "", ""},
                {90004, 3, 0, 0, "Sav/Rcl Manager Info: operation complete", "", ""},
                {90005, 3, 0, 0, "Sav/Rcl Handler Info", "", ""},
                {90006, 3, 0, 0, "SCPI Handler Info: goto local not accepted", "", ""},
                {90007, 1, -300, 0, "Sav/Rcl Handler Error: got invalid data of database", "", ""},
                {90008, 1, -300, 0, "Sav/Rcl Handler Error: no answer of database", "", ""},
                {90009, 1, -300, 0, "Sav/Rcl Handler Error: got invalid key of database", "", ""},
                {90010, 2, 50, 0, "Sav/Rcl Handler Warning: got empty data container", "", ""},
                {90011, 1, -300, 0, "SCPI Manager Error", "", ""},
                {90012, 3, 0, 0, "Print Handler Info", "", ""},
                {90013, 2, 0, 0, "Print Handler Warning", "", ""},
                {-1, 0, 0, 0, "", "", ""}});
}

} // namespace
} // namespace Orvia
