#pragma once

#include <QLockFile>

#include <memory>

namespace Orvia {

/// Keeps one launcher a configuration: by the list of processes, and by a lock file that also works where the
/// list says nothing. Holds the lock until destruction; the lock of a process that is gone does not count.
class SingleInstance
{
public:
    /// False when another launcher runs with this configuration, which is reported. A lock that cannot be
    /// created is reported and otherwise ignored. Changes the environment for a moment: call it before there
    /// are other threads.
    bool claim(const char *loadList);

private:
    bool lock(const QString &loadList);

    std::unique_ptr<QLockFile> m_lock;
};

} // namespace Orvia
