#pragma once

#include "Startup/ESuStage.h"
#include "registry/VQMModuleContract.h"

#include <string>

namespace Orvia {

/// What the calls to module objects have come to.
class CallRecord
{
public:
    virtual ~CallRecord() = default;
    /// initialize() has returned, also with 0.
    virtual void initialized(const std::string &module, int status) = 0;
    /// An operation threw; the exception goes on to the caller.
    virtual void threw(const std::string &module) = 0;
};

/// Stands in for a module object while the startup object calls it: initialization and stages become spans of
/// the trace, statuses and exceptions are recorded, everything else goes to the object.
class ModuleWatch final : public VQMDllModuleInterface
{
public:
    /// Neither is owned.
    ModuleWatch(VQMDllModuleInterface *module, int id, const char *name, CallRecord *record);

    VQMDllModuleInterface *module() const { return m_module; }

    VQMModuleVersion *getInterfaceVersion() override { return m_module->getInterfaceVersion(); }
    const char *getModuleName() override { return m_module->getModuleName(); }
    int getModuleId() override { return m_module->getModuleId(); }
    int initialize(VQMAnchorInterface *anchor, int parts) override;
    void terminate(VQMAnchorInterface *anchor) override { m_module->terminate(anchor); }
    void modulesFinished() override;
    void loadablesFinished(int parts) override;
    void pluginsFinished(int parts) override;
    void pluginLoadablesFinished(int parts) override;
    void completeFinished() override;
    void terminateModules() override;
    void terminateLoadables() override;
    void terminatePlugins() override;
    void terminatePluginLoadables() override;

private:
    template <typename... Parameters, typename... Arguments>
    void announce(ESuStage stage, void (VQMDllModuleInterface::*operation)(Parameters...),
                  Arguments... arguments);

    VQMDllModuleInterface *m_module;
    std::string m_name;
    std::string m_label; ///< id and name
    CallRecord *m_record;
};

} // namespace Orvia
