#include "gui/EGuiEventType.h"
#include "gui/VQMMainGui.h"
#include "platform/Export.h"
#include "tests/unit/GuiFixture.h"

#include <QPointer>
#include <QWidget>

#include <fstream>

namespace {

QPointer<QWidget> modulesWidget;

} // namespace

/// What the Gui module made in C answers as its main widget.
extern "C" VQM_EXPORT void *testMainWidget()
{
    return modulesWidget;
}

namespace Orvia {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;

using Texts = std::vector<std::string>;

class GuiStageTest : public GuiTest
{
protected:
    GuiStageTest()
    {
        answers.properties["StartupProcess/ReleaseNotes"] = "<null>";
        HwAbstractionLayer::m_repository = nullptr;
        VQMMainGui::m_Id = -1;
    }
    ~GuiStageTest() override
    {
        VQMMainGui::m_Id = -1;
        delete modulesWidget;
    }

    /// Discovers the modules and brings up all but the Gui module, as the launcher does.
    void bringUp(const Texts &files)
    {
        load(files);
        startup.setComponentSelector(componentAllButGui);
        startup.initializeModules();
        calls.clear();
    }
    void runStage()
    {
        VQMMainGui gui(&startup);
        QEvent start(static_cast<QEvent::Type>(eStartGui));
        EXPECT_TRUE(QApplication::sendEvent(&gui, &start));
    }
    /// A main widget that is noted when it is deleted, with what has taken its place then.
    static QWidget *startupWindow()
    {
        auto *window = new QWidget;
        QObject::connect(window, &QObject::destroyed, [] {
            calls.add("window",
                      mainWidget() == nullptr ? "deleted, none instead" : "deleted, another instead");
        });
        setMainWidget(window);
        return window;
    }
    static VQMHwRepository *repository(int code, bool hasUnit)
    {
        return static_cast<VQMHwRepository *>(handMadeRepository(code, hasUnit));
    }
    std::string anchorText() const
    {
        return QString::asprintf("%p", static_cast<const void *>(&anchor)).toStdString();
    }
};

TEST_F(GuiStageTest, TakesElevenStepsInOrder)
{
    bringUp({"plugin", "handmade_gui", "base3"});
    startup.initializeSwpRemote(SwpRegisterCallback, [](ESwpStartupStep step, VQMMainThread *) {
        calls.add("callback", std::to_string(step));
    });
    std::ofstream(startup.loadListName) << "<Startup><Languages/><Menu/></Startup>";
    modulesWidget = new QWidget;
    startupWindow();
    VQMMainGui::m_Id = 0;
    HwAbstractionLayer::m_repository = repository(256, true);
    runStage();
    startup.initializeSwpRemote(SwpRegisterCallback, nullptr);
    EXPECT_THAT(
        calls.of({"handover", "module", "progress", "callback", "complete", "window", "asked", "box"}),
        ElementsAre("menu", "languages",
                    // the Gui module
                    "1: 50", "handmade_gui position 5 " + anchorText() + " -1", "1: 100",
                    "base3 modulesFinished", "handmade_gui position 7", "plugin modulesFinished",
                    // the Scpi and Gui parts
                    "new 2 Initialize Plugins", "2: 0", "base3 loadablesFinished 6",
                    "handmade_gui position 8 6", "plugin loadablesFinished 6", "plugin initialize 6", "2: 0",
                    "base3 pluginsFinished 6", "handmade_gui position 9 6", "plugin pluginsFinished 6",
                    "base3 pluginLoadablesFinished 6", "handmade_gui position 10 6",
                    "plugin pluginLoadablesFinished 6",
                    // the callback, the user interface, the stage
                    "2", "handmade_gui position 21 " + anchorText(), "base3 completeFinished",
                    "handmade_gui position 11", "plugin completeFinished", "-1",
                    // the main widget, the release notes, the progress display
                    "handmade_gui position 18", "deleted, another instead",
                    "StartupProcess/ReleaseNotes, else y:\\VQM-Gui\\vqm_release_notes.txt",
                    "button 0 removed", "removed 0", "removed 1", "removed 2",
                    // the hardware
                    "repository position 6", "repository position 6", "repository position 6",
                    "repository position 27 0", "unit position 1 1"));
    EXPECT_EQ(mainWidget(), modulesWidget);
}

TEST_F(GuiStageTest, ReplacesTheMainWidgetUnlessItIsTheModulesAlready)
{
    bringUp({"handmade_gui"});
    startupWindow();
    runStage(); // the module has none
    EXPECT_EQ(mainWidget(), nullptr);
    EXPECT_THAT(calls.of("window"), ElementsAre("deleted, none instead"));

    modulesWidget = new QWidget; // none before
    runStage();
    EXPECT_EQ(mainWidget(), modulesWidget);
    runStage(); // the same again
    ASSERT_FALSE(modulesWidget.isNull());
    EXPECT_EQ(mainWidget(), modulesWidget);
    delete modulesWidget;
    runStage(); // none, and none before
    EXPECT_EQ(mainWidget(), nullptr);
    EXPECT_EQ(calls.of("window").size(), 1u);
}

TEST_F(GuiStageTest, GoesOnWithoutAGuiModuleAndWithTheGuiDisabled)
{
    bringUp({"base3", "plugin"});
    const QWidget *window = startupWindow();
    startup.loadListName = nullptr;
    runStage();
    EXPECT_EQ(mainWidget(), window); // left alone
    EXPECT_THAT(calls.of({"module", "complete", "asked", "handover"}),
                IsSupersetOf({"plugin initialize 6", "base3 completeFinished", "-1",
                              "StartupProcess/ReleaseNotes, else y:\\VQM-Gui\\vqm_release_notes.txt"}));
    EXPECT_THAT(calls.of({"window", "handover"}), IsEmpty());

    OpenStartup other(1);
    other.setTargetId(0x8);
    discover({"handmade_gui"}, &other);
    answers.guiEnabled = false;
    calls.clear();
    VQMMainGui gui(&other);
    QEvent start(static_cast<QEvent::Type>(eStartGui));
    QApplication::sendEvent(&gui, &start);
    EXPECT_THAT(calls.of("module"),
                ElementsAre("handmade_gui position 8 6", "handmade_gui position 9 6",
                            "handmade_gui position 10 6", "handmade_gui position 21 " + anchorText(),
                            "handmade_gui position 11", "handmade_gui position 18"));
    EXPECT_THAT(calls.of("window"), ElementsAre("deleted, none instead"));
}

TEST_F(GuiStageTest, RunsOncePerEvent)
{
    bringUp({"handmade_gui", "plugin", "status5"});
    modulesWidget = new QWidget;
    VQMMainGui::m_Id = 3;
    runStage();
    calls.clear();
    runStage();
    EXPECT_THAT(calls.of("box"), ElementsAre("ERROR | Already initialized: GuiDll | 1 0 17 0 0"));
    EXPECT_THAT(calls.of({"module", "complete", "progress"}),
                IsSupersetOf(Texts{"plugin initialize 6", "handmade_gui position 21 " + anchorText(), "-1",
                                   "handmade_gui position 18", "button 3 removed"}));
    EXPECT_EQ(mainWidget(), modulesWidget);
}

TEST_F(GuiStageTest, TellsTheHardwareOfThreeKindsAndRemovesButtonsFromZeroOn)
{
    struct Case
    {
        int code;
        bool hasUnit;
        int asked; ///< how often for the code
        bool told;
        int button;
    };
    for (const Case &expected : std::initializer_list<Case>{{64, true, 1, true, -1},
                                                            {1, true, 2, true, -2},
                                                            {256, true, 3, true, 7},
                                                            {2, true, 3, false, 0},
                                                            {128, true, 3, false, -1},
                                                            {320, true, 3, false, -1},
                                                            {0, true, 3, false, -1},
                                                            {64, false, 1, true, -1}}) {
        calls.clear();
        HwAbstractionLayer::m_repository = repository(expected.code, expected.hasUnit);
        VQMMainGui::m_Id = expected.button;
        runStage();
        Texts texts(expected.asked, "repository position 6");
        if (expected.told)
            texts.push_back("repository position 27 0");
        if (expected.told && expected.hasUnit)
            texts.push_back("unit position 1 1");
        EXPECT_EQ(calls.of("module"), texts) << expected.code;
        const std::string removed = "button " + std::to_string(expected.button) + " removed";
        EXPECT_EQ(testing::Matches(Contains(removed))(calls.of("progress")), expected.button >= 0);
    }
    HwAbstractionLayer::m_repository = nullptr;
    calls.clear();
    runStage();
    EXPECT_THAT(calls.of("module"), IsEmpty());
}

} // namespace
} // namespace Orvia
