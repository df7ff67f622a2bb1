#include "launcher/Screenshot.h"

#include "gui/MainWidget.h"

#include <QPixmap>
#include <QSaveFile>
#include <QWidget>
#include <QWindow>

#include <utility>

namespace Orvia {

namespace {

constexpr int lookInterval = 20; // milliseconds
constexpr int deadline = 5000;   // milliseconds

bool canBeSeen(const QWidget *window)
{
    return window->isVisible() && window->windowHandle() != nullptr && window->windowHandle()->isExposed();
}

/// Returns what went wrong, empty when nothing did.
QString savePicture(QWidget *window, const QString &fileName)
{
    QSaveFile file(fileName);
    if (file.open(QIODevice::WriteOnly) && window->grab().save(&file, "PNG") && file.commit())
        return QString();
    return fileName + ": " + file.errorString();
}

} // namespace

Screenshot::Screenshot(const QString &file, std::function<void(const QString &error)> finished)
    : m_file(file), m_finished(std::move(finished))
{
    m_nextLook.callOnTimeout([this] { look(); });
}

void Screenshot::take()
{
    m_waited.start();
    m_nextLook.start(lookInterval); // not at once: a window may show itself later
}

void Screenshot::giveUp()
{
    finish("the shutdown came before the picture");
}

// A window that shows itself later, or that another one replaces, sends no one signal to wait for.
void Screenshot::look()
{
    QWidget *widget = mainWidget();
    if (widget == nullptr)
        finish("there is no main window");
    else if (canBeSeen(widget->window()))
        finish(savePicture(widget->window(), m_file));
    else if (m_waited.hasExpired(deadline))
        finish(QString("the main window has not been shown within %1 s").arg(deadline / 1000));
}

void Screenshot::finish(const QString &error)
{
    m_nextLook.stop();
    if (const auto finished = std::exchange(m_finished, {}))
        finished(error);
}

} // namespace Orvia
