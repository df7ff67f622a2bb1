#include "launcher/StartupSequence.h"

#include "gui/EGuiEventType.h"
#include "launcher/ExitCodes.h"
#include "launcher/ExitGuard.h"
#include "launcher/GuiThreadQueue.h"
#include "launcher/Report.h"
#include "platform/TraceSpan.h"

#include <QCoreApplication>
#include <QEvent>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <utility>

namespace Orvia {

namespace {

constexpr int defaultId = -1; // the startup object chooses

/// So that no step is blamed on the module that an earlier one named.
void clearExceptionLocation()
{
    char(&name)[20] = VQMMainStartupImplementation::exceptionLocation;
    std::fill(std::begin(name), std::end(name) - 1, ' ');
}

} // namespace

StartupSequence::StartupSequence(const Settings &settings, GuiThreadQueue *queue, ExitStatus *status)
    : m_settings(settings), m_queue(queue), m_status(status), m_initThread("init-context")
{
    m_anchor.plugInInterfaces = &m_plugInInterfaces;
    VQMMainStartupImplementation::anchorInterface = &m_anchor;
    VQMMainStartupImplementation::platform = true; // so that a module that throws is named
}

StartupSequence::~StartupSequence()
{
    VQMMainStartupImplementation::anchorInterface = nullptr;
}

void StartupSequence::run()
{
    m_initThread.start();
    m_initThread.post([this] { createStartupObject(); });
    do {
        QCoreApplication::exec();
        requestShutdown();
    } while (m_phase != Phase::Shutdown);
    // All nested event loops have ended with exec(), so no code of a module is left on this thread's stack.
    beginShutdown();
    while (!m_isDown)
        QCoreApplication::exec();
    m_gui.reset();
    m_initThread.stop();
}

void StartupSequence::requestShutdown()
{
    VQMIntegrationStartup::setAbortFlag(true);
    m_settings.shuttingDown();
    if (m_phase == Phase::Running)
        leaveEventLoop();
}

void StartupSequence::eventThrew()
{
    report("an event handler threw: " + exceptionText(std::current_exception()));
    m_status->note(ExitCode::ModuleFailed);
    m_queue->post([this] { requestShutdown(); });
}

// On the init-context thread

void StartupSequence::createStartupObject()
{
    guarded("the startup object", [this] {
        m_startup = std::make_unique<WatchedStartup>(defaultId, m_settings.skipped, m_settings.stageAnnounced,
                                                     m_status);
        m_startup->setProgArgument(m_settings.argc, m_settings.argv);
        m_startup->setTargetId(m_settings.family);
    });
    m_queue->post([this] { createGuiObject(); });
}

void StartupSequence::bringUp()
{
    if (mayGoOn())
        guarded("module discovery", [this] { discover(); });
    if (mayGoOn())
        guarded("initialization of the base modules", [this] {
            const ExitGuard guard; // for the memory test
            m_startup->setComponentSelector(componentAllButGui);
            m_startup->initializeModules();
        });
    if (mayGoOn() && !hasReachedUntil())
        guarded("initialization of the plug-ins", [this] { m_startup->initializePlugIns(VQMDatabasePart); });
    m_queue->post([this] { afterModules(); });
}

void StartupSequence::discover()
{
    const int status = m_startup->findModules(nullptr);
    for (const QString &name : m_startup->unusedSkips())
        report("--skip " + name + ": the configuration lists no such file");
    if (status == 0)
        return;
    report(QString("no modules found, status %1").arg(status));
    m_status->note(ExitCode::Configuration);
    m_failed = true;
}

void StartupSequence::takeDown()
{
    guarded("termination of the plug-ins", [this] { m_startup->plugInsTerminate(); });
    guarded("termination of the Gui module", [this] { terminatePass(componentGuiOnly); });
    guarded("termination of the base modules", [this] { terminatePass(componentAllButGui); });
    guarded("removal of the progress bars", [this] { m_startup->freeProgressBar(); });
    // By way of the GUI thread: what the modules have left in the event queues of the two threads is
    // delivered while their code is still there.
    m_queue->post([this] { m_initThread.post([this] { closeLibraries(); }); });
}

void StartupSequence::closeLibraries()
{
    guarded("closing of the libraries", [this] { m_startup->freeResources(); });
    m_startup.reset();
    m_queue->post([this] {
        m_isDown = true;
        QCoreApplication::exit();
    });
}

void StartupSequence::terminatePass(componentId selector)
{
    m_startup->setComponentSelector(selector);
    m_startup->modulesTerminate();
}

// On the GUI thread

void StartupSequence::createGuiObject()
{
    if (m_startup == nullptr) {
        leaveEventLoop();
        return;
    }
    m_gui = std::make_unique<WatchedMainGui>(
        m_startup.get(), [this](const std::function<void()> &stage) { runGuiStage(stage); });
    m_gui->setInitContextThread(&m_initThread);
    if (!m_settings.alertsOnGui)
        std::atomic_ref(VQMMainGui::receiver).store(nullptr);
    m_initThread.post([this] { bringUp(); });
}

void StartupSequence::afterModules()
{
    if (!mayGoOn() || hasReachedUntil()) {
        leaveEventLoop();
        return;
    }
    m_phase = Phase::GuiStageDue;
    QCoreApplication::postEvent(m_gui.get(), new QEvent(static_cast<QEvent::Type>(eStartGui)));
}

// Anybody can post the event, at any time and more than once.
void StartupSequence::runGuiStage(const std::function<void()> &stage)
{
    if (m_phase != Phase::GuiStageDue && m_phase != Phase::Running) {
        report("the event that starts the Gui stage comes at the wrong time, ignored");
        return;
    }
    m_phase = Phase::GuiStage;
    if (mayGoOn())
        guarded("the Gui stage", [&] {
            stage();
            m_startup->guiStageOver();
        });
    if (!mayGoOn()) {
        leaveEventLoop();
        return;
    }
    m_phase = Phase::Running;
    if (!std::exchange(m_isStartupOver, true))
        m_settings.startupOver(true);
}

void StartupSequence::leaveEventLoop()
{
    m_phase = Phase::Shutdown;
    QCoreApplication::exit();
}

void StartupSequence::beginShutdown()
{
    if (!std::exchange(m_isStartupOver, true))
        m_settings.startupOver(false);
    m_settings.shuttingDown();
    if (m_settings.until && !hasReachedUntil()) {
        report("start-up ended without the stage given with --until");
        m_status->note(ExitCode::StageNotReached);
    }
    if (m_startup != nullptr)
        m_initThread.post([this] { takeDown(); });
    else
        m_isDown = true;
}

// On the thread whose turn it is

void StartupSequence::guarded(const char *step, const std::function<void()> &work)
{
    clearExceptionLocation();
    TraceSpan span("phase", step);
    try {
        work();
    } catch (...) {
        fail(step, std::current_exception());
        span.setThrown(std::current_exception());
    }
}

void StartupSequence::fail(const char *step, const std::exception_ptr &thrown)
{
    std::string module = m_startup != nullptr ? m_startup->takeThrowingModule() : std::string();
    if (module.empty())
        module = QString(VQMMainStartupImplementation::exceptionLocation).trimmed().toStdString();
    report((module.empty() ? QString(step) : "module " + QString::fromStdString(module)) +
           " threw: " + exceptionText(thrown));
    m_status->note(ExitCode::ModuleFailed);
    m_failed = true;
}

bool StartupSequence::mayGoOn() const
{
    return !m_failed && !VQMIntegrationStartup::getAbortFlag();
}

bool StartupSequence::hasReachedUntil() const
{
    return m_settings.until && m_startup != nullptr && m_startup->hasAnnounced(*m_settings.until);
}

} // namespace Orvia
