#include "platform/ErrorManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Orvia {

namespace {

constexpr CErrorManager::SErrorDefinition table[] = {
    {501, 1, -310, 0, "Broken", "", ""},
    {502, 3, 0, 0, "Remark", "", ""},
    {503, 2, 50, 0, nullptr, "", ""},
    {-1, 0, 0, 0, "", "", ""},
};
constexpr CErrorManager::SErrorDefinition replacement[] = {
    {501, 2, -311, 0, "Broken again", "", ""},
    {-1, 0, 0, 0, "", "", ""},
};

class ErrorManagerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        manager->destroyAllAnnouncements();
        manager->registerErrors(table, 77);
    }

    CErrorManager *const manager = ErrorManager();
};

TEST_F(ErrorManagerTest, AnnouncesWhatTheTablesSay)
{
    manager->signal(501, "detail");
    manager->registerErrors(replacement, 77);
    manager->signal(501, "");
    manager->signal(503, ""); // gone with the table that was replaced
    manager->signal(-1, "");  // the code that ends tables
    manager->registerErrors(nullptr, 77);
    manager->signal(501, "");

    const auto all = manager->announcements();
    ASSERT_EQ(all.size(), 5);
    EXPECT_EQ(all[0].text + '|' + all[0].detail, "Broken|detail");
    EXPECT_EQ(all[1].text, "Broken again");
    EXPECT_EQ(all[1].severity, 2);
    for (int unknown : {2, 3, 4}) {
        EXPECT_EQ(all[unknown].severity, 1);
        EXPECT_EQ(all[unknown].scpiCode, -300);
        EXPECT_TRUE(all[unknown].text.contains(QString::number(all[unknown].code)));
    }
}

TEST_F(ErrorManagerTest, ScpiErrorsAreTakenOldestFirstPastThoseWithoutNumber)
{
    for (int code : {502, 503, 501, 502})
        manager->signal(code, "");
    CErrorManager::Announcement taken;
    ASSERT_TRUE(manager->takeScpiError(&taken));
    EXPECT_EQ(taken.scpiCode, 50);
    ASSERT_TRUE(manager->takeScpiError(&taken));
    EXPECT_EQ(taken.scpiCode, -310);
    EXPECT_FALSE(manager->takeScpiError(&taken));
    EXPECT_EQ(manager->announcements().size(), 2);
}

TEST_F(ErrorManagerTest, FullQueueKeepsTheOldestAndEndsInOverflow)
{
    constexpr int length = CErrorManager::queueLength;
    for (int i = 0; i < length; ++i)
        manager->signal(501, QString::number(i));
    EXPECT_EQ(manager->announcements().back().scpiCode, -310); // full, nothing lost yet
    manager->signal(501, "lost");
    manager->signal(501, "lost too");

    auto all = manager->announcements();
    ASSERT_EQ(all.size(), length);
    EXPECT_EQ(all.front().detail, "0");
    EXPECT_EQ(all[length - 2].detail, QString::number(length - 2));
    EXPECT_EQ(all.back().scpiCode, -350);
    for (int i = 1; i < length; ++i)
        EXPECT_GT(all[i].id, all[i - 1].id);

    manager->destroyAnnouncement(all.front().id);
    manager->destroyAnnouncement(all.front().id); // no longer there: nothing happens
    manager->signal(503, "");                     // there is room again
    all = manager->announcements();
    ASSERT_EQ(all.size(), length);
    EXPECT_EQ(all.front().detail, "1");
    EXPECT_EQ(all.back().code, 503);
}

} // namespace

} // namespace Orvia
