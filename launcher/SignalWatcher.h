#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace Orvia {

/// Notes SIGINT and SIGTERM from its construction on, and ignores SIGPIPE. A second SIGINT ends the process.
/// One at a time; after it has gone SIGINT and SIGTERM are ignored.
class SignalWatcher
{
public:
    SignalWatcher();
    ~SignalWatcher();
    SignalWatcher(const SignalWatcher &) = delete;
    SignalWatcher &operator=(const SignalWatcher &) = delete;

    /// While the notifier lives, calls `endRequested` for every signal, those included that have come before.
    /// On the GUI thread; null when signals cannot be noted.
    [[nodiscard]] std::unique_ptr<QSocketNotifier> notify(const std::function<void()> &endRequested);

private:
    void report();

    int m_pipe[2] = {-1, -1};
};

} // namespace Orvia
