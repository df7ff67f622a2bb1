#pragma once

#include "platform/Export.h"

#include <QString>

namespace Orvia {

/// The property store: an INI file loaded once, overlaid in memory. Nothing goes back to the file unless
/// save() is called. Any thread.
class VQM_EXPORT VQMProperties
{
public:
    /// The value, or `defaultValue` when the key is not set. `layer` is not used; `found`, if given, tells
    /// whether the key is set.
    static QString getStringProperty(const QString &section, const QString &key, const QString &defaultValue,
                                     int layer, bool *found);
    /// The value, decimal or with the prefix 0x, or `defaultValue` when the key is not set or no number
    /// (the latter is said on standard error).
    static int getIntegerProperty(const QString &section, const QString &key, int defaultValue, int layer);
    static void setStringProperty(const QString &section, const QString &key, const QString &value,
                                  int layer);
    static void setIntegerProperty(const QString &section, const QString &key, int value, int layer);

    /// Kept as given under "StartupProcess": "DefaultMaster", "PreferedMaster", "RequiredMemoryMB".
    static void setDefaultMasterKey(const QString &value);
    static void setPreferedMasterKey(const QString &value);
    static void setRequiredMemoryMb(const QString &value);

    /// Replaces the store by the contents of an INI file. False, with the reason in `error` and the store
    /// empty, when the file cannot be read or is malformed.
    static bool load(const QString &fileName, QString *error);
    /// Writes the whole store to the file it was loaded from, atomically.
    static bool save(QString *error);
    /// The absolute folder of the loaded file, or an empty string: where relative paths in properties start.
    static QString directory();
};

} // namespace Orvia
