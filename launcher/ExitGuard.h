#pragma once

namespace Orvia {

/// While it lives on a thread, exit() called on that thread (the memory test does so) ends the process at
/// once, before any static object is destroyed under the threads still at work: the exit code is
/// ExitCode::OutOfMemory, output is flushed and the trace completed.
class ExitGuard
{
public:
    ExitGuard();
    ~ExitGuard();
    ExitGuard(const ExitGuard &) = delete;
    ExitGuard &operator=(const ExitGuard &) = delete;
};

} // namespace Orvia
