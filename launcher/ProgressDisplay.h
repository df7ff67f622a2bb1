#pragma once

#include "launcher/SplashWindow.h"
#include "launcher/TerminalProgress.h"

#include <functional>
#include <optional>

namespace Orvia {

class GuiThreadQueue;

/// What shows how start-up gets on: the terminal always, and with a GUI the splash window, named after the
/// properties "Instrument"/"Manufacturer" and "Model", with a button that aborts. GUI thread.
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
    std::optional<SplashWindow> m_window;
    std::optional<SplashProgress> m_splash;
};

} // namespace Orvia
