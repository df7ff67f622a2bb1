#include "platform/VQMProperties.h"

#include "platform/host/IniFile.h"
#include "platform/host/PropertyRevision.h"
#include "platform/host/StandardError.h"

#include <QFileInfo>

#include <atomic>
#include <mutex>
#include <set>

namespace Orvia {

namespace {

constexpr const char *startupSection = "StartupProcess";

struct Store
{
    std::mutex mutex;
    IniValues values;
    QString fileName;               ///< absolute; empty when nothing is loaded
    std::set<QString> complainedOf; ///< keys whose value was said to be no number
    std::mutex saving; ///< taken before `mutex`: a later save is never overtaken by an earlier one
};

std::atomic<unsigned> revision = 0; ///< grows while the store is locked, after the change

Store &store()
{
    static Store &instance = *new Store;
    return instance;
}

bool lookUp(const QString &key, QString *value)
{
    const auto found = store().values.find(key);
    if (found == store().values.end())
        return false;
    *value = found->second;
    return true;
}

/// Decimal or with the prefix 0x; a leading 0 alone means nothing.
int toInteger(const QString &text, bool *ok)
{
    const QString number = text.trimmed();
    return number.toInt(ok, number.contains("0x", Qt::CaseInsensitive) ? 16 : 10);
}

} // namespace

unsigned propertyRevision()
{
    return revision;
}

QString VQMProperties::getStringProperty(const QString &section, const QString &key,
                                         const QString &defaultValue, int /*layer*/, bool *found)
{
    QString value = defaultValue;
    const std::lock_guard lock(store().mutex);
    const bool isSet = lookUp(iniKey(section, key), &value);
    if (found != nullptr)
        *found = isSet;
    return value;
}

int VQMProperties::getIntegerProperty(const QString &section, const QString &key, int defaultValue,
                                      int /*layer*/)
{
    const QString name = iniKey(section, key);
    QString text;
    std::unique_lock lock(store().mutex);
    if (!lookUp(name, &text))
        return defaultValue;
    bool ok = false;
    const int value = toInteger(text, &ok);
    if (ok)
        return value;
    const bool isNew = store().complainedOf.insert(name).second;
    lock.unlock();
    if (isNew)
        writeStandardError(
            QStringLiteral("property %1: \"%2\" is no number, %3 is used").arg(name, text).arg(defaultValue));
    return defaultValue;
}

void VQMProperties::setStringProperty(const QString &section, const QString &key, const QString &value,
                                      int /*layer*/)
{
    const QString name = iniKey(section, key);
    const std::lock_guard lock(store().mutex);
    store().values[name] = value;
    store().complainedOf.erase(name);
    ++revision;
}

void VQMProperties::setIntegerProperty(const QString &section, const QString &key, int value, int layer)
{
    setStringProperty(section, key, QString::number(value), layer);
}

void VQMProperties::setDefaultMasterKey(const QString &value)
{
    setStringProperty(startupSection, "DefaultMaster", value, 0);
}

void VQMProperties::setPreferedMasterKey(const QString &value)
{
    setStringProperty(startupSection, "PreferedMaster", value, 0);
}

void VQMProperties::setRequiredMemoryMb(const QString &value)
{
    setStringProperty(startupSection, "RequiredMemoryMB", value, 0);
}

bool VQMProperties::load(const QString &fileName, QString *error)
{
    IniValues values;
    QString reason;
    const bool ok = readIniFile(fileName, &values, &reason);
    if (!ok && error != nullptr)
        *error = reason;
    const std::lock_guard lock(store().mutex);
    store().values = ok ? values : IniValues();
    store().fileName = ok ? QFileInfo(fileName).absoluteFilePath() : QString();
    store().complainedOf.clear();
    ++revision;
    return ok;
}

bool VQMProperties::save(QString *error)
{
    const std::lock_guard saving(store().saving);
    IniValues values;
    QString fileName;
    {
        const std::lock_guard lock(store().mutex);
        values = store().values;
        fileName = store().fileName;
    }
    QString reason = QStringLiteral("no property file is loaded");
    const bool ok = !fileName.isEmpty() && writeIniFile(fileName, values, &reason);
    if (!ok && error != nullptr)
        *error = reason;
    return ok;
}

QString VQMProperties::directory()
{
    const std::lock_guard lock(store().mutex);
    return store().fileName.isEmpty() ? QString() : QFileInfo(store().fileName).path();
}

} // namespace Orvia
