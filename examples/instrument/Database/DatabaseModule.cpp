#include "examples/instrument/Database/DatabaseModule.h"

#include "platform/ErrorManager.h"
#include "platform/VQMProperties.h"

#include <QDir>
#include <QStringList>

#include <algorithm>
#include <future>
#include <utility>

namespace Orvia {

namespace {

constexpr int registrationId = 104;

enum DatabaseError
{
    CannotOpen = 61001,
    CannotWrite = 61002,
    Refused = 61003,
};

constexpr CErrorManager::SErrorDefinition databaseErrors[] = {
    {CannotOpen, 1, -320, 0, "Storage fault", "The settings database cannot be opened", ""},
    {CannotWrite, 1, -320, 0, "Storage fault", "Settings cannot be saved", ""},
    {Refused, 1, -221, 0, "Settings conflict", "", ""},
    {-1, 0, 0, 0, "", "", ""},
};

QString databaseFile()
{
    const QString name =
        VQMProperties::getStringProperty("Database", "file", "instrument.sqlite", 0, nullptr);
    return QDir(VQMProperties::directory()).absoluteFilePath(name);
}

QString keysOf(const SettingsMap &values)
{
    QStringList keys;
    for (const auto &[key, text] : values)
        keys += QString::fromStdString(key);
    return keys.join(", ");
}

} // namespace

DatabaseModule::DatabaseModule(int id) : ModuleBase(id) {}

DatabaseModule::~DatabaseModule()
{
    close();
}

int DatabaseModule::initialize(VQMAnchorInterface * /*anchor*/, int /*parts*/)
{
    close();
    ErrorManager()->registerErrors(databaseErrors, registrationId);
    const QString fileName = databaseFile();
    SettingsMap values;
    QString error;
    const std::lock_guard lock(m_writeMutex);
    m_writer = std::make_unique<VQMThread>("Database");
    m_writer->start();
    if (!runOnWriter([&] { return m_file.open(fileName, &values, &error); })) {
        m_writer.reset();
        ErrorManager()->signal(CannotOpen, fileName);
        return logError("Database: cannot open " + fileName + ": " + error, CannotOpen);
    }
    log(QString("Database: %1, %2 settings").arg(fileName).arg(values.size()));
    const std::lock_guard valuesLock(m_valuesMutex);
    m_values = std::move(values);
    return 0;
}

void DatabaseModule::terminate(VQMAnchorInterface * /*anchor*/)
{
    close();
    ErrorManager()->registerErrors(nullptr, registrationId); // the table goes with this library
}

std::string DatabaseModule::value(const std::string &key, const std::string &defaultValue) const
{
    const std::lock_guard lock(m_valuesMutex);
    const auto found = m_values.find(key);
    return found != m_values.end() ? found->second : defaultValue;
}

bool DatabaseModule::set(const SettingsMap &wanted, bool *refused)
{
    const std::lock_guard lock(m_writeMutex);
    SettingsMap values = wanted;
    const bool conflict = !fulfilsRules(&values);
    if (refused != nullptr)
        *refused = conflict;
    if (conflict) {
        ErrorManager()->signal(Refused, keysOf(wanted));
        return false;
    }
    QString error = "the database is not open";
    if (m_writer == nullptr || !runOnWriter([&] { return m_file.write(values, &error); })) {
        ErrorManager()->signal(CannotWrite, error);
        logError("Database: settings not saved: " + error, CannotWrite);
        return false;
    }
    {
        const std::lock_guard valuesLock(m_valuesMutex);
        for (const auto &[key, text] : values)
            m_values.insert_or_assign(key, text);
    }
    for (const auto &[subscription, listener] : m_listeners)
        listener(values);
    return true;
}

int DatabaseModule::subscribe(Listener listener)
{
    const std::lock_guard lock(m_writeMutex);
    m_listeners.emplace(++m_lastNumber, std::move(listener));
    return m_lastNumber;
}

void DatabaseModule::unsubscribe(int subscription)
{
    const std::lock_guard lock(m_writeMutex);
    m_listeners.erase(subscription);
}

int DatabaseModule::addRule(Rule rule)
{
    const std::lock_guard lock(m_writeMutex);
    m_rules.emplace(++m_lastNumber, std::move(rule));
    return m_lastNumber;
}

void DatabaseModule::removeRule(int number)
{
    const std::lock_guard lock(m_writeMutex);
    m_rules.erase(number);
}

bool DatabaseModule::fulfilsRules(SettingsMap *values) const
{
    return std::all_of(m_rules.rbegin(), m_rules.rend(),
                       [values](const auto &rule) { return rule.second(values); });
}

bool DatabaseModule::runOnWriter(std::function<bool()> work)
{
    const auto task = std::make_shared<std::packaged_task<bool()>>(std::move(work));
    std::future<bool> result = task->get_future();
    m_writer->post([task] { (*task)(); });
    return result.get();
}

void DatabaseModule::close()
{
    const std::lock_guard lock(m_writeMutex);
    if (m_writer == nullptr)
        return;
    runOnWriter([this] {
        m_file.close();
        return true;
    });
    m_writer.reset();
}

} // namespace Orvia

VQM_MODULE(Orvia::DatabaseModule)
