#pragma once

#include <QLockFile>

#include <memory>

namespace Orvia {

/// Keeps one launcher a configuration: by a lock file, and by the list of processes where the lock says
/// nothing. Holds the lock until destruction; the lock of a process that is gone does not count.
class SingleInstance
{
public:
    /// False when another launcher holds this configuration's lock, which is reported. A lock that cannot be
    /// created is reported and otherwise ignored.
    bool lock(const char *loadList);
    /// False when another launcher stands in the list of processes with this configuration, which is
    /// reported. Slow. Changes the environment for a moment: call it before there are other threads.
    static bool isAlone(const char *loadList);

private:
    std::unique_ptr<QLockFile> m_lock;
};

} // namespace Orvia
