#include "platform/VQMSharedLibrary.h"

#include "platform/LibraryFile.h"
#include "platform/TraceSpan.h"

#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <link.h>

namespace Orvia {

namespace {

/// For memory checkers, which name code by what is mapped when the process ends.
bool areModulesKept()
{
    const char *value = std::getenv("VQM_KEEP_MODULES");
    return value != nullptr && std::strcmp(value, "1") == 0;
}

/// Tells whether the loader let a library go. Of its several ways to ask, this one searches no list.
class Mapping
{
public:
    explicit Mapping(void *handle)
    {
        if (::dlinfo(handle, RTLD_DI_LINKMAP, &m_map) == 0)
            m_dynamic = m_map->l_ld;
    }
    bool isLeft() const
    {
        dl_find_object found;
        return m_map != nullptr && ::_dl_find_object(m_dynamic, &found) == 0 && found.dlfo_link_map == m_map;
    }

private:
    link_map *m_map = nullptr; ///< afterwards no more than a number
    void *m_dynamic = nullptr; ///< lies in the library
};

} // namespace

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
    TraceSpan span("open", m_path.c_str());
    if (const std::string reason = reasonNotToLoad(m_path.c_str()); !reason.empty()) {
        m_lastError = m_path + ": " + reason;
        span.setOutcome(m_lastError);
        return false;
    }
    m_handle = ::dlopen(m_path.c_str(),
                        (resolveAll ? RTLD_NOW : RTLD_LAZY) | (exportGlobally ? RTLD_GLOBAL : RTLD_LOCAL));
    if (m_handle == nullptr) {
        rememberError();
        span.setOutcome(m_lastError);
    }
    return m_handle != nullptr;
}

void VQMSharedLibrary::close()
{
    if (m_handle == nullptr)
        return;
    TraceSpan span("close", m_path.c_str());
    if (areModulesKept()) {
        span.setOutcome("stays mapped because of VQM_KEEP_MODULES");
    } else {
        const Mapping mapping(m_handle);
        if (::dlclose(m_handle) != 0) {
            rememberError();
            span.setOutcome(m_lastError);
        } else if (mapping.isLeft()) {
            span.setOutcome("stays mapped");
        }
    }
    m_handle = nullptr;
}

void *VQMSharedLibrary::getProcAddress(const char *symbol)
{
    if (m_handle == nullptr) {
        m_lastError = "the library is not open";
        return nullptr;
    }
    TraceSpan span("look-up", symbol);
    ::dlerror();
    void *address = ::dlsym(m_handle, symbol);
    if (address == nullptr) {
        rememberError();
        span.setOutcome(m_lastError);
    }
    return address;
}

void VQMSharedLibrary::rememberError()
{
    const char *text = ::dlerror();
    m_lastError = text != nullptr ? text : "the symbol's value is null";
}

} // namespace Orvia
