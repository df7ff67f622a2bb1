#pragma once

#include <QString>

#include <condition_variable>
#include <memory>
#include <mutex>

namespace Orvia {

class GuiThreadQueue;

/// Presents the debug service's message boxes, on the GUI thread, whichever thread asks for one. The asker
/// waits until its box is closed or release() is called; the GUI thread never waits for another thread.
/// Created and destroyed on the GUI thread.
class MessageBoxes
{
public:
    explicit MessageBoxes(GuiThreadQueue *queue);
    ~MessageBoxes();
    MessageBoxes(const MessageBoxes &) = delete;
    MessageBoxes &operator=(const MessageBoxes &) = delete;

    /// Closes all open dialogs and lets every asker go on, now and from now on. GUI thread.
    void release();

private:
    void present(const QString &caption, const QString &text);
    void show(const QString &caption, const QString &text, const std::shared_ptr<bool> &closed);
    bool isReleased();

    GuiThreadQueue *m_queue;
    std::mutex m_mutex;
    std::condition_variable m_closed;
    bool m_released = false;
};

} // namespace Orvia
