#include "launcher/ServiceNotifier.h"

#include "launcher/Report.h"

#include <cstring>
#include <dlfcn.h>
#include <systemd/sd-daemon.h>

namespace Orvia {

ServiceNotifier::ServiceNotifier()
{
    if (qEnvironmentVariableIsEmpty("NOTIFY_SOCKET"))
        return;
    // Not linked: the library and what it needs itself would cost time at every start.
    void *library = ::dlopen("libsystemd.so.0", RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (library != nullptr)
        m_notify = reinterpret_cast<decltype(&::sd_notify)>(::dlsym(library, "sd_notify"));
    if (m_notify == nullptr) {
        report(QString("the service manager is not told of the start: ") + ::dlerror());
        return; // cppcheck-suppress resourceLeak ; it stays in any case
    }
    VQMProgressBar::installProgressHandler(this);
}

ServiceNotifier::~ServiceNotifier()
{
    VQMProgressBar::removeProgressHandler(this);
}

void ServiceNotifier::ready()
{
    notify("READY=1\nSTATUS=The instrument is up");
}

void ServiceNotifier::stopping()
{
    if (!m_isStopping.exchange(true))
        notify("STOPPING=1\nSTATUS=Shutting down");
}

void ServiceNotifier::barCreated(int id, const QString &title)
{
    m_titles[id] = title;
}

void ServiceNotifier::barUpdated(int id, int percent)
{
    notify(QString("STATUS=%1: %2 %").arg(m_titles[id]).arg(percent));
}

void ServiceNotifier::barRemoved(int id)
{
    m_titles.erase(id);
}

void ServiceNotifier::buttonCreated(int, const QString &, const std::function<void()> &) {}

void ServiceNotifier::buttonRemoved(int) {}

void ServiceNotifier::notify(const QString &state)
{
    const auto send = m_notify.load();
    const int result = send != nullptr ? send(0, state.toUtf8().constData()) : 0;
    if (result < 0 && m_notify.exchange(nullptr) != nullptr)
        report(QString("the service manager cannot be told: ") + std::strerror(-result));
}

} // namespace Orvia
