#pragma once

#include <QElapsedTimer>
#include <QString>
#include <QTimer>

#include <functional>

namespace Orvia {

/// Saves one picture of the main window as PNG. GUI thread.
class Screenshot
{
public:
    /// `finished` runs once: the picture has been saved, or `error` says why not.
    Screenshot(const QString &file, std::function<void(const QString &error)> finished);

    /// Takes the picture as soon as the main window can be seen. Returns at once.
    void take();
    /// No picture any more, unless it has been taken.
    void giveUp();

private:
    void look();
    void finish(const QString &error);

    const QString m_file;
    std::function<void(const QString &error)> m_finished; ///< empty once called
    QElapsedTimer m_waited;
    QTimer m_nextLook;
};

} // namespace Orvia
