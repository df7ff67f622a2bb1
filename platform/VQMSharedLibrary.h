#pragma once

#include "platform/Export.h"

#include <string>

namespace Orvia {

/// One shared library opened at run time, on dlopen and dlsym directly. Not thread-safe.
///
/// Each operation is a span of the trace.
///
/// A path without "/" is taken relative to the current folder: the loader's own search path is never used.
/// Closed by close() or by the destructor.
class VQM_EXPORT VQMSharedLibrary
{
public:
    VQMSharedLibrary() = default;
    ~VQMSharedLibrary();
    VQMSharedLibrary(const VQMSharedLibrary &) = delete;
    VQMSharedLibrary &operator=(const VQMSharedLibrary &) = delete;

    /// Opens the library, closing an earlier one first. `resolveAll`: all symbols are bound now, so that a
    /// missing one is an error here rather than a crash later. `exportGlobally`: its symbols serve later
    /// libraries too.
    bool open(const char *path, bool resolveAll, bool exportGlobally);
    /// The trace says so when the library stays mapped all the same: because something else holds it, or
    /// because the environment variable VQM_KEEP_MODULES is 1, which keeps all libraries for memory checkers.
    void close();
    /// The symbol's address, or null.
    void *getProcAddress(const char *symbol);
    bool isOpen() const { return m_handle != nullptr; }
    /// The loader's text of the last failure; empty when nothing has failed.
    const char *lastError() const { return m_lastError.c_str(); }

private:
    void rememberError();

    void *m_handle = nullptr;
    std::string m_path;
    std::string m_lastError;
};

} // namespace Orvia
