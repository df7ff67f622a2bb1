#pragma once

#include "registry/VQMModuleContract.h"

namespace Orvia {

/// Stands in for a module object while a pass runs and keeps the status that its initialize() returns;
/// everything else goes to the object, which is not owned.
class StatusWatch final : public VQMDllModuleInterface
{
public:
    explicit StatusWatch(VQMDllModuleInterface *module) : m_module(module) {}

    VQMDllModuleInterface *module() const { return m_module; }
    int status() const { return m_status; }

    VQMModuleVersion *getInterfaceVersion() override { return m_module->getInterfaceVersion(); }
    const char *getModuleName() override { return m_module->getModuleName(); }
    int getModuleId() override { return m_module->getModuleId(); }
    int initialize(VQMAnchorInterface *anchor, int parts) override
    {
        return m_status = m_module->initialize(anchor, parts);
    }
    void terminate(VQMAnchorInterface *anchor) override { m_module->terminate(anchor); }
    void modulesFinished() override { m_module->modulesFinished(); }
    void loadablesFinished(int parts) override { m_module->loadablesFinished(parts); }
    void pluginsFinished(int parts) override { m_module->pluginsFinished(parts); }
    void pluginLoadablesFinished(int parts) override { m_module->pluginLoadablesFinished(parts); }
    void completeFinished() override { m_module->completeFinished(); }
    void terminateModules() override { m_module->terminateModules(); }
    void terminateLoadables() override { m_module->terminateLoadables(); }
    void terminatePlugins() override { m_module->terminatePlugins(); }
    void terminatePluginLoadables() override { m_module->terminatePluginLoadables(); }

private:
    VQMDllModuleInterface *m_module;
    int m_status = 0;
};

} // namespace Orvia
