#pragma once

#include "platform/Export.h"

#include <functional>
#include <memory>

namespace Orvia {

/// A thread with a Qt event loop, on which modules may own sockets and timers. Needs a QCoreApplication while
/// it runs. Started, stopped and destroyed by its owner.
class VQM_EXPORT VQMThread
{
public:
    explicit VQMThread(const char *name);
    /// Stops the thread if it still runs.
    ~VQMThread();
    VQMThread(const VQMThread &) = delete;
    VQMThread &operator=(const VQMThread &) = delete;

    void start();
    /// Runs `work` on the thread, after all work posted before. Any thread. An exception that leaves `work`
    /// ends the process: catch it inside.
    void post(std::function<void()> work);
    /// Ends the event loop once the work posted so far is done, and waits for the thread (on the thread
    /// itself it does not wait). Work posted later waits for the next start().
    void stop();

private:
    struct Private;
    std::unique_ptr<Private> d;
};

/// The application's main thread as other parts of the firmware know it; only passed through here.
class VQMMainThread;

} // namespace Orvia
