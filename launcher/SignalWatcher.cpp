#include "launcher/SignalWatcher.h"

#include "launcher/Report.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace Orvia {

namespace {

std::atomic<int> pipeEnd = -1;
static_assert(std::atomic<int>::is_always_lock_free); // for use in a signal handler

void passOn(int number)
{
    const int savedError = errno;
    const char message = static_cast<char>(number);
    [[maybe_unused]] const ssize_t written = write(pipeEnd, &message, 1); // a full pipe tells as much
    errno = savedError;
}

void handle(int number, void (*handler)(int), int flags)
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART | flags;
    sigemptyset(&action.sa_mask);
    sigaction(number, &action, nullptr);
}

} // namespace

SignalWatcher::SignalWatcher()
{
    handle(SIGPIPE, SIG_IGN, 0);
    if (pipe2(m_pipe, O_CLOEXEC | O_NONBLOCK) != 0) {
        Orvia::report(QString("signals end the process without a shutdown: ") + std::strerror(errno));
        return;
    }
    pipeEnd = m_pipe[1];
    handle(SIGINT, &passOn, static_cast<int>(SA_RESETHAND));
    handle(SIGTERM, &passOn, 0);
}

SignalWatcher::~SignalWatcher()
{
    if (m_pipe[0] < 0)
        return;
    // From here on the process is about to end anyway.
    handle(SIGINT, SIG_IGN, 0);
    handle(SIGTERM, SIG_IGN, 0);
    pipeEnd = -1;
    close(m_pipe[0]);
    close(m_pipe[1]);
}

std::unique_ptr<QSocketNotifier> SignalWatcher::notify(const std::function<void()> &endRequested)
{
    if (m_pipe[0] < 0)
        return nullptr;
    auto notifier = std::make_unique<QSocketNotifier>(m_pipe[0], QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, [this, endRequested] {
        endRequested();
        report();
    });
    return notifier;
}

void SignalWatcher::report()
{
    char number = 0;
    while (read(m_pipe[0], &number, 1) == 1)
        Orvia::report(number == SIGINT ? "interrupted, shutting down; a second SIGINT ends at once"
                                       : "SIGTERM, shutting down");
}

} // namespace Orvia
