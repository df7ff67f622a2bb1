#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace Orvia {

/// Turns SIGINT and SIGTERM into a call on the GUI thread, and ignores SIGPIPE. A second SIGINT ends the
/// process. On the GUI thread, one at a time; the previous handling is not restored.
class SignalWatcher
{
public:
    explicit SignalWatcher(std::function<void()> endRequested);
    ~SignalWatcher();
    SignalWatcher(const SignalWatcher &) = delete;
    SignalWatcher &operator=(const SignalWatcher &) = delete;

private:
    void signalArrived();

    std::function<void()> m_endRequested;
    int m_pipe[2] = {-1, -1};
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace Orvia
