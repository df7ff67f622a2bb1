#include "registry/VQMModuleContract.h"
#include "tools/module-probe/HeapWatch.h"
#include "tools/module-probe/InterfaceCheck.h"
#include "tools/module-probe/MemoryMap.h"
#include "tools/module-probe/Results.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cxxabi.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#ifdef VQM_SANITIZED
// A crash is to be seen as the signal that it is.
#define OPTIONS                                                                                              \
    "handle_segv=0:handle_sigbus=0:handle_sigfpe=0:handle_sigill=0:handle_abort=0:abort_on_error=1"
extern "C" __attribute__((visibility("default"))) const char *__asan_default_options()
{
    return OPTIONS;
}
extern "C" __attribute__((visibility("default"))) const char *__tsan_default_options()
{
    return OPTIONS;
}
#endif

namespace Orvia::probe {

namespace {

/// The text of the exception being handled, after the name of its type.
std::string thrownText()
{
    int status = 0;
    const std::type_info *type = abi::__cxa_current_exception_type();
    char *readable = type != nullptr ? abi::__cxa_demangle(type->name(), nullptr, nullptr, &status) : nullptr;
    std::string name = readable != nullptr ? readable : "a foreign exception";
    std::free(readable);
    try {
        throw; // cppcheck-suppress rethrowNoCurrentException ; called by handlers alone
    } catch (const std::exception &exception) {
        return name + ": " + exception.what();
    } catch (const char *text) {
        return name + ": " + text;
    } catch (...) {
        return name;
    }
}

/// Announces and takes a step; false when it threw.
template <typename Action>
bool take(Step step, const char *what, Action action)
{
    announce(step);
    try {
        action();
        return true;
    } catch (...) {
        defect("exception", std::string(what) + " throws " + thrownText());
        return false;
    }
}

void *open(const char *path)
{
    void *library = nullptr;
    take(Step::Open, "opening it", [&] {
        library = ::dlopen(path, RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr)
            defect("not-loadable", std::string("cannot be loaded: ") + ::dlerror());
    });
    return library;
}

template <typename Function>
Function entryPoint(void *library, const char *symbol)
{
    const auto function = reinterpret_cast<Function>(::dlsym(library, symbol));
    if (function == nullptr)
        defect("entry-point-missing", std::string("exports no function ") + symbol);
    return function;
}

const VQMModuleInfo *askForRecord(void *library)
{
    const VQMModuleInfo *info = nullptr;
    take(Step::GetInfo, "VQMGetModuleInfo()", [&] {
        const auto function = entryPoint<GetModuleInfoFunction>(library, moduleInfoSymbol);
        if (function == nullptr)
            return;
        info = function();
        if (info == nullptr) {
            defect("record-missing", "VQMGetModuleInfo() answers a null pointer");
            return;
        }
        result("record %d %d %d %d %d %d %u", info->major, info->minor, info->build, info->defaultId,
               info->moduleType, info->parts, info->targetMask);
        if (info->name != nullptr)
            textResult("record-name", info->name);
        else
            defect("name-missing", "the record's name is a null pointer");
    });
    return info;
}

VQMModuleInterface *create(void *library, int id)
{
    VQMModuleInterface *object = nullptr;
    take(Step::Create, "VQMCreateModuleInterfaceInstance()", [&] {
        const auto function = entryPoint<CreateInstanceFunction>(library, createInstanceSymbol);
        if (function == nullptr)
            return;
        heap::startRecording();
        object = function(id);
        if (object == nullptr)
            defect("object-missing", "VQMCreateModuleInterfaceInstance() answers a null pointer");
        else
            result("handed %d", id);
    });
    return object;
}

/// Asks in the order of discovery.
void ask(VQMModuleInterface *object)
{
    take(Step::GetVersion, "getInterfaceVersion()", [&] {
        if (const VQMModuleVersion *version = object->getInterfaceVersion())
            result("version %d %d %d", version->major, version->minor, version->build);
        else
            defect("interface-version-missing", "getInterfaceVersion() answers a null pointer");
    });
    take(Step::GetName, "getModuleName()", [&] {
        if (const char *name = object->getModuleName())
            textResult("name", name);
        else
            defect("name-missing", "the object's name is a null pointer");
    });
    take(Step::GetId, "getModuleId()", [&] { result("id %d", object->getModuleId()); });
}

void destroy(VQMModuleInterface *object)
{
    take(Step::Delete, "the deleting destructor", [&] {
        const bool isWatched = heap::watchBlockOf(object);
        delete object;
        if (isWatched && !heap::watchedBlockIsFreed())
            defect("object-not-freed", "its deleting destructor does not free the object");
    });
}

void close(void *library)
{
    take(Step::Close, "closing it", [&] {
        const link_map *map = nullptr;
        ::dlinfo(library, RTLD_DI_LINKMAP, &map);
        const std::string file = map != nullptr ? MemoryMap().fileAt(map->l_ld) : std::string();
        if (::dlclose(library) != 0)
            defect("not-closed", std::string("cannot be closed: ") + ::dlerror());
        else if (!file.empty() && MemoryMap().contains(file))
            defect("stays-mapped", "stays mapped after closing");
    });
}

void probeModule(const char *path)
{
    void *library = open(path);
    if (library == nullptr)
        return;
    if (const VQMModuleInfo *info = askForRecord(library)) {
        const int id = info->moduleType == VQMPlugIn ? firstPlugInId : info->defaultId;
        const std::int32_t type = info->moduleType;
        if (VQMModuleInterface *object = create(library, id)) {
            ask(object);
            take(Step::CheckInterface, "reading its type", [&] { checkInterface(object, type); });
            destroy(object);
        }
    }
    close(library);
}

} // namespace

} // namespace Orvia::probe

int main(int argc, char **argv)
{
    if (argc != 2 || ::fcntl(Orvia::probe::resultDescriptor, F_GETFD) < 0) {
        std::fputs("vqm-module-probe: is run by vqm-modinfo --run\n", stderr);
        return 2;
    }
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const rlimit noCoreFile = {0, 0};
    ::setrlimit(RLIMIT_CORE, &noCoreFile);
    Orvia::probe::probeModule(argv[1]);
    Orvia::probe::result("end");
    ::_exit(0);
}
