#include "gui/MainWidget.h"

#include <QApplication>
#include <QEvent>
#include <QPointer>
#include <QWidget>

namespace Orvia {

namespace {

/// Quits once the main widget has been closed. Whether it accepts to be closed shows only afterwards.
class CloseWatcher : public QObject
{
public:
    QPointer<QWidget> widget;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Close && watched == widget)
            QMetaObject::invokeMethod(
                this, [this] { quitWhenClosed(); }, Qt::QueuedConnection);
        return false;
    }

private:
    void quitWhenClosed() const
    {
        if (widget != nullptr && widget->isHidden())
            QApplication::quit();
    }
};

CloseWatcher &watcher()
{
    static CloseWatcher instance;
    return instance;
}

} // namespace

QWidget *mainWidget()
{
    return watcher().widget;
}

void setMainWidget(QWidget *widget)
{
    CloseWatcher &close = watcher();
    if (close.widget != nullptr)
        close.widget->removeEventFilter(&close);
    close.widget = widget;
    if (widget != nullptr)
        widget->installEventFilter(&close);
}

} // namespace Orvia
