#pragma once

#include "examples/instrument/SettingsDatabase.h"

namespace Orvia {

/// Settings in memory, with a disk that can be made to fail.
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
        const auto found = values.find(key);
        return found != values.end() ? found->second : defaultValue;
    }
    bool set(const SettingsMap &changed) override
    {
        if (diskFails)
            return false;
        for (const auto &[key, text] : changed)
            values[key] = text;
        return true;
    }
    int subscribe(Listener) override { return 0; }
    void unsubscribe(int) override {}

    SettingsMap values;
    bool diskFails = false;

private:
    VQMModuleVersion m_version{interfaceMajor, 0, 0};
};

} // namespace Orvia
