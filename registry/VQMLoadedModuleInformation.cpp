#include "registry/VQMLoadedModuleInformation.h"

#include "platform/VQMSharedLibrary.h"

#include <cstring>
#include <utility>

namespace Orvia {

VQMLoadedModuleInformation::VQMLoadedModuleInformation() : library(new VQMSharedLibrary) {}

VQMLoadedModuleInformation::~VQMLoadedModuleInformation()
{
    try {
        delete std::exchange(library, nullptr);
    } catch (...) {
        // A library whose own clean-up throws must not take the start-up down with it.
    }
    info = nullptr;
    moduleInterface = nullptr;
    interfaceVersion = nullptr;
}

void VQMLoadedModuleInformation::openLibrary(const char *path)
{
    library->open(path, true, false);
}

void VQMLoadedModuleInformation::closeLibrary()
{
    library->close();
}

void *VQMLoadedModuleInformation::getProcAddress(const char *symbol)
{
    return library->getProcAddress(symbol);
}

bool VQMLoadedModuleInformation::moduleLoaded() const
{
    return library->isOpen();
}

const char *VQMLoadedModuleInformation::getLastErrorText() const
{
    return library->lastError();
}

void VQMLoadedModuleInformation::setName(const char *moduleName)
{
    std::memset(name, 0, sizeof name);
    if (moduleName != nullptr)
        std::strncpy(name, moduleName, sizeof name - 1);
}

} // namespace Orvia
