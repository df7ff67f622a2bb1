#include "launcher/ModuleWatch.h"

#include "platform/JoinedText.h"
#include "platform/TraceSpan.h"

namespace Orvia {

ModuleWatch::ModuleWatch(VQMDllModuleInterface *module, int id, const char *name, CallRecord *record)
    : m_module(module), m_name(name), m_label(std::to_string(id) + ' ' + name), m_record(record)
{
}

int ModuleWatch::initialize(VQMAnchorInterface *anchor, int parts)
{
    TraceSpan span("initialize", JoinedText(m_label, ", parts ", std::to_string(parts)).c_str());
    try {
        const int status = m_module->initialize(anchor, parts);
        if (status != 0)
            span.setOutcome("status " + std::to_string(status));
        m_record->initialized(m_name, status);
        return status;
    } catch (...) {
        span.setThrown(std::current_exception());
        m_record->threw(m_name);
        throw;
    }
}

template <typename... Parameters, typename... Arguments>
void ModuleWatch::announce(ESuStage stage, void (VQMDllModuleInterface::*operation)(Parameters...),
                           Arguments... arguments)
{
    TraceSpan span("stage", stageText(stage), m_label.c_str());
    try {
        (m_module->*operation)(arguments...);
    } catch (...) {
        span.setThrown(std::current_exception());
        m_record->threw(m_name);
        throw;
    }
}

void ModuleWatch::modulesFinished()
{
    announce(SuModulesFinished, &VQMDllModuleInterface::modulesFinished);
}

void ModuleWatch::loadablesFinished(int parts)
{
    announce(SuLoadablesFinished, &VQMDllModuleInterface::loadablesFinished, parts);
}

void ModuleWatch::pluginsFinished(int parts)
{
    announce(SuPluginsFinished, &VQMDllModuleInterface::pluginsFinished, parts);
}

void ModuleWatch::pluginLoadablesFinished(int parts)
{
    announce(SuPluginLoadablesFinished, &VQMDllModuleInterface::pluginLoadablesFinished, parts);
}

void ModuleWatch::completeFinished()
{
    announce(SuCompleteFinished, &VQMDllModuleInterface::completeFinished);
}

void ModuleWatch::terminateModules()
{
    announce(SuTerminateModules, &VQMDllModuleInterface::terminateModules);
}

void ModuleWatch::terminateLoadables()
{
    announce(SuTerminateLoadables, &VQMDllModuleInterface::terminateLoadables);
}

void ModuleWatch::terminatePlugins()
{
    announce(SuTerminatePlugins, &VQMDllModuleInterface::terminatePlugins);
}

void ModuleWatch::terminatePluginLoadables()
{
    announce(SuTerminatePluginLoadables, &VQMDllModuleInterface::terminatePluginLoadables);
}

} // namespace Orvia
