#include "platform/VQMSharedLibrary.h"

#include "platform/VQMUtility.h"

#include <cstring>
#include <dlfcn.h>

namespace Orvia {

VQMSharedLibrary::~VQMSharedLibrary()
{
    close();
}

bool VQMSharedLibrary::open(const char *path, bool resolveAll, bool exportGlobally)
{
    close();
    if (path == nullptr || *path == '\0') { // dlopen would take these for the program itself
        m_lastError = "no file name given";
        return false;
    }
    m_path = std::strchr(path, '/') != nullptr ? path : std::string("./") + path;
    m_handle = ::dlopen(m_path.c_str(),
                        (resolveAll ? RTLD_NOW : RTLD_LAZY) | (exportGlobally ? RTLD_GLOBAL : RTLD_LOCAL));
    if (m_handle == nullptr)
        rememberError();
    return m_handle != nullptr;
}

void VQMSharedLibrary::close()
{
    if (m_handle == nullptr)
        return;
    if (::dlclose(m_handle) != 0) {
        rememberError();
        VQMUtility::traceMessage((m_path + ": not closed: " + m_lastError).c_str());
    } else if (void *left = ::dlopen(m_path.c_str(), RTLD_LAZY | RTLD_NOLOAD)) {
        ::dlclose(left);
        VQMUtility::traceMessage((m_path + ": closed, but stays mapped").c_str());
    }
    m_handle = nullptr;
}

void *VQMSharedLibrary::getProcAddress(const char *symbol)
{
    if (m_handle == nullptr) {
        m_lastError = "the library is not open";
        return nullptr;
    }
    ::dlerror();
    void *address = ::dlsym(m_handle, symbol);
    if (address == nullptr)
        rememberError();
    return address;
}

void VQMSharedLibrary::rememberError()
{
    const char *text = ::dlerror();
    m_lastError = text != nullptr ? text : "the symbol's value is null";
}

} // namespace Orvia
