#pragma once

#include <QObject>

#include <deque>
#include <functional>
#include <mutex>

namespace Orvia {

/// Carries work to the GUI thread, on which it is created and destroyed. Work that is still waiting when the
/// queue is destroyed is dropped.
class GuiThreadQueue : private QObject
{
public:
    /// Runs `work` on the GUI thread, after all work posted before, and after the Qt events posted before.
    /// Any thread; returns at once. An exception out of `work` goes to LauncherApplication.
    void post(std::function<void()> work);
    bool isGuiThread() const;

private:
    void customEvent(QEvent *event) override;

    std::mutex m_mutex;
    std::deque<std::function<void()>> m_work;
};

} // namespace Orvia
