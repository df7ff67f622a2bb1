#include "tests/fuzz/Fuzz.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sys/mman.h>
#include <sys/time.h>
#include <unistd.h>

namespace Orvia {

namespace {

void setProcessorTimer(int seconds)
{
    const itimerval timer = {{}, {seconds, 0}};
    ::setitimer(ITIMER_PROF, &timer, nullptr);
}

} // namespace

void require(bool condition, const char *what)
{
    if (condition)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

TimeLimit::TimeLimit()
{
    std::signal(SIGPROF, [](int) { require(false, "an input takes ten seconds at most"); });
    setProcessorTimer(10);
}

TimeLimit::~TimeLimit()
{
    setProcessorTimer(0);
}

InputFile::InputFile() : m_descriptor(::memfd_create("input", MFD_CLOEXEC))
{
    require(m_descriptor >= 0, "there are files in memory");
    std::snprintf(m_name, sizeof m_name, "/proc/self/fd/%d", m_descriptor);
}

void InputFile::write(const std::uint8_t *data, std::size_t size)
{
    const bool written = ::ftruncate(m_descriptor, 0) == 0 &&
                         ::pwrite(m_descriptor, data, size, 0) == static_cast<ssize_t>(size);
    require(written, "the input is written to its file");
}

} // namespace Orvia
