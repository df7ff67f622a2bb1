#pragma once

#include "examples/instrument/SettingsDatabase.h"

#include <QSqlDatabase>
#include <QString>

namespace Orvia {

/// An SQLite file that holds the settings. What write() has confirmed survives a crash of the process and a
/// power failure. All operations on the thread that called open(): a connection belongs to its thread.
///
/// Failures return false with the reason in `error`; the file is then as it was.
class SettingsFile
{
public:
    SettingsFile() = default;
    ~SettingsFile() { close(); }
    SettingsFile(const SettingsFile &) = delete;
    SettingsFile &operator=(const SettingsFile &) = delete;

    /// Opens the file, creating it if it is missing, and reads all settings. A damaged file, or one of a
    /// newer firmware, is left alone and refused.
    bool open(const QString &fileName, SettingsMap *values, QString *error);
    /// All values or, on failure, none.
    bool write(const SettingsMap &values, QString *error);
    void close();

private:
    bool prepare(QString *error);
    bool read(SettingsMap *values, QString *error);
    bool execute(const QString &statement, QString *error, QString *answer = nullptr);

    QSqlDatabase m_connection;
};

} // namespace Orvia
