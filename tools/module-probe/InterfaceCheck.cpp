#include "tools/module-probe/InterfaceCheck.h"

#include "registry/VQMModuleContract.h"
#include "tools/module-probe/MemoryMap.h"
#include "tools/module-probe/Results.h"

#include <algorithm>
#include <typeinfo>

namespace Orvia::probe {

// One class for each kind of type information that a class can have.
struct NoBase
{
    virtual ~NoBase() = default;
};
struct OneBase : NoBase
{
};
struct VirtualBase : virtual NoBase
{
};

namespace {

/// Of anything readable, which the address sanitizer may deem to lie beside an object.
__attribute__((no_sanitize("address"))) const void *firstWord(const void *address)
{
    return *static_cast<const void *const *>(address);
}

/// Whether what stands before the virtual table is type information of this process's C++ library. Modules
/// written in C have anything there.
bool hasTypeInformation(const void *object)
{
    constexpr std::size_t word = sizeof(void *);
    const MemoryMap memory;
    if (!memory.isReadable(object, word))
        return false;
    const auto *const *table = static_cast<const void *const *>(firstWord(object));
    if (reinterpret_cast<std::uintptr_t>(table) % word != 0 || !memory.isReadable(table - 2, 2 * word))
        return false;
    const void *information = firstWord(table - 1);
    if (reinterpret_cast<std::uintptr_t>(information) % word != 0 ||
        !memory.isReadable(information, 2 * word))
        return false;
    const std::type_info *const kinds[] = {&typeid(NoBase), &typeid(OneBase), &typeid(VirtualBase)};
    return std::any_of(std::begin(kinds), std::end(kinds),
                       [&](const std::type_info *kind) { return firstWord(kind) == firstWord(information); });
}

template <typename Interface>
void checkIs(VQMModuleInterface *object, const char *name)
{
    const auto *view = dynamic_cast<Interface *>(object);
    if (view == nullptr)
        defect("wrong-interface", std::string("its object is no ") + name);
    else if (static_cast<const void *>(view) != object)
        defect("wrong-interface", std::string("its object is a ") + name + ", but not at its beginning");
}

} // namespace

void checkInterface(VQMModuleInterface *object, std::int32_t moduleType)
{
    if (!hasTypeInformation(object)) {
        note("interface-not-checked",
             "its object's virtual table has no C++ type information: the class is not checked");
        return;
    }
    switch (moduleType) {
    case VQMBaseModule:
        checkIs<VQMDllModuleInterface>(object, "VQMDllModuleInterface");
        break;
    case VQMLoadable:
    case VQMLoadable2:
    case VQMPlugIn:
    case VQMPlugInLoadable:
    case VQMPlugInLoadable2:
        checkIs<VQMPlugInDllModuleInterface>(object, "VQMPlugInDllModuleInterface");
        break;
    default: // of no use to anybody
        break;
    }
}

} // namespace Orvia::probe
