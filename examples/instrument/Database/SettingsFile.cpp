#include "examples/instrument/Database/SettingsFile.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <utility>

namespace Orvia {

namespace {

constexpr int schemaVersion = 1;

bool failed(const QString &reason, QString *error)
{
    *error = reason;
    return false;
}

} // namespace

bool SettingsFile::open(const QString &fileName, SettingsMap *values, QString *error)
{
    m_connection =
        QSqlDatabase::addDatabase("QSQLITE", QString("settings-%1").arg(reinterpret_cast<quintptr>(this)));
    m_connection.setDatabaseName(fileName);
    m_connection.setConnectOptions("QSQLITE_BUSY_TIMEOUT=2000");
    bool opened = m_connection.open() || failed(m_connection.lastError().text(), error);
    opened = opened && prepare(error) && read(values, error);
    if (!opened)
        close();
    return opened;
}

bool SettingsFile::write(const SettingsMap &values, QString *error)
{
    if (!execute("BEGIN IMMEDIATE", error))
        return false;
    bool written = true;
    {
        QSqlQuery query(m_connection);
        query.prepare("INSERT INTO settings (key, value) VALUES (?, ?) "
                      "ON CONFLICT (key) DO UPDATE SET value = excluded.value");
        for (auto entry = values.begin(); written && entry != values.end(); ++entry) {
            query.addBindValue(QString::fromStdString(entry->first));
            query.addBindValue(QString::fromStdString(entry->second));
            written = query.exec() || failed(query.lastError().text(), error);
        }
    }
    if (written && execute("COMMIT", error))
        return true;
    QString ignored; // the first failure is the one to report
    execute("ROLLBACK", &ignored);
    return false;
}

void SettingsFile::close()
{
    const QString name = m_connection.connectionName();
    if (name.isEmpty())
        return;
    m_connection.close();
    m_connection = QSqlDatabase();
    QSqlDatabase::removeDatabase(name);
}

bool SettingsFile::prepare(QString *error)
{
    // quick_check first: SQLite itself notices damage only when it comes across the page.
    QString health;
    QString version;
    if (!execute("PRAGMA quick_check(1)", error, &health) || !execute("PRAGMA user_version", error, &version))
        return false;
    if (health != "ok")
        return failed("damaged: " + health, error);
    if (version.toInt() > schemaVersion)
        return failed("written by a newer firmware (version " + version + ")", error);
    return execute("PRAGMA journal_mode = WAL", error) && execute("PRAGMA synchronous = FULL", error) &&
           execute("CREATE TABLE IF NOT EXISTS settings "
                   "(key TEXT PRIMARY KEY NOT NULL, value TEXT NOT NULL) WITHOUT ROWID",
                   error) &&
           execute(QString("PRAGMA user_version = %1").arg(schemaVersion), error);
}

bool SettingsFile::read(SettingsMap *values, QString *error)
{
    QSqlQuery query(m_connection);
    if (!query.exec("SELECT key, value FROM settings"))
        return failed(query.lastError().text(), error);
    while (query.next())
        values->insert_or_assign(query.value(0).toString().toStdString(),
                                 query.value(1).toString().toStdString());
    return !query.lastError().isValid() || failed(query.lastError().text(), error);
}

bool SettingsFile::execute(const QString &statement, QString *error, QString *answer)
{
    QSqlQuery query(m_connection);
    if (!query.exec(statement))
        return failed(query.lastError().text(), error);
    if (answer != nullptr && query.next())
        *answer = query.value(0).toString();
    return true;
}

} // namespace Orvia
