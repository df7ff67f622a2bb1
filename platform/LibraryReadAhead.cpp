#include "platform/LibraryReadAhead.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/uio.h>
#include <system_error>
#include <unistd.h>

namespace Orvia {

namespace {

/// A file that is no regular one, a pipe say, must not hold anybody up: hence O_NONBLOCK.
int openForReading(const std::string &file)
{
    return ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
}

/// False only when the kernel says that reading would wait for the disk.
bool isCached(const std::string &file)
{
    const int descriptor = openForReading(file);
    if (descriptor < 0)
        return true;
    char byte;
    const iovec buffer = {&byte, 1};
    const bool wouldWait = ::preadv2(descriptor, &buffer, 1, 0, RWF_NOWAIT) < 0 && errno == EAGAIN;
    ::close(descriptor);
    return !wouldWait;
}

} // namespace

LibraryReadAhead::LibraryReadAhead(std::vector<std::string> files) : m_files(std::move(files))
{
    if (m_files.empty() ||
        (isCached(m_files.front()) && isCached(m_files[m_files.size() / 2]) && isCached(m_files.back())))
        return;
    try {
        m_thread = std::thread([this] { run(); });
    } catch (const std::system_error &) {
        // No thread to be had: the libraries are opened without help.
    }
}

LibraryReadAhead::~LibraryReadAhead()
{
    m_stop = true;
    if (m_thread.joinable())
        m_thread.join();
}

void LibraryReadAhead::run()
{
    for (const std::string &file : m_files) {
        if (m_stop)
            return;
        const int descriptor = openForReading(file);
        if (descriptor < 0)
            continue;
        if (::posix_fadvise(descriptor, 0, 0, POSIX_FADV_WILLNEED) == 0)
            ++m_announced;
        ::close(descriptor);
    }
}

} // namespace Orvia
