#include "diagnosis/ConfigurationReaders.h"
#include "diagnosis/StartPlan.h"

#include <gmock/gmock.h>

namespace Orvia {
namespace {

using testing::ElementsAre;

constexpr HwESigGenFamily generators = 0x2;
constexpr HwESigGenFamily powerMeters = 0x8;

TEST(ConfigurationCheckTest, DetectsReadersThatDrift)
{
    const ConfigurationContents contents{
        true, {"/a.so", "/b.so"}, {{"English", "/e.qm"}}, {{"File", "&File"}}};
    EXPECT_EQ(firstDifference(contents, contents), QString());
    ConfigurationContents other = contents;
    other.files[1] = "/c.so";
    EXPECT_EQ(firstDifference(contents, other), "module file 2: expected \"/b.so\", read \"/c.so\"");
    other.files.removeLast();
    EXPECT_EQ(firstDifference(contents, other), "module file 2: expected \"/b.so\", read nothing");
    EXPECT_EQ(firstDifference(other, contents), "module file 2: expected nothing, read \"/b.so\"");
    other = contents;
    other.languages["English"] = "/x.qm";
    EXPECT_EQ(firstDifference(contents, other),
              "language 1: expected \"English = /e.qm\", read \"English = /x.qm\"");
    other = contents;
    other.menu["Edit"] = "&Edit";
    EXPECT_EQ(firstDifference(contents, other),
              "menu entry 1: expected \"File = &File\", read \"Edit = &Edit\"");
    other = contents;
    other.complete = false;
    EXPECT_NE(firstDifference(contents, other), QString());
}

PlanCandidate module(const char *name, int id, int type, int parts = 0, HwESigGenFamily families = generators)
{
    PlanCandidate candidate{QString(name) + ".so", 1, 1, {}};
    candidate.probe.record = ModuleProbe::Record{{}, name, id, type, parts, families};
    candidate.probe.object = ModuleProbe::Object{id, id, name, std::nullopt};
    return candidate;
}

std::vector<std::string> rulesOf(const QList<PlanCandidate> &candidates, HwESigGenFamily family)
{
    Findings findings;
    makeStartPlan("c.xml", candidates, family, true, &findings);
    std::vector<std::string> rules;
    for (const Finding &finding : findings)
        rules.push_back(finding.rule.toStdString());
    return rules;
}

TEST(StartPlanTest, FindsWhatKeepsModulesApart)
{
    const PlanCandidate database = module("Database", 4, VQMBaseModule, 0, generators | powerMeters);
    EXPECT_THAT(rulesOf({database}, powerMeters), ElementsAre());
    EXPECT_THAT(rulesOf({database}, generators), ElementsAre("module-required", "module-required"));
    EXPECT_THAT(rulesOf({database, module("Other", 4, VQMLoadable)}, generators | powerMeters),
                ElementsAre("module-id-twice", "module-required", "module-required"));
    EXPECT_THAT(rulesOf({database, module("Other", 4, VQMLoadable)}, powerMeters),
                ElementsAre("module-family"));
    EXPECT_THAT(rulesOf({database, module("P", 4, VQMPlugIn, 7, powerMeters),
                         module("Q", 4, VQMPlugIn, 7, powerMeters)},
                        powerMeters),
                ElementsAre());
}

TEST(StartPlanTest, NumbersPlugInsAsDiscoveryDoes)
{
    PlanCandidate uncreated = module("uncreated", 1, VQMPlugIn, 1);
    uncreated.probe.object.reset(); // takes a number all the same
    PlanCandidate mute = module("mute", 1, VQMPlugIn, 1);
    mute.probe = {};
    Findings findings;
    const StartPlan plan = makeStartPlan("c.xml",
                                         {mute, uncreated, module("GlueGPIBDll", 1, VQMPlugIn, 1),
                                          module("type", 1, 0x2), module("last", 1, VQMPlugIn, 1)},
                                         generators, false, &findings);
    ASSERT_EQ(plan.modules.size(), 1);
    EXPECT_EQ(plan.modules[0].id, 10001);
    ASSERT_EQ(plan.refused.size(), 3);
    EXPECT_EQ(plan.refused[2].reason, Refusal::Type);
    EXPECT_THAT(stepTexts(plan).mid(0, 3).join('|').toStdString(),
                "Stage: modules finished|Stage: loadables finished    Parts: Database |"
                "Initializing Plugin last    Parts: Database ");
}

} // namespace
} // namespace Orvia
