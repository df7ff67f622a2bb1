#pragma once

#include "platform/VQMProgressBar.h"

#include <QPointer>
#include <QWidget>

#include <functional>
#include <map>

class QHBoxLayout;
class QLabel;
class QProgressBar;
class QPushButton;
class QVBoxLayout;

namespace Orvia {

class GuiThreadQueue;

/// The window shown while the instrument comes up: its name, what is going on, a bar for every progress bar
/// and a row of buttons. GUI thread only.
class SplashWindow : public QWidget
{
public:
    /// `closeRequested` runs when the user closes the window; it stays open.
    SplashWindow(const QString &productName, std::function<void()> closeRequested);

    void setStatus(const QString &text);
    void addBar(int id, const QString &title);
    void updateBar(int id, int percent);
    void addButton(int id, const QString &title, const std::function<void()> &pressed);
    /// Bars and buttons; ids that are not shown are ignored.
    void remove(int id);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    struct Bar
    {
        QWidget *row;
        QProgressBar *bar;
    };

    std::function<void()> m_closeRequested;
    QLabel *m_status;
    QVBoxLayout *m_barRows;
    QHBoxLayout *m_buttonRow;
    std::map<int, Bar> m_bars;
    std::map<int, QPushButton *> m_buttons;
};

/// Shows progress in a splash window, whatever thread reports it, until the window is deleted; outlives the
/// event loop. Neither queue nor window is owned.
class SplashProgress : public VQMProgressHandler
{
public:
    SplashProgress(GuiThreadQueue *queue, SplashWindow *window);

    void barCreated(int id, const QString &title) override;
    void barUpdated(int id, int percent) override;
    void barRemoved(int id) override;
    void buttonCreated(int id, const QString &title, const std::function<void()> &pressed) override;
    void buttonRemoved(int id) override;

private:
    void onWindow(std::function<void(SplashWindow *)> work);

    GuiThreadQueue *m_queue;
    QPointer<SplashWindow> m_window; ///< GUI thread only
};

} // namespace Orvia
