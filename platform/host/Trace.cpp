#include "platform/VQMUtility.h"

#include "platform/host/StandardError.h"

#include <QFile>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <mutex>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <type_traits>
#include <unistd.h>

// The trace is written into a shared mapping of its file, so that a line costs no system call and is in the
// kernel's hands as soon as it is copied: it survives the end of the process however that comes. After a
// crash the file ends in zero bytes, what was not used of the last step in which it grew.
//
// A line: seconds since startTrace(), thread id and name, text; line feeds in the text as \n, returns as \r.
//
//         0.001234 [4711 startup] Initializing Database...

namespace Orvia {

namespace {

constexpr std::size_t growth = 1 << 20; ///< a multiple of every page size
constexpr std::size_t maxTimeLength = 32;
constexpr std::size_t minSecondsLength = 5;

/// All that there is of the trace. The window is the part of the file that is mapped.
struct TraceFile
{
    std::mutex mutex;
    VQMTraceListener *listener = nullptr;
    std::int64_t start = 0; ///< in microseconds
    int descriptor = -1;
    char *name = nullptr;
    char *window = nullptr;
    std::size_t windowSize = 0;
    std::size_t used = 0; ///< of the window
    off_t windowOffset = 0;
};

// Usable before the first constructor and after the last destructor of the process has run.
constinit TraceFile trace;
constinit std::atomic<bool> tracing = false;
static_assert(std::is_trivially_destructible_v<TraceFile>);

/// " [id name] ", made when a thread traces for the first time.
struct ThreadLabel
{
    int id = 0;
    char name[16] = {};
    std::size_t length = 0;
    char text[48] = {};
};
constinit thread_local ThreadLabel threadLabel;

std::int64_t now()
{
    timespec time;
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return std::int64_t(time.tv_sec) * 1000000 + time.tv_nsec / 1000;
}

const ThreadLabel &currentThreadLabel()
{
    ThreadLabel &label = threadLabel; // asked for once: in a library each time is a call
    if (label.length == 0) {
        label.id = ::gettid();
        ::pthread_getname_np(::pthread_self(), label.name, sizeof(label.name));
        label.length = static_cast<std::size_t>(
            std::snprintf(label.text, sizeof(label.text), " [%d %s] ", label.id, label.name));
    }
    return label;
}

/// Makes room for `size` bytes behind what is written. 0 or the error number. The space is really allocated
/// here: a write into a mapping that finds the disk full would kill the process.
int reserve(std::size_t size)
{
    if (trace.windowSize - trace.used >= size)
        return 0;
    const std::size_t page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    const std::size_t kept = trace.used % page;
    const off_t offset = trace.windowOffset + static_cast<off_t>(trace.used - kept);
    const std::size_t newSize = std::max(growth, (kept + size + page - 1) / page * page);
    int error;
    do
        error = ::posix_fallocate(trace.descriptor, offset, static_cast<off_t>(newSize));
    while (error == EINTR);
    if (error != 0)
        return error;
    void *window =
        ::mmap(nullptr, newSize, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE, trace.descriptor, offset);
    if (window == MAP_FAILED)
        return errno;
    if (trace.window != nullptr)
        ::munmap(trace.window, trace.windowSize);
    trace.window = static_cast<char *>(window);
    trace.windowSize = newSize;
    trace.windowOffset = offset;
    trace.used = kept;
    return 0;
}

/// To be called before anybody traces. The mutex is held.
void beginTracing()
{
    if (!tracing)
        trace.start = now();
}

/// Ends the trace and cuts the file to what is written. The mutex is held.
void closeTrace()
{
    tracing = trace.listener != nullptr;
    if (trace.descriptor < 0)
        return;
    if (trace.window != nullptr)
        ::munmap(trace.window, trace.windowSize);
    if (::ftruncate(trace.descriptor, trace.windowOffset + static_cast<off_t>(trace.used)) != 0)
        writeStandardError(QStringLiteral("trace %1: not cut to its length: %2")
                               .arg(QFile::decodeName(trace.name), qt_error_string(errno)));
    ::close(trace.descriptor);
    std::free(trace.name);
    trace.descriptor = -1;
    trace.name = nullptr;
    trace.window = nullptr;
    trace.windowSize = trace.used = 0;
    trace.windowOffset = 0;
}

/// The instrument goes on without. The mutex is held.
void giveUpTrace(int error)
{
    writeStandardError(QStringLiteral("trace %1: %2; tracing ends here")
                           .arg(QFile::decodeName(trace.name), qt_error_string(error)));
    closeTrace();
}

char *putTime(char *out, std::int64_t microseconds)
{
    char digits[maxTimeLength];
    const char *end = std::to_chars(digits, digits + sizeof(digits), microseconds / 1000000).ptr;
    for (auto length = static_cast<std::size_t>(end - digits); length < minSecondsLength; ++length)
        *out++ = ' ';
    out = std::copy(static_cast<const char *>(digits), end, out);
    *out++ = '.';
    auto fraction = static_cast<std::uint32_t>(microseconds % 1000000);
    for (int i = 5; i >= 0; --i, fraction /= 10)
        out[i] = static_cast<char>('0' + fraction % 10);
    return out + 6;
}

char *putText(char *out, const char *text, std::size_t length)
{
    while (true) {
        const std::size_t piece = ::strcspn(text, "\n\r");
        out = std::copy_n(text, piece, out);
        if (piece == length)
            return out;
        *out++ = '\\';
        *out++ = text[piece] == '\n' ? 'n' : 'r';
        text += piece + 1;
        length -= piece + 1;
    }
}

/// The mutex is held.
void writeLine(std::int64_t time, const ThreadLabel &label, const char *text)
{
    const std::size_t length = std::strlen(text);
    if (const int error = reserve(maxTimeLength + label.length + 2 * length + 1)) {
        giveUpTrace(error);
        return;
    }
    char *out = putTime(trace.window + trace.used, time);
    out = std::copy_n(label.text, label.length, out);
    out = putText(out, text, length);
    *out++ = '\n';
    trace.used = static_cast<std::size_t>(out - trace.window);
}

/// A new file, also where one stands already: that may be the mapped trace of a process that still runs.
int createFile(const char *name)
{
    struct stat status;
    if (::stat(name, &status) == 0) {
        if (!S_ISREG(status.st_mode)) {
            errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
            return -1;
        }
        if (::unlink(name) != 0)
            return -1;
    }
    return ::open(name, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
}

} // namespace

VQMTraceListener::~VQMTraceListener() = default;

bool VQMUtility::startTrace(const QString &fileName, QString *error)
{
    const std::lock_guard lock(trace.mutex);
    closeTrace();
    const QByteArray name = QFile::encodeName(fileName);
    trace.descriptor = createFile(name.constData());
    if (trace.descriptor < 0) {
        if (error != nullptr)
            *error = QStringLiteral("trace %1: %2").arg(fileName, qt_error_string(errno));
        return false;
    }
    trace.name = ::strdup(name.constData());
    beginTracing();
    tracing = true;
    if (const int failure = reserve(1))
        giveUpTrace(failure);
    return true;
}

void VQMUtility::stopTrace()
{
    const std::lock_guard lock(trace.mutex);
    closeTrace();
}

void VQMUtility::setTraceListener(VQMTraceListener *listener)
{
    const std::lock_guard lock(trace.mutex);
    beginTracing();
    trace.listener = listener;
    tracing = listener != nullptr || trace.descriptor >= 0;
}

bool VQMUtility::isTracing()
{
    return tracing.load(std::memory_order_relaxed);
}

void VQMUtility::traceMessage(const char *text)
{
    if (!isTracing() || text == nullptr)
        return;
    const ThreadLabel &label = currentThreadLabel();
    const std::lock_guard lock(trace.mutex); // from the time stamp on: the lines are in order of time
    const std::int64_t time = now() - trace.start;
    if (trace.listener != nullptr)
        trace.listener->traced(time, label.id, label.name, text);
    if (trace.descriptor >= 0)
        writeLine(time, label, text);
}

} // namespace Orvia
