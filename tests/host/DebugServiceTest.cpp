#include "platform/Debug.h"

#include "tests/host/HostTest.h"

namespace Orvia {

namespace {

class DebugServiceTest : public HostTest
{
protected:
    static std::string printed(int code, const QString &text, const char *file = nullptr, int line = -1)
    {
        return standardError([&] { Debug::println(1, 0, text, 1, code, file, line); });
    }
};

TEST_F(DebugServiceTest, LevelFollowsThePropertyOfTheModule)
{
    EXPECT_TRUE(Debug::isActive(1, 1, 0));
    EXPECT_FALSE(Debug::isActive(1, 2, 0));
    set("DebugServer", "level.1", "3");
    EXPECT_TRUE(Debug::isActive(1, 3, 0));
    EXPECT_FALSE(Debug::isActive(1, 4, 0));
    EXPECT_FALSE(Debug::isActive(11, 3, 0));
    set("DebugServer", "level.1", "0");
    EXPECT_FALSE(Debug::isActive(1, 1, 0));
}

TEST_F(DebugServiceTest, LinesNameModuleAndErrorAndStayReadable)
{
    EXPECT_EQ(printed(10001, "Could not find\n  GuiDll\nmodule\n", "file.cpp", 12),
              "[module 1] error 10001: Could not find\n      GuiDll\n    module (file.cpp:12)\n");
    EXPECT_EQ(printed(0, QString(QChar(0xb5)) + "W 100 %1 %n"), "[module 1] \xc2\xb5W 100 %1 %n\n");
}

TEST_F(DebugServiceTest, LogFileIsAppendedToAndItsFailureSaidOnce)
{
    write("debug.log", "before\n");
    set("DebugServer", "logFile", "debug.log");
    printed(0, "one\ntwo");
    EXPECT_TRUE(contents("debug.log").startsWith("before\n"));
    EXPECT_TRUE(contents("debug.log").endsWith(" [module 1] one\n    two\n"));

    set("DebugServer", "logFile", "missing/debug.log");
    EXPECT_THAT(printed(0, "x"), ::testing::HasSubstr("missing/debug.log: No such file"));
    EXPECT_EQ(printed(0, "y"), "[module 1] y\n");
}

TEST_F(DebugServiceTest, MessageBoxNeedsPropertyAndPresenter)
{
    std::vector<QString> shown;
    Debug::installMessageBoxPresenter([&](const QString &caption, const QString &text) {
        Debug::installMessageBoxPresenter({}); // may call back: nothing is locked
        shown.push_back(caption + '|' + text);
    });
    const QString text = "<h3 align=\"center\">Not enough!</h3>      <h3>Free 1 &lt; 2 up</h3><ul>";
    const auto show = [&] { Debug::debugMessageBox("Startup", text, true, 3, 17, 0, 0); };
    EXPECT_EQ(standardError(show), "[message] Startup: Not enough!\n    Free 1 < 2 up\n");
    EXPECT_TRUE(shown.empty());
    set("DebugServer", "enableMessageBoxes", "1");
    standardError(show);
    standardError(show); // the presenter has removed itself
    EXPECT_THAT(shown, ::testing::ElementsAre("Startup|" + text));
}

} // namespace

} // namespace Orvia
