#include "Startup/VQMIntegrationStartup.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace Orvia {
namespace {

using Startup = VQMIntegrationStartup;

class ProcessFlagsTest : public testing::Test
{
protected:
    ProcessFlagsTest() { Startup::sm_preventFlag = false; }
    ~ProcessFlagsTest() override { ::setenv("PATH", m_path.c_str(), 1); }

    /// Makes "ps" print this and runs the test for another launcher.
    bool isPrevented(const std::string &processes, const char *name = "main.xml")
    {
        QFile script(m_folder.filePath("ps"));
        EXPECT_TRUE(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\ncat <<'END'\n" + QByteArray::fromStdString(processes) + "\nEND\n");
        script.close();
        script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        ::setenv("PATH", (m_folder.path().toStdString() + ":" + m_path).c_str(), 1);
        Startup::setPreventFlag(name);
        return Startup::getPreventFlag();
    }

private:
    QTemporaryDir m_folder;
    const std::string m_path = std::getenv("PATH");
};

TEST_F(ProcessFlagsTest, ASecondLauncherOfTheSameNameIsFound)
{
    const std::string one = "  11 pts/0   ./mainstartup  -l   main.xml\n";
    struct Case
    {
        std::string processes;
        bool prevented;
        const char *name = "main.xml";
    };
    const std::vector<Case> cases = {
        {"  PID TTY CMD", false},
        {one, false},
        {one + one, true},
        {one + "bash\n" + one + one, true},
        {one + "12 pts/0 ./mainstartup -l other.xml", false},
        {one + "12 pts/0 mainstartup -l main.xml", false},
        {one + "12 pts/0 00:00 ./mainstartup -l main.xml", false}, // the fourth field
        {one + "12 ./mainstartup -l main.xml", false},             // the second
        {one + "12 pts/0 ./Mainstartup -l main.xml", false},
        {one + "12 pts/0 ./mainstartup2 -l main.xml", true}, // starts with it
        {one + one, true, "./mainstartup -l main.xml"},      // the simplified line is what counts
        {one + one, false, "Main.xml"},
        {one + one, true, ""},
        // Lines are looked at in pieces of 149 characters: what stands behind is a line of its own.
        {one + "12 pts/0 ./mainstartup " + std::string(118, 'x') + " main.xml", false},
        {one + "12 pts/0 ./mainstartup " + std::string(117, 'x') + " main.xml", true},
        {one + std::string(149, 'x') + "12 pts/0 ./mainstartup main.xml", true},
    };
    for (const Case &expected : cases) {
        Startup::sm_preventFlag = false;
        EXPECT_EQ(isPrevented(expected.processes, expected.name), expected.prevented) << expected.processes;
    }
    EXPECT_TRUE(isPrevented(one + one));
    EXPECT_TRUE(isPrevented(one)); // never set back
}

TEST_F(ProcessFlagsTest, WithoutPsNothingIsSaid)
{
    ::setenv("PATH", "/nowhere", 1);
    Startup::setPreventFlag("main.xml");
    EXPECT_FALSE(Startup::getPreventFlag());
}

TEST_F(ProcessFlagsTest, TheAbortFlagFollowsAndTheStageCounts)
{
    for (bool abort : {true, false}) {
        Startup::setAbortFlag(abort);
        EXPECT_EQ(Startup::getAbortFlag(), abort);
    }
    const int before = Startup::getStartupStage();
    for (int i = 0; i < 3; ++i)
        Startup::setStartupStage();
    EXPECT_EQ(Startup::getStartupStage(), before + 3);
}

} // namespace
} // namespace Orvia
