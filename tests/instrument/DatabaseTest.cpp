#include "examples/instrument/SettingsDatabase.h"
#include "platform/ErrorManager.h"
#include "platform/VQMProperties.h"
#include "platform/VQMSharedLibrary.h"

#include <gmock/gmock.h>

#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <csignal>
#include <memory>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using testing::ElementsAre;
using testing::Pair;

namespace Orvia {

namespace {

constexpr int cannotOpen = 61001;

/// A module as the start-up has it, from initialize() to the closing of its library.
class Module
{
public:
    Module(const char *path, int id, VQMAnchorInterface *anchor, VQMModuleInterface **published)
        : m_anchor(anchor)
    {
        EXPECT_TRUE(m_library.open(path, true, false)) << m_library.lastError();
        const auto create =
            reinterpret_cast<CreateInstanceFunction>(m_library.getProcAddress(createInstanceSymbol));
        m_object.reset(static_cast<VQMDllModuleInterface *>(create(id)));
        *published = m_object.get();
        status = m_object->initialize(m_anchor, -1);
    }
    ~Module()
    {
        m_object->terminate(m_anchor);
        m_object.reset();
    }

    int status;

private:
    VQMAnchorInterface *m_anchor;
    VQMSharedLibrary m_library;
    std::unique_ptr<VQMDllModuleInterface> m_object;
};

struct Database
{
    SettingsDatabase *operator->() { return SettingsDatabase::of(&anchor); }

    VQMAnchorInterface anchor = {};
    Module module{DATABASE_MODULE, VQMDatabaseId, &anchor, &anchor.databaseModule};
    const int status = module.status;
};

} // namespace

class DatabaseTest : public testing::Test
{
protected:
    void SetUp() override
    {
        write("test.ini", "[Database]\nfile=settings.sqlite\n");
        QString error;
        ASSERT_TRUE(VQMProperties::load(path("test.ini"), &error)) << error.toStdString();
        ErrorManager()->destroyAllAnnouncements();
    }

    QString path(const QString &name) const { return m_folder.filePath(name); }

    void write(const QString &name, const QByteArray &contents, qint64 offset = 0) const
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.seek(offset));
        ASSERT_EQ(file.write(contents), contents.size());
    }

    QByteArray contents(const QString &name) const
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }

    /// Runs statements on the database file while no module has it open.
    void execute(const QStringList &statements) const
    {
        {
            QSqlDatabase connection = QSqlDatabase::addDatabase("QSQLITE", "test");
            connection.setDatabaseName(path("settings.sqlite"));
            ASSERT_TRUE(connection.open());
            for (const QString &statement : statements) {
                QSqlQuery query(connection);
                ASSERT_TRUE(query.exec(statement)) << query.lastError().text().toStdString();
            }
        }
        QSqlDatabase::removeDatabase("test");
    }

    static void expectRefused()
    {
        Database database;
        EXPECT_EQ(database.status, cannotOpen);
        CErrorManager::Announcement error;
        ASSERT_TRUE(ErrorManager()->takeScpiError(&error));
        EXPECT_EQ(error.scpiCode, -320);
        EXPECT_FALSE(database->set({{"a", "1"}}));
        EXPECT_EQ(database->value("a", "default"), "default");
    }

private:
    QTemporaryDir m_folder;
};

TEST_F(DatabaseTest, SettingsOutliveTheModule)
{
    const std::string odd = "caf\u00e9 'quoted' \"twice\"; DROP TABLE settings";
    {
        Database database;
        ASSERT_EQ(database.status, 0);
        EXPECT_EQ(database->value("a", "none"), "none");
        EXPECT_TRUE(database->set({{"a", "1"}, {odd, odd}}));
        EXPECT_TRUE(database->set({{"a", ""}, {"b", "2"}}));
        EXPECT_EQ(database->value("a", "none"), "");
    }
    EXPECT_TRUE(QFile::exists(path("settings.sqlite"))); // relative to the properties
    Database database;
    EXPECT_EQ(database->value("a", "none"), "");
    EXPECT_EQ(database->value("b", "none"), "2");
    EXPECT_EQ(database->value(odd, "none"), odd);
}

TEST_F(DatabaseTest, AllSettingsOfATransactionAreSetOrNone)
{
    {
        Database database;
        ASSERT_TRUE(database->set({{"a", "old"}, {"z", "old"}}));
    }
    execute({"CREATE TRIGGER refuse BEFORE INSERT ON settings WHEN new.value = 'bad' "
             "BEGIN SELECT RAISE(ABORT, 'refused'); END"});
    for (int run = 0; run < 2; ++run) {
        Database database;
        int calls = 0;
        const int subscription = database->subscribe([&calls](const SettingsMap &) { ++calls; });
        EXPECT_FALSE(database->set({{"a", "new"}, {"m", "bad"}, {"z", "new"}}));
        EXPECT_EQ(database->value("a", "none"), "old");
        EXPECT_EQ(database->value("m", "none"), "none");
        EXPECT_EQ(calls, 0);
        EXPECT_TRUE(database->set({{"other", "1"}})); // the failed transaction is over
        EXPECT_EQ(calls, 1);
        database->unsubscribe(subscription);
    }
    CErrorManager::Announcement error;
    ASSERT_TRUE(ErrorManager()->takeScpiError(&error));
    EXPECT_EQ(error.code, 61002);
}

TEST_F(DatabaseTest, RulesJudgeAndCompleteWhatIsSetTheLatestFirst)
{
    Database database;
    const int limit = database->addRule([&](SettingsMap *changed) {
        return !changed->contains("b") || changed->at("b") < database->value("limit", "5");
    });
    const int follow = database->addRule([](SettingsMap *changed) {
        if (changed->contains("a"))
            changed->insert_or_assign("b", changed->at("a"));
        return true;
    });
    SettingsMap told;
    const int subscription = database->subscribe([&told](const SettingsMap &changed) { told = changed; });
    bool refused = true;
    EXPECT_TRUE(database->set({{"a", "4"}}, &refused));
    EXPECT_FALSE(refused);
    EXPECT_THAT(told, ElementsAre(Pair("a", "4"), Pair("b", "4")));
    EXPECT_FALSE(database->set({{"a", "7"}}, &refused));
    EXPECT_TRUE(refused);
    EXPECT_EQ(database->value("a", ""), "4");
    CErrorManager::Announcement error;
    ASSERT_TRUE(ErrorManager()->takeScpiError(&error));
    EXPECT_EQ(error.scpiCode, -221);

    database->removeRule(limit);
    EXPECT_TRUE(database->set({{"a", "7"}}));
    database->removeRule(follow);
    EXPECT_TRUE(database->set({{"a", "8"}}));
    EXPECT_EQ(database->value("b", ""), "7");
    database->unsubscribe(subscription);
}

TEST_F(DatabaseTest, WhatWasConfirmedSurvivesKill)
{
    int pipeEnds[2];
    ASSERT_EQ(::pipe(pipeEnds), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) { // counts up both settings in one transaction each, and says so
        Database database;
        for (int i = 1; database->set({{"left", std::to_string(i)}, {"right", std::to_string(i)}}); ++i) {
            if (::write(pipeEnds[1], &i, sizeof i) != sizeof i)
                break;
        }
        ::_exit(1);
    }
    ::close(pipeEnds[1]);
    int confirmed = 0;
    while (confirmed < 50 && ::read(pipeEnds[0], &confirmed, sizeof confirmed) == sizeof confirmed) {
    }
    ::kill(child, SIGKILL);
    while (::read(pipeEnds[0], &confirmed, sizeof confirmed) == sizeof confirmed) {
    }
    ::close(pipeEnds[0]);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the child ended by itself";

    Database database;
    ASSERT_EQ(database.status, 0);
    EXPECT_GE(std::stoi(database->value("left", "0")), confirmed);
    EXPECT_EQ(database->value("left", "0"), database->value("right", "none"));
    EXPECT_GE(confirmed, 50);
}

TEST_F(DatabaseTest, DamagedFilesAreRefusedAndLeftAlone)
{
    {
        Database database;
        SettingsMap many;
        for (int i = 0; i < 2000; ++i)
            many["key" + std::to_string(i)] = "some text to fill the pages with";
        ASSERT_TRUE(database->set(many));
    }
    write("settings.sqlite", QByteArray(3000, 'x'), qint64{3} * 4096); // a page in the middle
    const QByteArray damaged = contents("settings.sqlite");
    expectRefused();
    EXPECT_EQ(contents("settings.sqlite"), damaged);

    QFile::remove(path("settings.sqlite"));
    write("settings.sqlite", QByteArray(5000, 'x')); // no database at all
    expectRefused();
    EXPECT_EQ(contents("settings.sqlite"), QByteArray(5000, 'x'));
}

TEST_F(DatabaseTest, FilesThatCannotBeUsedAreRefused)
{
    for (const char *file : {"missing/settings.sqlite", "."}) {
        VQMProperties::setStringProperty("Database", "file", file, 0);
        expectRefused();
    }
    VQMProperties::setStringProperty("Database", "file", "settings.sqlite", 0);
    execute({"PRAGMA user_version = 2"}); // a newer firmware's
    expectRefused();
}

TEST_F(DatabaseTest, ListenersHearEveryTransactionOnceAndInOrder)
{
    constexpr int writers = 4;
    constexpr int transactions = 25;
    Database database;
    std::vector<std::string> heard; // not guarded: one transaction at a time
    const int subscription = database->subscribe([&](const SettingsMap &changed) {
        const auto &[key, value] = *changed.begin();
        heard.push_back(value);
        EXPECT_EQ(database->value(key, ""), value); // a listener may read
    });
    {
        std::vector<std::jthread> threads;
        threads.reserve(writers);
        for (int writer = 0; writer < writers; ++writer) {
            threads.emplace_back([&database, writer] {
                for (int i = 0; i < transactions; ++i) {
                    EXPECT_TRUE(database->set({{"shared", std::to_string(writer * transactions + i)}}));
                    database->value("shared", "");
                }
            });
        }
    }
    ASSERT_EQ(heard.size(), std::size_t(writers * transactions));
    EXPECT_EQ(database->value("shared", ""), heard.back());
    for (int writer = 0; writer < writers; ++writer) {
        int next = writer * transactions;
        for (const std::string &value : heard) {
            if (std::stoi(value) / transactions == writer) {
                EXPECT_EQ(std::stoi(value), next++);
            }
        }
    }
    database->unsubscribe(subscription);
    database->set({{"shared", "unheard"}});
    EXPECT_NE(heard.back(), "unheard");
}

TEST_F(DatabaseTest, OnlyAModuleWithThisInterfaceIsTakenForTheDatabase)
{
    VQMAnchorInterface anchor = {};
    EXPECT_EQ(SettingsDatabase::of(&anchor), nullptr);

    class Stranger : public VQMDllModuleInterface
    {
    public:
        VQMModuleVersion *getInterfaceVersion() override { return &version; }
        const char *getModuleName() override { return "Database"; }
        int getModuleId() override { return VQMDatabaseId; }
        int initialize(VQMAnchorInterface *, int) override { return 0; }
        void terminate(VQMAnchorInterface *) override {}
        VQMModuleVersion version{1, 0, 0};
    } stranger;
    anchor.databaseModule = &stranger;
    EXPECT_EQ(SettingsDatabase::of(&anchor), nullptr);
}

} // namespace Orvia
