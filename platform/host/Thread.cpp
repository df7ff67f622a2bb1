#include "platform/VQMThread.h"

#include "platform/host/StandardError.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QMetaObject>
#include <QThread>

#include <deque>
#include <mutex>
#include <pthread.h>
#include <string>
#include <thread>
#include <utility>

namespace Orvia {

namespace {

constexpr std::size_t maxNameLength = 15; ///< the kernel takes no more

} // namespace

// A std::thread with Qt's event loop in it: thread checkers know its start and end, unlike those of a
// QThread.
struct VQMThread::Private
{
    std::string name;
    std::thread thread;

    std::mutex mutex; ///< guards the following
    std::deque<std::function<void()>> work;
    QObject *receiver = nullptr; ///< lives on the thread; null while no event reaches it
    bool stopRequested = false;  ///< before there was a receiver

    static thread_local Private *current; ///< of the thread that runs

    void run();
    void wake();
    void quit();
    void runNext() noexcept;
};

thread_local VQMThread::Private *VQMThread::Private::current = nullptr;

/// The thread's function. Work posted before it got here is waiting in the queue.
void VQMThread::Private::run()
{
    ::pthread_setname_np(::pthread_self(), name.substr(0, maxNameLength).c_str());
    current = this;
    QObject anchor;
    QEventLoop loop;
    {
        const std::lock_guard lock(mutex);
        receiver = &anchor;
        for (std::size_t i = 0; i < work.size(); ++i)
            wake();
        if (stopRequested)
            quit();
    }
    loop.exec();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // as QThread does at its end
    const std::lock_guard lock(mutex);
    receiver = nullptr;
}

/// One event for each piece of work, so that sockets and timers get their turn in between. The event carries
/// nothing: what crosses threads does so under the mutex, where thread checkers see it. The mutex is held.
void VQMThread::Private::wake()
{
    if (receiver != nullptr)
        QMetaObject::invokeMethod(
            receiver, [] { current->runNext(); }, Qt::QueuedConnection);
}

/// An event as well: it comes after those of the work posted before. The mutex is held.
void VQMThread::Private::quit()
{
    if (receiver != nullptr && QCoreApplication::instance() == nullptr)
        receiver->thread()->quit(); // without the application no event arrives any more
    else if (receiver != nullptr)
        QMetaObject::invokeMethod(
            receiver, [] { QThread::currentThread()->quit(); }, Qt::QueuedConnection);
    else
        stopRequested = true;
}

void VQMThread::Private::runNext() noexcept
{
    std::function<void()> next;
    {
        const std::lock_guard lock(mutex);
        next = std::move(work.front());
        work.pop_front();
    }
    next();
}

VQMThread::VQMThread(const char *name) : d(std::make_unique<Private>())
{
    d->name = name != nullptr ? name : "";
}

VQMThread::~VQMThread()
{
    stop();
}

void VQMThread::start()
{
    if (d->thread.joinable())
        return;
    if (QCoreApplication::instance() == nullptr) { // the event loop would run hot and deliver nothing
        writeStandardError(QStringLiteral("thread %1: not started, there is no QCoreApplication")
                               .arg(QString::fromStdString(d->name)));
        return;
    }
    d->stopRequested = false;
    d->thread = std::thread([this] { d->run(); });
}

void VQMThread::post(std::function<void()> work)
{
    const std::lock_guard lock(d->mutex);
    d->work.push_back(std::move(work));
    d->wake();
}

void VQMThread::stop()
{
    if (!d->thread.joinable())
        return;
    {
        const std::lock_guard lock(d->mutex);
        d->quit();
    }
    if (std::this_thread::get_id() != d->thread.get_id())
        d->thread.join();
}

} // namespace Orvia
