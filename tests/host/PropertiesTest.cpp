#include "tests/host/HostTest.h"

#include <sys/stat.h>

namespace Orvia {

namespace {

using ::testing::HasSubstr;

using PropertiesTest = HostTest;

TEST_F(PropertiesTest, ReadsTextsAsTheyStandInTheFile)
{
    write("a.ini", "\xef\xbb\xbf; comment, with comma\nfree=1\r\n"
                   "[General]\nidentity = A, B,C ; remark\n"
                   "[Ports]\nscpi=0x10\nplain=010\nbad=12x\nempty=\n"
                   "quoted=\"a, \\\"b\\\" = ;c\"\nutf=\xc2\xb5W\n");
    ASSERT_TRUE(VQMProperties::load(path("a.ini"), nullptr));
    EXPECT_EQ(VQMProperties::directory() + "/a.ini", path("a.ini"));
    EXPECT_EQ(get("", "free"), "1");
    EXPECT_EQ(get("General", "identity"), "A, B,C");
    EXPECT_EQ(get("Ports", "quoted"), "a, \"b\" = ;c");
    EXPECT_EQ(get("Ports", "utf"), QString(QChar(0xb5)) + "W");
    EXPECT_EQ(get("Ports", "empty"), "");
    EXPECT_EQ(get("ports", "empty"), "(unset)");
    bool found = false;
    EXPECT_EQ(VQMProperties::getStringProperty("Ports", "empty", "default", 0, &found), "");
    EXPECT_TRUE(found);
    EXPECT_EQ(VQMProperties::getStringProperty("Ports", "absent", "default", 0, &found), "default");
    EXPECT_FALSE(found);
    EXPECT_EQ(VQMProperties::getIntegerProperty("Ports", "scpi", 7, 0), 16);
    EXPECT_EQ(VQMProperties::getIntegerProperty("Ports", "plain", 7, 0), 10);
    const auto readBad = [] { EXPECT_EQ(VQMProperties::getIntegerProperty("Ports", "bad", 7, 0), 7); };
    EXPECT_THAT(standardError(readBad), HasSubstr("Ports/bad: \"12x\" is no number"));
    EXPECT_EQ(standardError(readBad), ""); // said once
}

TEST_F(PropertiesTest, SavedStoreReadsBackTheSame)
{
    const std::vector<QString> texts = {
        "a, b",        " blanks ",   "y:\\notes\\new.txt",
        "\"q\";#=[x]", "two\nlines", "@Invalid()",
        "%20",         "",           QString::fromUtf8("\xc2\xb5 \xe2\x82\xac")};
    for (const QString section : {"Some Section", "General"})
        for (std::size_t i = 0; i < texts.size(); ++i)
            set(section, QString("key %1").arg(i), texts[i]);
    ASSERT_TRUE(VQMProperties::save(nullptr));
    set("General", "key 0", "not saved");
    ASSERT_TRUE(VQMProperties::load(path("test.ini"), nullptr));
    for (const QString section : {"Some Section", "General"})
        for (std::size_t i = 0; i < texts.size(); ++i)
            EXPECT_EQ(get(section, QString("key %1").arg(i)), texts[i]);
}

TEST_F(PropertiesTest, SavingReplacesTheFileAsAWhole)
{
    QFile old(path("test.ini"));
    ASSERT_TRUE(old.open(QIODevice::ReadOnly));
    EXPECT_TRUE(VQMProperties::save(nullptr)); // an empty store is one too
    set("A", "b", "c");
    ASSERT_TRUE(VQMProperties::save(nullptr));
    EXPECT_EQ(old.readAll(), ""); // who has the old file open keeps it, complete
    EXPECT_NE(contents("test.ini"), "");
    EXPECT_EQ(QDir(VQMProperties::directory()).entryList(QDir::Files).size(), 1);

    ASSERT_TRUE(QDir(VQMProperties::directory()).removeRecursively());
    QString error;
    EXPECT_FALSE(VQMProperties::save(&error));
    EXPECT_THAT(error.toStdString(), HasSubstr("test.ini"));
}

TEST_F(PropertiesTest, BadFilesAreNamedAndLeaveTheStoreEmpty)
{
    write("line.ini", "[A]\nb=c\n\nno entry\n");
    write("section.ini", "[A\nb=c\n");
    write("binary.ini", QByteArray("a=b\n\0\1\2", 7));
    ASSERT_EQ(::mkfifo(qPrintable(path("pipe.ini")), 0600), 0);
    const std::pair<const char *, const char *> faults[] = {{"missing.ini", "missing.ini: No such file"},
                                                            {"line.ini", "line.ini: line 4"},
                                                            {"section.ini", "line 1"},
                                                            {"binary.ini", "not a text file"},
                                                            {"pipe.ini", "not a file"},
                                                            {"", "not a file"}}; // the folder
    for (const auto &[name, reason] : faults) {
        set("A", "b", "c");
        QString error;
        EXPECT_FALSE(VQMProperties::load(path(name), &error)) << name;
        EXPECT_THAT(error.toStdString(), HasSubstr(reason));
        EXPECT_EQ(get("A", "b"), "(unset)");
        EXPECT_FALSE(VQMProperties::save(nullptr)); // would empty the file that could not be read
    }
}

} // namespace

} // namespace Orvia
