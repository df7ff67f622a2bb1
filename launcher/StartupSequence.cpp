#include "launcher/StartupSequence.h"

#include "gui/EGuiEventType.h"
#include "launcher/ExitCodes.h"
#include "launcher/ExitGuard.h"
#include "launcher/GuiThreadQueue.h"
#include "launcher/Report.h"

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
    QCoreApplication::exec();
    while (!m_isDown) { // somebody else has quit the application
        requestShutdown();
        QCoreApplication::exec();
    }
    m_gui.reset(); // here, where no event of its own can be under way in an outer event loop
    m_initThread.stop();
}

void StartupSequence::requestShutdown()
{
    VQMIntegrationStartup::setAbortFlag(true);
    m_settings.shuttingDown();
    // Later: it may be code of a module that asks, and it must have returned when its library is closed.
    if (std::exchange(m_isIdle, false))
        m_queue->post([this] { beginShutdown(); });
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
        m_startup = std::make_unique<WatchedStartup>(defaultId, m_status);
        m_startup->setProgArgument(m_settings.argc, m_settings.argv);
        m_startup->setTargetId(m_settings.family);
    });
    m_queue->post([this] { createGuiObject(); });
}

void StartupSequence::bringUp()
{
    if (mayGoOn())
        guarded("module discovery", [this] { discover(); });
    if (mayGoOn()) {
        guarded("initialization", [this] {
            const ExitGuard guard; // for the memory test
            m_startup->setComponentSelector(componentAllButGui);
            m_startup->initializeModules();
        });
    }
    clearExceptionLocation();
    m_queue->post([this] { afterModules(); });
}

void StartupSequence::discover()
{
    const int status = m_startup->findModules(nullptr);
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
    m_queue->post([this] { leave(); });
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
        leave();
        return;
    }
    m_gui = std::make_unique<WatchedMainGui>(
        m_startup.get(), [this](const std::exception_ptr &thrown) { afterGuiStage(thrown); });
    m_gui->setInitContextThread(&m_initThread);
    if (!m_settings.alertsOnGui)
        std::atomic_ref(VQMMainGui::receiver).store(nullptr);
    m_initThread.post([this] { bringUp(); });
}

void StartupSequence::afterModules()
{
    if (mayGoOn() && !hasReachedUntil())
        QCoreApplication::postEvent(m_gui.get(), new QEvent(static_cast<QEvent::Type>(eStartGui)));
    else
        beginShutdown();
}

void StartupSequence::afterGuiStage(const std::exception_ptr &thrown)
{
    if (thrown)
        fail("the Gui stage", thrown);
    m_settings.startupOver();
    if (!mayGoOn() || m_settings.until) {
        beginShutdown();
        return;
    }
    report("start-up is over");
    m_isIdle = true;
}

void StartupSequence::beginShutdown()
{
    m_settings.shuttingDown();
    if (m_settings.until && !hasReachedUntil()) {
        report("start-up ended without the stage given with --until");
        m_status->note(ExitCode::StageNotReached);
    }
    m_initThread.post([this] { takeDown(); });
}

void StartupSequence::leave()
{
    m_isDown = true;
    QCoreApplication::exit();
}

// On the thread whose turn it is

void StartupSequence::guarded(const char *step, const std::function<void()> &work)
{
    clearExceptionLocation();
    try {
        work();
    } catch (...) {
        fail(step, std::current_exception());
    }
}

void StartupSequence::fail(const char *step, const std::exception_ptr &thrown)
{
    const QString module = QString::fromLatin1(VQMMainStartupImplementation::exceptionLocation).trimmed();
    report((module.isEmpty() ? QString(step) : "module " + module) + " threw: " + exceptionText(thrown));
    m_status->note(ExitCode::ModuleFailed);
    m_failed = true;
}

bool StartupSequence::mayGoOn() const
{
    return !m_failed && !VQMIntegrationStartup::getAbortFlag();
}

bool StartupSequence::hasReachedUntil() const
{
    return m_settings.until && m_startup->hasAnnounced(*m_settings.until);
}

} // namespace Orvia
