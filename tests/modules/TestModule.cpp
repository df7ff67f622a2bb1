/// One source of many module libraries: what each says of itself and how it misbehaves comes from
/// CMakeLists.txt.

#include "registry/VQMModule.h"
#include "tests/modules/ModuleLog.h"

#include <cstddef>
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
    OddRecord, ///< without a name, of a version below 0
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
    // NOLINTNEXTLINE(bugprone-exception-escape): it may have been asked to
    ~TestModule() override { moduleLog("deleted"); }
    /// An object that has deleted itself is in use again by others, as it were: the next call is seen to
    /// fail.
    static void operator delete(void *memory, std::size_t size)
    {
        if (!deletesItself) {
            ::operator delete(memory);
            return;
        }
        for (std::size_t i = 0; i < size; ++i)
            static_cast<volatile char *>(memory)[i] = 0;
    }

    Orvia::VQMModuleVersion *getInterfaceVersion() override
    {
        static Orvia::VQMModuleVersion version(1, 2, 345);
        return log("getInterfaceVersion") || behaviour == Behaviour::NullVersion ? nullptr : &version;
    }
    const char *getModuleName() override
    {
        const bool fails = log("getModuleName");
        throwIf<Behaviour::ThrowsInName>();
        return fails || behaviour == Behaviour::NullName ? nullptr : VQM_MODULE_NAME;
    }
    int getModuleId() override
    {
        const int id = m_id;
        log("getModuleId");
        return id;
    }
    int initialize(Orvia::VQMAnchorInterface *, int parts) override
    {
        if (log("initialize " + std::to_string(parts)))
            return 5;
        throwIf<Behaviour::ThrowsInInitialize>();
        if (behaviour == Behaviour::FailsOnce && !m_failed)
            return m_failed = true, 5;
        return behaviour == Behaviour::Status5 ? 5 : behaviour == Behaviour::Status7 ? 7 : 0;
    }
    void terminate(Orvia::VQMAnchorInterface *) override
    {
        log("terminate");
        throwIf<Behaviour::ThrowsInTerminate>();
    }
    void modulesFinished() override
    {
        log("modulesFinished");
        throwIf<Behaviour::ThrowsInStage>();
    }
    void loadablesFinished(int parts) override { log("loadablesFinished " + std::to_string(parts)); }
    void pluginsFinished(int parts) override { log("pluginsFinished " + std::to_string(parts)); }
    void pluginLoadablesFinished(int parts) override
    {
        log("pluginLoadablesFinished " + std::to_string(parts));
    }
    void completeFinished() override { log("completeFinished"); }
    void terminateModules() override { log("terminateModules"); }
    void terminateLoadables() override { log("terminateLoadables"); }
    void terminatePlugins() override { log("terminatePlugins"); }
    void terminatePluginLoadables() override { log("terminatePluginLoadables"); }
    QWidget *getMainWidget() override
    {
        obey(misbehave((moduleFile() + std::string(" getMainWidget")).c_str()));
        return nullptr;
    }
    void startGui(Orvia::VQMAnchorInterface *) override
    {
        obey(misbehave((moduleFile() + std::string(" startGui")).c_str()));
    }

private:
    /// True when the operation is to fail.
    bool log(const std::string &line) { return obey(moduleLog("%s", line.c_str())); }
    bool obey(Misbehaviour misbehaviour)
    {
        deletesItself = misbehaviour == DeletesItself;
        if (deletesItself)
            delete this;
        return misbehaviour == Fails;
    }

    static inline bool deletesItself = false;
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

__attribute__((constructor)) void misbehaveInOpening()
{
    misbehave((std::string(moduleFile()) + " opened").c_str());
}

__attribute__((destructor)) void logClosing()
{
    moduleLog("closed");
}

} // namespace

extern "C" const Orvia::VQMModuleInfo *VQMGetModuleInfo()
{
    const bool fails = moduleLog("info") == Fails;
    throwIf<Behaviour::ThrowsInInfo>();
    static Orvia::VQMModuleInfo info = VQM_MODULE_INFO;
    if (info.defaultId < 0)
        info.defaultId = numberOfFile();
    if (behaviour == Behaviour::OddRecord) {
        info.name = nullptr;
        info.minor = -5;
    }
    return fails || behaviour == Behaviour::NullInfo ? nullptr : &info;
}

extern "C" Orvia::VQMModuleInterface *VQMCreateModuleInterfaceInstance(int id)
{
    const bool fails = moduleLog("create %d", id) == Fails;
    throwIf<Behaviour::ThrowsInCreate>();
    if constexpr (behaviour == Behaviour::UnresolvedSymbol)
        symbolThatNoLibraryDefines();
    return fails || behaviour == Behaviour::NullObject ? nullptr : new TestModule(id);
}
