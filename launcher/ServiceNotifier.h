#pragma once

#include "platform/VQMProgressBar.h"

#include <atomic>
#include <map>

namespace Orvia {

/// Tells the service manager (systemd) how start-up gets on, when it asks for that with NOTIFY_SOCKET: the
/// progress bars as status text, that the instrument is up, that it goes down. libsystemd is loaded only
/// then. Any thread.
class ServiceNotifier : public VQMProgressHandler
{
public:
    ServiceNotifier();
    ~ServiceNotifier() override;
    ServiceNotifier(const ServiceNotifier &) = delete;
    ServiceNotifier &operator=(const ServiceNotifier &) = delete;

    /// "complete finished" has been announced.
    void ready();
    /// May be repeated.
    void stopping();

    void barCreated(int id, const QString &title) override;
    void barUpdated(int id, int percent) override;
    void barRemoved(int id) override;
    void buttonCreated(int id, const QString &title, const std::function<void()> &pressed) override;
    void buttonRemoved(int id) override;

private:
    void notify(const QString &state);

    std::atomic<int (*)(int, const char *)> m_notify = nullptr; ///< null: nobody wants to know
    std::map<int, QString> m_titles;
    std::atomic<bool> m_isStopping = false;
};

} // namespace Orvia
