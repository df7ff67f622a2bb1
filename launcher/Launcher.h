#pragma once

#include "launcher/CommandLine.h"
#include "launcher/ExitCodes.h"
#include "launcher/SignalWatcher.h"
#include "launcher/SingleInstance.h"
#include "launcher/StartupObserver.h"
#include "platform/Export.h"

namespace Orvia {

/// One run of the launcher: its preparations, then the instrument until it is shut down.
class Launcher
{
public:
    /// The arguments outlive the launcher.
    Launcher(const CommandLine &commandLine, int argc, char **argv);

    /// Returns the exit code.
    int run();

private:
    // Each reports and notes what is wrong; false when the run ends there.
    bool loadProperties();
    bool chooseFamily();
    bool lockConfiguration();
    bool startTrace();
    bool isOnlyInstance();

    void leaveBreadcrumbs();
    void runInstrument();
    void summarize();
    /// Empty when the picture has been saved.
    void noteScreenshot(const QString &error);

    const CommandLine m_commandLine;
    const int m_argc;
    char **const m_argv;
    HwESigGenFamily m_family = 0;
    SignalWatcher m_signals; ///< before anything that would be left behind
    SingleInstance m_instance;
    ExitStatus m_status;
    StartupObserver m_observer;
};

} // namespace Orvia

/// The entry of the launcher library; returns the exit code.
extern "C" VQM_EXPORT int vqmLauncherMain(int argc, char **argv);
