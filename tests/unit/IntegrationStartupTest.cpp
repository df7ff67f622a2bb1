#include "Startup/IcppAnnouncementWrapper.h"
#include "tests/unit/StartupFixture.h"

#include <cstdio>
#include <cstdlib>

namespace Orvia {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class IntegrationStartupTest : public StartupTest
{
protected:
    static std::vector<std::string> called(const std::string &operation)
    {
        std::vector<std::string> found = calls.of("module");
        std::erase_if(found, [&](const std::string &call) { return !call.ends_with(operation); });
        calls.clear();
        return found;
    }
};

TEST_F(IntegrationStartupTest, PassesCoverWhatIsSelected)
{
    load({"gui", "database", "base3", "status5"});
    EXPECT_EQ(startup.initializeModules(), 0); // nothing selected yet
    startup.setComponentSelector(static_cast<componentId>(3));
    EXPECT_EQ(startup.initializeModules(), 0);
    startup.modulesTerminate();
    startup.setComponentSelector(componentGuiOnly);
    answers.guiEnabled = false;
    EXPECT_EQ(startup.initializeModules(), 0);
    EXPECT_THAT(calls.all, IsEmpty());

    answers.guiEnabled = true;
    EXPECT_EQ(startup.initializeModules(), 0);
    EXPECT_THAT(called("initialize -1"), ElementsAre("gui initialize -1"));
    startup.setComponentSelector(componentAllButGui);
    EXPECT_EQ(startup.initializeModules(), 5);
    EXPECT_THAT(called("initialize -1"),
                ElementsAre("base3 initialize -1", "database initialize -1", "status5 initialize -1"));

    startup.modulesTerminate();
    EXPECT_THAT(called(" terminate"),
                ElementsAre("status5 terminate", "database terminate", "base3 terminate"));
    startup.setComponentSelector(componentGuiOnly);
    answers.guiEnabled = false; // makes no difference here
    startup.modulesTerminate();
    EXPECT_THAT(called(" terminate"), ElementsAre("gui terminate"));
}

TEST_F(IntegrationStartupTest, MemoryThatIsJustEnoughPasses)
{
    answers.requiredMemoryMb = answers.availableMemoryMb = 200;
    startup.initializeModules();
    answers.requiredMemoryMb = -1; // compared with their signs
    answers.availableMemoryMb = 0;
    startup.testForAvailableMemory();
    EXPECT_THAT(calls.all, IsEmpty());
}

using IntegrationStartupDeathTest = IntegrationStartupTest;

TEST_F(IntegrationStartupDeathTest, MemoryThatIsShortEndsTheProcess)
{
    load({"base3"});
    answers.requiredMemoryMb = answers.availableMemoryMb + 1;
    startup.setComponentSelector(componentAllButGui);
    const auto run = [this] {
        std::atexit([] {
            for (const FakeCalls::Call &call : calls.all)
                std::fprintf(stderr, "%s\n", call.text.c_str());
        });
        startup.initializeModules();
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(1),
                testing::Eq("DebugServer/enableMessageBoxes = 1\n"
                            "Startup | <h3 align=\"center\">Not enough memory to start application!</h3>"
                            "        <h3>Please free up memory or increase the size of the system swap "
                            "file!</h3><ul> | 1 3 17 0 0\n"
                            "DebugServer/enableMessageBoxes = 0\n"));
}

TEST_F(IntegrationStartupTest, AnObserverTakesOverTheAnnouncements)
{
    struct Observer final : IcppAnnouncementWrapper
    {
        void destroyAnnouncement(int id) override { calls.add("observer", "destroy " + std::to_string(id)); }
        void destroyAllAnnouncements() override { calls.add("observer", "destroy all"); }
    } observer;
    VQMMainStartupInterface &interface = startup;
    const auto destroy = [&interface](int id) {
        calls.clear();
        interface.destroyAnnouncement(id);
        interface.destroyAllAnnouncements();
    };
    destroy(-1);
    EXPECT_THAT(calls.of("error"), ElementsAre("destroy 4294967295", "destroy all"));
    startup.registerAnnouncementObersever(&observer);
    destroy(5);
    EXPECT_THAT(calls.of("observer"), ElementsAre("destroy 5", "destroy all"));
    EXPECT_THAT(calls.of("error"), IsEmpty());
    startup.unregisterAnnouncementObersever();
    destroy(6);
    EXPECT_THAT(calls.of("error"), ElementsAre("destroy 6", "destroy all"));
    startup.registerAnnouncementObersever(&observer);
    startup.registerAnnouncementObersever(nullptr);
    destroy(7);
    EXPECT_THAT(calls.of("error"), ElementsAre("destroy 7", "destroy all"));
}

} // namespace
} // namespace Orvia
