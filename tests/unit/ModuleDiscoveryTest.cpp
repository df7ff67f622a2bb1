#include "tests/unit/StartupFixture.h"

#include <QDir>

#include <algorithm>
#include <numeric>
#include <random>

namespace Orvia {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

using Texts = std::vector<std::string>;

const std::string nameLabel = "Module Name             : ";
/// What discovery says of the well-behaved "database".
const Texts databaseLines = {nameLabel + "Database", "Module Id               : 4",
                             "Module Version          : 03.14.159", "Module Interface Version: 01.02.345"};

class ModuleDiscoveryTest : public StartupTest
{
};

TEST_F(ModuleDiscoveryTest, AsksEachModuleInListOrderAndShowsItsProgress)
{
    EXPECT_EQ(discover({"database", "base3"}), 0);
    EXPECT_THAT(calls.of({"module", "debug", "progress", "alert"}),
                ElementsAre("new 0 Load Base System + Plugins", "0: 0", "database info", databaseLines[0],
                            "database create 4", "database getInterfaceVersion", "database getModuleName",
                            "database getModuleId", databaseLines[1], databaseLines[2], databaseLines[3],
                            "0: 50", "base3 info", nameLabel + "base3", "base3 create 3",
                            "base3 getInterfaceVersion", "base3 getModuleName", "base3 getModuleId",
                            "Module Id               : 3", databaseLines[2], databaseLines[3], "0: 100",
                            "0: 100"));
    EXPECT_THAT(startup.keys(), ElementsAre(3, 4));
    const VQMLoadedModuleInformation *record = startup.record(4);
    EXPECT_STREQ(record->name, "Database");
    EXPECT_EQ(record->moduleId, 4);
    EXPECT_EQ(record->info->defaultId, 4);
    EXPECT_EQ(record->interfaceVersion->build, 345);
    EXPECT_FALSE(record->initialized);
}

/// A library that discovery cannot use, what is called in it, and how it is reported.
struct Refusal
{
    std::string file;
    Texts called;
    Texts reported; ///< %1 is the library's path
    bool alert = false;

    friend void PrintTo(const Refusal &refusal, std::ostream *out) { *out << refusal.file; }
};

class RefusalTest : public StartupTest, public testing::WithParamInterface<Refusal>
{
};

TEST_P(RefusalTest, IsReportedAndTheNextFileIsTaken)
{
    const auto &[file, called, reported, alert] = GetParam();
    EXPECT_EQ(discover({file, "database"}), 0);

    Texts lines;
    for (const std::string &line : reported)
        lines.push_back(QString::fromStdString(line).replace("%1", path(file).c_str()).toStdString());
    Texts alerts;
    if (alert)
        alerts = {"Error: Loading Module DLL's | Could not load module\n" + path(file)};
    lines.insert(lines.end(), databaseLines.begin(), databaseLines.end());
    EXPECT_EQ(calls.of("debug"), lines);
    EXPECT_EQ(calls.of("alert"), alerts);
    Texts inModule = calls.of("module");
    std::erase_if(inModule, [](const std::string &call) { return call.starts_with("database "); });
    Texts expected;
    for (const std::string &call : called)
        expected.push_back(file + " " + call);
    EXPECT_EQ(inModule, expected);
    EXPECT_THAT(startup.keys(), ElementsAre(4));
    EXPECT_THAT(calls.of("progress"),
                ElementsAre("new 0 Load Base System + Plugins", "0: 0", "0: 50", "0: 100"));
    EXPECT_FALSE(isMapped(file));
}

const std::string notLoaded = "[1 10001] Could not load module\n%1";
const std::string noInfo = "[1 10004] Could not access the interface method VQMGetModuleInfoof module %1!";
const std::string noCreate =
    "[1 10004] Could not access the interface method VQMCreateModuleInterfaceInstanceof module %1!";
const std::string notNeeded = ".so module will be unloaded because it isn't necessary for this device!";

INSTANTIATE_TEST_SUITE_P(
    Library, RefusalTest,
    testing::Values(
        Refusal{"missing", {}, {notLoaded}, true}, Refusal{"text", {}, {notLoaded}, true},
        Refusal{"empty", {}, {notLoaded}, true}, Refusal{"unresolved", {}, {notLoaded}, true},
        Refusal{"no_info", {"closed"}, {noInfo}}, Refusal{"null_info", {"info", "closed"}, {noInfo}},
        Refusal{"throws_in_info", {"info", "closed"}, {noInfo}},
        Refusal{"no_create", {"info", "closed"}, {nameLabel + "no_create", noCreate}},
        Refusal{"null_object", {"info", "create 10000", "closed"}, {nameLabel + "null_object", noCreate}},
        Refusal{
            "throws_in_create", {"info", "create 9", "closed"}, {nameLabel + "throws_in_create", noCreate}},
        Refusal{"throws_in_name",
                {"info", "create 9", "getInterfaceVersion", "getModuleName", "deleted", "closed"},
                {nameLabel + "throws_in_name", noCreate}},
        Refusal{"family4", {"info", "closed"}, {"family4" + notNeeded}},
        Refusal{"family0", {"info", "closed"}, {"family0" + notNeeded}},
        Refusal{
            "type2", {"info", "closed"}, {"type2.so module will be unloaded because of wrong module type"}}),
    [](const auto &refusal) { return refusal.param.file; });

TEST_F(ModuleDiscoveryTest, NamesFilesAsTheListDoesButEntryPointsByTheAbsolutePath)
{
    const std::string list = folder.filePath("relative.xml").toStdString();
    QFile file(list.c_str());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(
        "<ModuleLoadList><D><File name='missing.so'/><File name='no_info.so'/><File name='database.so'/></D>"
        "</ModuleLoadList>");
    file.close();
    ASSERT_TRUE(QDir::setCurrent(TEST_MODULE_DIR));
    EXPECT_EQ(startup.findModules(list.c_str()), 0);
    EXPECT_EQ(calls.of("debug")[0], "[1 10001] Could not load module\nmissing.so");
    EXPECT_EQ(calls.of("debug")[1],
              "[1 10004] Could not access the interface method VQMGetModuleInfoof module " + path("no_info") +
                  "!");
    EXPECT_THAT(startup.keys(), ElementsAre(4)); // found without the loader's search path
}

TEST_F(ModuleDiscoveryTest, SurvivesOddNamesAndVersions)
{
    EXPECT_EQ(discover({"null_name", "null_version", "name31", "name40", "database"}), 0);
    EXPECT_STREQ(startup.record(12)->name, "");
    EXPECT_STREQ(startup.record(14)->name, "Name_of_31_characters_012345678");
    EXPECT_STREQ(startup.record(15)->name, "Name_of_40_characters_012345678");
    EXPECT_EQ(startup.record(13)->interfaceVersion, nullptr);
    EXPECT_EQ(calls.of("debug")[7], "Module Interface Version: 00.00.00");
}

TEST_F(ModuleDiscoveryTest, SurvivesARecordWithoutAName)
{
    EXPECT_EQ(discover({"odd_record", "database"}), 0);
    EXPECT_THAT(calls.of("debug"),
                testing::IsSupersetOf({nameLabel, std::string("Module Version          : 03.-05.159")}));
    EXPECT_THAT(startup.keys(), ElementsAre(4, 16));
}

TEST_F(ModuleDiscoveryTest, NumbersPlugInsInListOrderAndSortsByKey)
{
    EXPECT_EQ(discover({"plugin", "base3", "null_object", "database", "plugin_scpi"}), 0);
    EXPECT_THAT(startup.keys(), ElementsAre(3, 4, 10000, 10002)); // 10001 went to the one without an object
    EXPECT_EQ(startup.record(10002)->info->parts, 2);
    EXPECT_EQ(startup.record(10002)->moduleId, 10002);
}

TEST_F(ModuleDiscoveryTest, TakesDuplicateIdsAsTheyCome)
{
    EXPECT_EQ(discover(copies({5, 4, 5})), 0);
    EXPECT_THAT(startup.keys(), ElementsAre(4, 5, 5));
    EXPECT_EQ(startup.baseModuleCount, 3u);
    EXPECT_NE(startup.moduleTable->entries[1].value, startup.moduleTable->entries[2].value);
}

TEST_F(ModuleDiscoveryTest, CountsGroupsAndPartsAndPublishesTheSpecialModules)
{
    VQMPlugInDllModuleInterface *const before = nullptr;
    plugIns = {before};
    EXPECT_EQ(discover({"plugin", "gui", "loadable16", "type11", "plugload128", "scpi", "loadable32",
                        "plugload256", "plugin_scpi", "database"}),
              0);
    EXPECT_THAT(startup.keys(), ElementsAre(4, 6, 7, 11, 20, 21, 30, 40, 10000, 10001));
    EXPECT_EQ(startup.baseModuleCount, 3u);
    std::vector<int> counts;
    for (const ModuleGroupCounters &group : startup.groupCounters) {
        counts.push_back(static_cast<int>(group.moduleCount));
        for (const PartCounters &part : group.partCounters)
            counts.push_back(static_cast<int>(part.moduleCount));
    }
    EXPECT_THAT(counts, ElementsAre(2, 2, 2, 1, /**/ 2, 1, 1, 1, /**/ 2, 1, 0, 1));
    EXPECT_EQ(anchor.databaseModule, startup.record(4)->moduleInterface);
    EXPECT_EQ(anchor.scpiModule, startup.record(6)->moduleInterface);
    EXPECT_EQ(anchor.guiModule, startup.record(7)->moduleInterface);
    std::vector<VQMModuleInterface *> expected = {before};
    for (int key : {20, 21, 30, 40, 10000, 10001})
        expected.push_back(startup.record(key)->moduleInterface);
    EXPECT_THAT(plugIns, ElementsAreArray(expected));
}

TEST_F(ModuleDiscoveryTest, ShowsTheShareOfFilesThatBecameModules)
{
    const std::vector<std::pair<Texts, Texts>> cases = {
        {{"database", "base3", "scpi", "gui"}, {"0", "25", "50", "75", "100", "100"}},
        {{"database", "base3", "scpi"}, {"0", "33", "66", "100", "100"}},
        {{"family4", "database", "missing", "base3", "type2"}, {"0", "20", "40", "100"}},
        {{"/opt/GlueGPIBDll.x.so", "database"}, {"0", "50", "100"}},
    };
    for (const auto &[files, percentages] : cases) {
        resetFakes();
        OpenStartup fresh(1);
        fresh.setTargetId(0x8);
        discover(files, &fresh);
        Texts expected = {"new 0 Load Base System + Plugins"};
        for (const std::string &percentage : percentages)
            expected.push_back("0: " + percentage);
        EXPECT_EQ(calls.of("progress"), expected);
    }
}

TEST_F(ModuleDiscoveryTest, ShowsNoProgressWithoutAHandler)
{
    answers.progressHandlerInstalled = false;
    EXPECT_EQ(discover({"database"}), 0);
    EXPECT_FALSE(startup.showProgress);
    startup.initializeModules({}, true);
    startup.initializePlugIns(7);
    startup.freeProgressBar();
    EXPECT_THAT(calls.of("progress"), IsEmpty());
}

TEST_F(ModuleDiscoveryTest, SkipsTheGlueLibraryWithoutOpeningIt)
{
    startup.setTargetId(0);
    EXPECT_EQ(discover({"/opt/GlueGPIBDll.so"}), 0);
    EXPECT_EQ(startup.moduleTable->count, 0);
    EXPECT_THAT(calls.of({"debug", "alert"}), IsEmpty());
    EXPECT_THAT(calls.of("progress"), ElementsAre("new 0 Load Base System + Plugins", "0: 0", "0: 100"));
    discover({"/opt/gluegpibdll.so"}); // another file; the skipped one is listed no more
    EXPECT_THAT(calls.of("alert"), ElementsAre("Error: Loading Module DLL's | Could not load module\n"
                                               "/opt/gluegpibdll.so"));
}

TEST_F(ModuleDiscoveryTest, StopsAtTheNextFileWhenAborted)
{
    startup.setTargetId(0x2);
    calls.onCall = [](const FakeCalls::Call &call) {
        if (call.text == "base3 getModuleId")
            OpenStartup::setAbortFlag(true);
    };
    EXPECT_EQ(discover({"gui", "base3", "database", "scpi"}), 0);
    EXPECT_THAT(startup.keys(), ElementsAre(3, 7)); // sorted all the same,
    EXPECT_EQ(startup.baseModuleCount, 2u);         // counted,
    EXPECT_EQ(calls.of("alert").size(), 2u);        // the required ones missed,
    EXPECT_THAT(calls.of("progress"),
                ElementsAre("new 0 Load Base System + Plugins", "0: 0", "0: 25", "0: 50",
                            "0: 100")); // and the bar ended
    EXPECT_FALSE(isMapped("database"));
}

TEST_F(ModuleDiscoveryTest, MissesTheModulesThatTheFamilyRequires)
{
    const std::string cwd = QDir::currentPath().toStdString();
    const auto missed = [&cwd](const std::string &name) {
        return "Error: Loading Firmware DLL's | Could not find\n  " + name + "\nmodule in\n " + cwd;
    };
    const Texts all = {missed("Database"), missed("ScpiDll"), missed("GuiDll")};
    const std::vector<std::pair<HwESigGenFamily, Texts>> cases = {
        {0x8, {all[0]}}, {0x2, all}, {0xA, all}, {0x80000000, all}, {0, {}}};
    for (const auto &[family, alerts] : cases) {
        resetFakes();
        OpenStartup fresh(1);
        fresh.setTargetId(family);
        EXPECT_EQ(discover({"base3"}, &fresh), 0);
        EXPECT_EQ(calls.of("alert"), alerts) << family;
    }
    resetFakes();
    startup.setTargetId(0x2);
    EXPECT_EQ(discover({"gui", "scpi", "database"}), 0);
    EXPECT_THAT(calls.of("alert"), IsEmpty());
}

TEST_F(ModuleDiscoveryTest, NeedsALoadListWithFiles)
{
    EXPECT_EQ(startup.findModules(nullptr), 10001);
    EXPECT_THAT(calls.of("alert"), ElementsAre("Error: Loading Firmware DLL's | No load list "));
    calls.clear();
    EXPECT_EQ(discover({}), 10001);
    EXPECT_EQ(startup.findModules("/no/such/list.xml"), 10001);
    EXPECT_STREQ(startup.getProgArgument(), "/no/such/list.xml");
    EXPECT_EQ(startup.findModules(nullptr), 10001); // that list again
    const std::string text =
        "Error: Module load list | List is empty or parser error or no file could not be found!";
    EXPECT_THAT(calls.of("alert"), ElementsAre(text, text, text));
    EXPECT_THAT(calls.of("progress"), IsEmpty());
}

TEST_F(ModuleDiscoveryTest, RunsOnceAndOnlyWithAnAnchor)
{
    OpenStartup::anchorInterface = nullptr;
    EXPECT_EQ(discover({"missing", "database"}), 0);
    EXPECT_THAT(calls.all, IsEmpty());
    EXPECT_EQ(startup.getProgArgument(), nullptr);
    OpenStartup::anchorInterface = &anchor;
    anchor.plugInInterfaces = nullptr; // nobody wants the plug-ins
    for (const char *file : {"database", "loadable16", "plugin", "plugload128"}) {
        OpenStartup fresh(1);
        fresh.setTargetId(0x8);
        EXPECT_EQ(discover({file}, &fresh), 0);
        calls.clear();
        EXPECT_EQ(discover({"missing"}, &fresh), 0) << file;
        EXPECT_THAT(calls.all, IsEmpty()) << file;
    }
}

TEST_F(ModuleDiscoveryTest, FreeResourcesClosesFromTheLastToTheFirst)
{
    startup.freeResources();
    load({"plugin", "database", "base3"});
    startup.plugInsTerminate();
    startup.modulesTerminate({}, true);
    startup.record(4)->closeLibrary(); // not touched again
    calls.clear();
    startup.freeResources();
    EXPECT_THAT(calls.of({"module", "trace"}), ElementsAre("plugin closed", "base3 closed"));
    EXPECT_STREQ(startup.record(10000)->name, "Unknown");
    EXPECT_STREQ(startup.record(4)->name, "Database");
    EXPECT_STREQ(startup.record(3)->name, "Unknown");
    for (const char *file : {"plugin", "database", "base3"})
        EXPECT_FALSE(isMapped(file)) << file;
    EXPECT_EQ(startup.moduleTable->count, 3);
}

TEST_F(ModuleDiscoveryTest, ClosedModulesAreCalledNoMore)
{
    load({"plugin", "database", "loadable16"});
    startup.plugInsTerminate();
    startup.modulesTerminate({}, true);
    startup.freeResources();
    calls.clear();
    EXPECT_EQ(startup.initializeModules({}, true), 0);
    EXPECT_EQ(startup.initializePlugIns(7), 0);
    startup.plugInsTerminate();
    startup.modulesTerminate({}, true);
    EXPECT_THAT(calls.of("module"), IsEmpty());
}

TEST_F(ModuleDiscoveryTest, HoldsManyModules)
{
    for (int count : {33, 1000}) {
        std::vector<int> ids(count);
        std::iota(ids.begin(), ids.end(), 1);
        const std::vector<int> sorted = ids;
        std::shuffle(ids.begin(), ids.end(), std::mt19937(1));
        OpenStartup fresh(1);
        fresh.setTargetId(0x8);
        EXPECT_EQ(discover(copies(ids), &fresh), 0);
        EXPECT_EQ(fresh.keys(), sorted);
        EXPECT_EQ(fresh.moduleTable->capacity, count == 33 ? 64 : 1024);
        EXPECT_EQ(fresh.initializeModules({}, true), 0);
        EXPECT_EQ(fresh.baseModulesInitialized, ids.size());
        calls.clear();
        fresh.modulesTerminate({}, true);
        fresh.freeResources();
        EXPECT_EQ(calls.of("module").size(), ids.size() * 4); // announced, terminated, deleted, closed
    }
}

} // namespace
} // namespace Orvia
