#include "platform/HwAbstractionLayer.h"
#include "platform/VQMUtility.h"
#include "xmlconfig/SMenuTree.h"

#include "tests/host/HostTest.h"

#include <cmath>
#include <fstream>

namespace Orvia {

namespace {

using UtilityTest = HostTest;

TEST_F(UtilityTest, AvailableMemoryIsTheKernelsFigure)
{
    std::ifstream file("/proc/meminfo");
    std::map<std::string, double> kibibytes;
    std::string name, rest;
    for (double value; file >> name >> value && std::getline(file, rest);)
        kibibytes[name] = value;
    const double expected = (kibibytes["MemAvailable:"] + kibibytes["SwapFree:"]) / 1024;
    ASSERT_GT(expected, 0);
    EXPECT_LT(std::abs(VQMUtility::determineAvailableVirtualMemoryMb() - expected), expected / 4);
}

TEST_F(UtilityTest, StartUpIsCompleteOnceItHasBeenSaid)
{
    EXPECT_FALSE(VQMUtility::isStartupComplete());
    VQMUtility::setStartupComplete(-1);
    EXPECT_TRUE(VQMUtility::isStartupComplete());
}

TEST_F(UtilityTest, BuildStringKeepsEmptyPiecesUpToTheLastOne)
{
    const QString none;
    const auto build = [&](const QString &a, const QString &b, const QString &c) {
        return VQMUtility::buildString(a, b, c, none, none, none, none, none, none, none, none, none, none,
                                       none, none);
    };
    EXPECT_EQ(build("Edit", none, "All"), "Edit::All");
    EXPECT_EQ(build("Edit", "", none), "Edit:");
    EXPECT_EQ(build(none, none, none), "");
}

TEST_F(UtilityTest, MenuAndLanguagesLiveUntilTheNextOnes)
{
    const QString text = QString("label").repeated(2); // is shared as long as the node lives
    auto *menu = new std::map<QString, SMenuTree *>;
    VQMUtility::setMenuDescription(menu);
    (*menu)["A"] = new SMenuTree{text};
    VQMUtility::setMenuDescription(menu); // the same again
    EXPECT_EQ(VQMUtility::menuDescription()->at("A")->label, text);
    VQMUtility::setMenuDescription(new std::map<QString, SMenuTree *>);
    EXPECT_TRUE(text.isDetached());
    EXPECT_TRUE(VQMUtility::menuDescription()->empty());
    VQMUtility::setMenuDescription(nullptr);

    auto *languages = new std::map<QString, QString>{{"A", text}};
    VQMUtility::setLanguageList(languages);
    VQMUtility::setLanguageList(languages);
    EXPECT_EQ(VQMUtility::languageList()->at("A"), text);
    VQMUtility::setLanguageList(nullptr);
    EXPECT_TRUE(text.isDetached());
    EXPECT_EQ(VQMUtility::languageList(), nullptr);
}

TEST_F(UtilityTest, HardwareRepositoryAnswersFromTheProperties)
{
    QString known = "B1| K20 |";
    for (int i = 2; i < 300; ++i)
        known += "N" + QString::number(i) + '|';
    set("Hardware", "code", "64");
    set("Hardware", "knownOptions", known);
    set("Hardware", "installedOptions", "K20|XX|N288");
    EXPECT_THAT(standardError(HwAbstractionLayer::createHostRepository), ::testing::HasSubstr("option XX"));
    VQMHwRepository *repository = HwAbstractionLayer::m_repository;
    ASSERT_NE(repository, nullptr);
    EXPECT_EQ(repository->code(), 64);
    const std::map<const char *, int> ids = {{"B1", 0},
                                             {"K20", 1},
                                             {"N287", 287},
                                             {"N288", 289},
                                             {"N299", 300},
                                             {"k20", VQMHwRepository::unknownOption},
                                             {"", VQMHwRepository::unknownOption}};
    for (const auto &[option, id] : ids) // no option has the number of the unknown one
        EXPECT_EQ(repository->findOption(option, 0), id) << option;
    for (int id = 0; id < 310; ++id)
        EXPECT_EQ(repository->hasOption(static_cast<unsigned short>(id), 0), id == 1 || id == 289) << id;
}

} // namespace

} // namespace Orvia
