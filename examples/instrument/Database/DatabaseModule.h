#pragma once

#include "examples/instrument/Database/SettingsFile.h"
#include "examples/instrument/ModuleBase.h"
#include "examples/instrument/SettingsDatabase.h"
#include "platform/VQMThread.h"

#include <functional>
#include <memory>
#include <mutex>

namespace Orvia {

/// The Database module: settings kept in memory for reading and in an SQLite file for good. The file's name
/// is the property "Database"/"file", relative to the folder of the properties.
///
/// The file is used on a thread of the module's own; whoever sets a value waits for it.
class DatabaseModule final : public ModuleBase<SettingsDatabase, SettingsDatabase::interfaceMajor>
{
public:
    explicit DatabaseModule(int id);
    ~DatabaseModule() override;

    int initialize(VQMAnchorInterface *anchor, int parts) override;
    void terminate(VQMAnchorInterface *anchor) override;

    std::string value(const std::string &key, const std::string &defaultValue) const override;
    bool set(const SettingsMap &values, bool *refused) override;
    int subscribe(Listener listener) override;
    void unsubscribe(int subscription) override;
    int addRule(Rule rule) override;
    void removeRule(int number) override;

private:
    bool fulfilsRules(SettingsMap *values) const;
    bool runOnWriter(std::function<bool()> work);
    void close();

    std::mutex m_writeMutex; ///< one transaction at a time; guards what is here down to m_lastNumber
    std::unique_ptr<VQMThread> m_writer; ///< null while the file is not open
    SettingsFile m_file;                 ///< used on m_writer alone
    std::map<int, Listener> m_listeners;
    std::map<int, Rule> m_rules;
    int m_lastNumber = 0; ///< of a subscription or rule

    mutable std::mutex m_valuesMutex; ///< locked last, never while anything is called
    SettingsMap m_values;
};

} // namespace Orvia
