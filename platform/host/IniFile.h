#pragma once

#include <QString>

#include <map>

namespace Orvia {

/// The entries of an INI file by iniKey().
using IniValues = std::map<QString, QString>;

/// "section/key"; of the section "General", which stands for none, only "key".
QString iniKey(const QString &section, const QString &key);

/// Reads a file in the dialect of QSettings, save that a value with commas is one text and no list. False,
/// with file name, line where known, and cause in `error`, when it cannot be read or is malformed.
bool readIniFile(const QString &fileName, IniValues *values, QString *error);

/// Replaces the file atomically: whatever happens, it has its old contents or all of the new.
bool writeIniFile(const QString &fileName, const IniValues &values, QString *error);

} // namespace Orvia
