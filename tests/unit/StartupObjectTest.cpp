#include "Startup/IcppAnnouncementWrapper.h"
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

TEST(VirtualTable, OfTheObjectsThatOthersProvideStandsInTheAgreedOrder)
{
    EXPECT_EQ(positionOf(&IcppAnnouncementWrapper::destroyAnnouncement), 0);
    EXPECT_EQ(positionOf(&IcppAnnouncementWrapper::destroyAllAnnouncements), 1);
    EXPECT_EQ(positionOf(&VQMErrorManagerHook::alert), 2);
    EXPECT_EQ(positionOf(&VQMHwRepository::findOption), 2);
    EXPECT_EQ(positionOf(&VQMHwRepository::hasOption), 3);
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
        answers.properties["StartupProcess/ProgressBar"] = value;
        EXPECT_FALSE(OpenStartup(1).showProgress) << value;
    }
    answers.properties.clear();
    EXPECT_FALSE(OpenStartup(1).showProgress);
    answers.properties["StartupProcess/ProgressBar"] = "1";
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

/// Expects rows with rising codes, a closing row, and among them the ones given.
void expectTable(int registrationId, std::size_t count, const std::vector<Row> &samples)
{
    const std::vector<Row> rows = registeredTable(registrationId);
    ASSERT_EQ(rows.size(), count + 1);
    for (std::size_t i = 0; i < count; ++i)
        EXPECT_EQ(rows[i].code, rows[0].code + static_cast<int>(i));
    for (const Row &sample : samples) {
        const Row &row = sample.code < 0 ? rows.back() : rows[sample.code - rows[0].code];
        EXPECT_THAT((std::vector{row.code, row.severity, row.scpiCode, row.flag}),
                    ElementsAre(sample.code, sample.severity, sample.scpiCode, sample.flag));
        EXPECT_STREQ(row.text, sample.text);
        EXPECT_STREQ(row.text2, "");
        EXPECT_STREQ(row.text3, "");
    }
}

TEST_F(StartupObjectTest, RegistersItsErrorTablesOnce)
{
    const Row end = {-1, 0, 0, 0, "", "", ""};
    expectTable(2, 10,
                {{10000, 1, -310, 0, "Startup error", "", ""},
                 {10008, 3, 50, 0, "Startup unkown option ", "", ""},
                 {10009, 1, -300, 1,
                  "Date and time are set to an illegal value. Please check the date and time settings in "
                  "dialog Setup -> Date / Time.",
                  "", ""},
                 end});
    expectTable(11, 14,
                {{90000, 1, -300, 0, "", "", ""},
                 {90002, 2, 50, 0, "Sav/Rcl Manager Warning: property bag contains no data", "", ""},
                 {90013, 2, 0, 0, "Print Handler Warning", "", ""},
                 end});
}

} // namespace
} // namespace Orvia
