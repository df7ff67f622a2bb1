#pragma once

#include "launcher/SplashWindow.h"
#include "launcher/TerminalProgress.h"

#include <QPointer>

#include <functional>
#include <optional>

namespace Orvia {

class GuiThreadQueue;

/// What shows how start-up gets on: the terminal always, and with a GUI the splash window, named after the
/// properties "Instrument"/"Manufacturer" and "Model", with a button that aborts. The splash window is the
/// application's main widget until the Gui stage replaces and deletes it, which also removes the button; it
/// stays when there is no Gui module to replace it. GUI thread.
class ProgressDisplay
{
public:
    /// `abortRequested` runs when the user presses the button or closes the window. The queue is not owned.
    ProgressDisplay(bool hasGui, GuiThreadQueue *queue, const std::function<void()> &abortRequested);
    ~ProgressDisplay();
    ProgressDisplay(const ProgressDisplay &) = delete;
    ProgressDisplay &operator=(const ProgressDisplay &) = delete;

    void startupOver();
    void shuttingDown();

private:
    TerminalProgress m_terminal;
    QPointer<SplashWindow> m_window; ///< owned as long as it lives
    std::optional<SplashProgress> m_splash;
};

} // namespace Orvia
