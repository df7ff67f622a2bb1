#include "launcher/GuiThreadQueue.h"

#include <QCoreApplication>
#include <QEvent>
#include <QThread>

#include <utility>

namespace Orvia {

void GuiThreadQueue::post(std::function<void()> work)
{
    {
        const std::lock_guard lock(m_mutex);
        m_work.push_back(std::move(work));
    }
    QCoreApplication::postEvent(this, new QEvent(QEvent::User));
}

bool GuiThreadQueue::isGuiThread() const
{
    return QThread::currentThread() == thread();
}

// One piece of work an event, so that work goes on inside a nested event loop that a piece of work runs.
void GuiThreadQueue::customEvent(QEvent *)
{
    std::function<void()> work;
    {
        const std::lock_guard lock(m_mutex);
        work = std::move(m_work.front());
        m_work.pop_front();
    }
    work();
}

} // namespace Orvia
