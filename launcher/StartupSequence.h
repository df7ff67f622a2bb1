#pragma once

#include "Startup/ESuStage.h"
#include "launcher/WatchedMainGui.h"
#include "launcher/WatchedStartup.h"
#include "platform/VQMThread.h"
#include "registry/VQMModuleContract.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace Orvia {

class ExitStatus;
class GuiThreadQueue;

/// Brings the instrument up and takes it down, on two threads: the init-context thread constructs the startup
/// object, discovers the modules, initializes the base modules but the Gui module and then the plug-ins'
/// Database parts, and takes everything down in the end; the GUI thread runs the Gui stage in between and its
/// event loop all the time. The threads hand over by posting, neither waits for the other.
///
/// A module whose status says that it failed does not keep start-up from going on; an exception does.
///
/// Whatever fails, the shutdown runs with all its steps. One run an object; public operations on the GUI
/// thread except where said otherwise.
class StartupSequence
{
public:
    struct Settings
    {
        int argc;
        char **argv; ///< outlives the sequence
        HwESigGenFamily family;
        QStringList skipped;                          ///< module files to leave out
        std::optional<ESuStage> until;                ///< go no further once this stage has been announced
        bool alertsOnGui;                             ///< else alerts stay with the error-manager hook
        std::function<void(ESuStage)> stageAnnounced; ///< all have been told; any thread
        /// Called once: the instrument runs or, with false, it does not and is about to be taken down.
        std::function<void(bool)> startupOver;
        std::function<void()> shuttingDown; ///< nothing may wait for the user any more; called repeatedly
    };

    /// Queue and status are not owned.
    StartupSequence(const Settings &settings, GuiThreadQueue *queue, ExitStatus *status);
    ~StartupSequence();
    StartupSequence(const StartupSequence &) = delete;
    StartupSequence &operator=(const StartupSequence &) = delete;

    /// Runs the event loop until the instrument has been taken down. Whoever else quits the application asks
    /// for the shutdown.
    void run();
    /// Shuts down when the pass that is running has come to its end; discovery is cut short.
    void requestShutdown();
    /// To be called in a catch block of any thread: reports an exception that got as far as an event loop,
    /// and asks for the shutdown.
    void eventThrew();

private:
    /// How far start-up is, which says who may use the startup object.
    enum class Phase
    {
        BringUp,     ///< the init-context thread
        GuiStageDue, ///< the GUI thread, once the event has arrived that starts the Gui stage
        GuiStage,    ///< the GUI thread
        Running,     ///< the GUI thread, if the event comes again
        Shutdown,    ///< the init-context thread
    };

    // On the init-context thread
    void createStartupObject();
    void bringUp();
    void discover();
    void takeDown();
    void closeLibraries();
    void terminatePass(componentId selector);

    // On the GUI thread
    void createGuiObject();
    void afterModules();
    void runGuiStage(const std::function<void()> &stage);
    void leaveEventLoop();
    void beginShutdown();

    // On the thread whose turn it is
    void guarded(const char *step, const std::function<void()> &work);
    void fail(const char *step, const std::exception_ptr &thrown);
    bool mayGoOn() const;
    bool hasReachedUntil() const;

    const Settings m_settings;
    GuiThreadQueue *m_queue;
    ExitStatus *m_status;
    std::vector<VQMPlugInDllModuleInterface *> m_plugInInterfaces;
    VQMAnchorInterface m_anchor = {};
    std::unique_ptr<WatchedStartup> m_startup;
    std::unique_ptr<WatchedMainGui> m_gui;
    bool m_failed = false;          ///< start-up cannot go on
    Phase m_phase = Phase::BringUp; ///< GUI thread only
    bool m_isStartupOver = false;
    bool m_isDown = false;
    VQMThread m_initThread; ///< last: it is stopped first
};

} // namespace Orvia
