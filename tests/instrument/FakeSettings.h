#pragma once

#include "examples/instrument/SettingsDatabase.h"

#include <mutex>
#include <utility>

namespace Orvia {

/// Settings in memory, with a disk that can be made to fail. One rule, one listener; values are read on
/// the GUI thread while another sets them.
class FakeSettings : public SettingsDatabase
{
public:
    VQMModuleVersion *getInterfaceVersion() override { return &m_version; }
    const char *getModuleName() override { return "Database"; }
    int getModuleId() override { return VQMDatabaseId; }
    int initialize(VQMAnchorInterface *, int) override { return 0; }
    void terminate(VQMAnchorInterface *) override {}

    std::string value(const std::string &key, const std::string &defaultValue) const override
    {
        const std::lock_guard lock(m_mutex);
        const auto found = values.find(key);
        return found != values.end() ? found->second : defaultValue;
    }
    bool set(const SettingsMap &wanted, bool *refused) override
    {
        SettingsMap changed = wanted;
        const bool conflict = rule && !rule(&changed);
        if (refused != nullptr)
            *refused = conflict;
        if (conflict || diskFails)
            return false;
        {
            const std::lock_guard lock(m_mutex);
            for (const auto &[key, text] : changed)
                values[key] = text;
        }
        if (listener)
            listener(changed);
        return true;
    }
    int subscribe(Listener subscribed) override
    {
        listener = std::move(subscribed);
        return 1;
    }
    void unsubscribe(int) override { listener = nullptr; }
    int addRule(Rule added) override
    {
        rule = std::move(added);
        return 1;
    }
    void removeRule(int) override { rule = nullptr; }

    SettingsMap values;
    bool diskFails = false;
    Listener listener;
    Rule rule;

private:
    mutable std::mutex m_mutex;
    VQMModuleVersion m_version{interfaceMajor, 0, 0};
};

} // namespace Orvia
