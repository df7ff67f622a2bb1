#pragma once

#include "platform/Export.h"

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace Orvia {

/// Tells the kernel of library files that will be opened soon, in their order, on a thread of its own, so
/// that the disk works ahead of the loader. Does nothing when the first, middle and last file are in the page
/// cache already. The destructor stops it after the file at hand; errors are of no consequence.
class VQM_EXPORT LibraryReadAhead
{
public:
    explicit LibraryReadAhead(std::vector<std::string> files);
    ~LibraryReadAhead();
    LibraryReadAhead(const LibraryReadAhead &) = delete;
    LibraryReadAhead &operator=(const LibraryReadAhead &) = delete;

    /// Whether one of the three was not in the page cache, so that the thread was started.
    bool isNeeded() const { return m_thread.joinable(); }
    /// Files announced to the kernel so far.
    int announced() const { return m_announced; }

private:
    void run();

    const std::vector<std::string> m_files;
    std::atomic<bool> m_stop = false;
    std::atomic<int> m_announced = 0;
    std::thread m_thread;
};

} // namespace Orvia
