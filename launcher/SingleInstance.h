#pragma once

#include <QByteArray>

namespace Orvia {

/// Keeps one launcher a configuration: by a lock file, and by the list of processes where the lock says
/// nothing. Holds the lock until destruction, which removes the file. The kernel holds it for the process:
/// the file that a killed one has left locks nobody out.
class SingleInstance
{
public:
    SingleInstance() = default;
    ~SingleInstance();
    SingleInstance(const SingleInstance &) = delete;
    SingleInstance &operator=(const SingleInstance &) = delete;

    /// False when another launcher holds this configuration's lock, which is reported. A lock that cannot be
    /// created is reported and otherwise ignored.
    bool lock(const char *loadList);
    /// False when another launcher stands in the list of processes with this configuration, which is
    /// reported. Whoever holds the lock waits a few seconds for it to go, as it does when it has been refused
    /// the lock. Slow. Changes the environment for a moment: call it before there are other threads.
    bool isAlone(const char *loadList) const;

private:
    QByteArray m_fileName;
    int m_descriptor = -1; ///< of the file while it is locked
};

} // namespace Orvia
