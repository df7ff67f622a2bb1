/// One source of many module libraries: what each says of itself and how it misbehaves comes from
/// CMakeLists.txt.

#include "registry/VQMModule.h"
#include "tests/modules/ModuleLog.h"

#include <stdexcept>
#include <string>

extern "C" void symbolThatNoLibraryDefines();

namespace {

enum class Behaviour
{
    Normal,
    NullInfo,
    NullObject,
    NullName,
    NullVersion,
    Status5,
    Status7,
    FailsOnce,
    ThrowsInInfo,
    ThrowsInCreate,
    ThrowsInName,
    ThrowsInInitialize,
    ThrowsInTerminate,
    ThrowsInStage, ///< in the one that says that the base modules are up
    UnresolvedSymbol,
};

constexpr Behaviour behaviour = Behaviour::MODULE_BEHAVIOUR;

template <Behaviour when>
void throwIf()
{
    if constexpr (behaviour == when)
        throw std::runtime_error(moduleFile());
}

class TestModule : public Orvia::VQMPlugInDllModuleInterface
{
public:
    explicit TestModule(int id) : m_id(id) {}
    ~TestModule() override { moduleLog("deleted"); }

    Orvia::VQMModuleVersion *getInterfaceVersion() override
    {
        moduleLog("getInterfaceVersion");
        static Orvia::VQMModuleVersion version(1, 2, 345);
        return behaviour == Behaviour::NullVersion ? nullptr : &version;
    }
    const char *getModuleName() override
    {
        moduleLog("getModuleName");
        throwIf<Behaviour::ThrowsInName>();
        return behaviour == Behaviour::NullName ? nullptr : VQM_MODULE_NAME;
    }
    int getModuleId() override
    {
        moduleLog("getModuleId");
        return m_id;
    }
    int initialize(Orvia::VQMAnchorInterface *, int parts) override
    {
        moduleLog("initialize %d", parts);
        throwIf<Behaviour::ThrowsInInitialize>();
        if (behaviour == Behaviour::FailsOnce && !m_failed)
            return m_failed = true, 5;
        return behaviour == Behaviour::Status5 ? 5 : behaviour == Behaviour::Status7 ? 7 : 0;
    }
    void terminate(Orvia::VQMAnchorInterface *) override
    {
        moduleLog("terminate");
        throwIf<Behaviour::ThrowsInTerminate>();
    }
    void modulesFinished() override
    {
        moduleLog("modulesFinished");
        throwIf<Behaviour::ThrowsInStage>();
    }
    void loadablesFinished(int parts) override { moduleLog("loadablesFinished %d", parts); }
    void pluginsFinished(int parts) override { moduleLog("pluginsFinished %d", parts); }
    void pluginLoadablesFinished(int parts) override { moduleLog("pluginLoadablesFinished %d", parts); }
    void completeFinished() override { moduleLog("completeFinished"); }
    void terminateModules() override { moduleLog("terminateModules"); }
    void terminateLoadables() override { moduleLog("terminateLoadables"); }
    void terminatePlugins() override { moduleLog("terminatePlugins"); }
    void terminatePluginLoadables() override { moduleLog("terminatePluginLoadables"); }

private:
    const int m_id;
    bool m_failed = false;
};

/// The number at the end of the file's name, for modules that tests copy under many names.
int numberOfFile()
{
    const char *digits = moduleFile();
    digits += strcspn(digits, "0123456789");
    return atoi(digits);
}

__attribute__((constructor)) void dieInOpening()
{
    dieIn((std::string(moduleFile()) + " opened").c_str());
}

__attribute__((destructor)) void logClosing()
{
    moduleLog("closed");
}

} // namespace

extern "C" const Orvia::VQMModuleInfo *VQMGetModuleInfo()
{
    moduleLog("info");
    throwIf<Behaviour::ThrowsInInfo>();
    static Orvia::VQMModuleInfo info = VQM_MODULE_INFO;
    if (info.defaultId < 0)
        info.defaultId = numberOfFile();
    return behaviour == Behaviour::NullInfo ? nullptr : &info;
}

extern "C" Orvia::VQMModuleInterface *VQMCreateModuleInterfaceInstance(int id)
{
    moduleLog("create %d", id);
    throwIf<Behaviour::ThrowsInCreate>();
    if constexpr (behaviour == Behaviour::UnresolvedSymbol)
        symbolThatNoLibraryDefines();
    return behaviour == Behaviour::NullObject ? nullptr : new TestModule(id);
}
