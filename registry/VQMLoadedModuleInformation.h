#pragma once

#include "registry/VQMModuleContract.h"

namespace Orvia {

class VQMSharedLibrary;

/// What the start-up library knows of one module library. Owns the handle of the opened library; the module
/// object is its own from creation until termination deletes it, never deleted here. Not thread-safe.
class VQMLoadedModuleInformation
{
public:
    VQMLoadedModuleInformation();
    /// Closes the library. Lets no exception out.
    virtual ~VQMLoadedModuleInformation();
    VQMLoadedModuleInformation(const VQMLoadedModuleInformation &) = delete;
    VQMLoadedModuleInformation &operator=(const VQMLoadedModuleInformation &) = delete;

    /// Judge success by moduleLoaded(), the reason by getLastErrorText().
    void openLibrary(const char *path);
    void closeLibrary();
    void *getProcAddress(const char *symbol);
    bool moduleLoaded() const;
    const char *getLastErrorText() const;

    /// Copies `moduleName` (null as empty) into `name`, cut to 31 characters.
    void setName(const char *moduleName);
    /// The module object with all its operations; null when there is none.
    VQMDllModuleInterface *moduleObject() const
    {
        return static_cast<VQMDllModuleInterface *>(moduleInterface);
    }

    const VQMModuleInfo *info = nullptr; ///< the module's own
    char name[32] = "Unknown";
    int moduleId = 0;
    VQMModuleVersion *interfaceVersion = nullptr; ///< the module's own
    VQMModuleInterface *moduleInterface = nullptr;
    GetModuleInfoFunction getModuleInfoEntry = nullptr;
    CreateInstanceFunction createInstanceEntry = nullptr;
    bool initialized = false;
    bool partInitialized[3] = {false, false, false}; ///< Database, Scpi, Gui
    VQMSharedLibrary *library;
};

} // namespace Orvia
