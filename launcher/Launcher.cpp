#include "launcher/Launcher.h"

#include "launcher/CheckCommand.h"
#include "launcher/GuiThreadQueue.h"
#include "launcher/InstrumentSettings.h"
#include "launcher/LauncherApplication.h"
#include "launcher/MessageBoxes.h"
#include "launcher/ProgressDisplay.h"
#include "launcher/Report.h"
#include "launcher/Screenshot.h"
#include "launcher/ServiceNotifier.h"
#include "launcher/StartupSequence.h"
#include "platform/HwAbstractionLayer.h"
#include "platform/TraceSpan.h"
#include "platform/VQMProperties.h"
#include "platform/VQMUtility.h"

#include <QDir>

#include <optional>
#include <utility>

namespace Orvia {

namespace {

/// Takes the alerts for which there is no GUI.
class AlertReporter : public VQMErrorManagerHook
{
public:
    AlertReporter() { VQMUtility::setErrorManagerHook(this); }
    ~AlertReporter() override { VQMUtility::setErrorManagerHook(nullptr); }
    void alert(const QString &caption, const QString &text) override
    {
        report(caption + ": " + text.simplified());
    }
};

} // namespace

Launcher::Launcher(const CommandLine &commandLine, int argc, char **argv)
    : m_commandLine(commandLine), m_argc(argc), m_argv(argv)
{
}

int Launcher::run()
{
    if (loadProperties() && chooseFamily() && lockConfiguration() && startTrace()) {
        if (isOnlyInstance()) {
            leaveBreadcrumbs();
            runInstrument();
            m_observer.pauseBreadcrumbs();
            report(QString("shut down in order, exit code %1").arg(m_status.code()));
        }
        VQMUtility::traceMessage(("exit: " + std::to_string(m_status.code())).c_str());
        VQMUtility::stopTrace();
    }
    return m_status.code();
}

bool Launcher::loadProperties()
{
    const QString error =
        Orvia::loadProperties(m_commandLine, QString::fromLocal8Bit(m_commandLine.loadList));
    if (!error.isEmpty()) {
        report(error);
        m_status.note(ExitCode::Configuration);
        return false;
    }
    if (m_commandLine.headless)
        VQMProperties::setStringProperty("StartupProcess", "Gui", "0", 0);
    return true;
}

bool Launcher::chooseFamily()
{
    QString error;
    bool isMissing = false;
    const std::optional<HwESigGenFamily> family = instrumentFamily(m_commandLine, &error, &isMissing);
    if (!family) {
        report(error);
        m_status.note(isMissing ? ExitCode::Usage : ExitCode::Configuration);
        return false;
    }
    m_family = *family;
    return true;
}

bool Launcher::lockConfiguration()
{
    if (m_instance.lock(m_commandLine.loadList))
        return true;
    m_status.note(ExitCode::AnotherInstance);
    return false;
}

bool Launcher::startTrace()
{
    QString error;
    if (m_commandLine.trace.isEmpty() || VQMUtility::startTrace(m_commandLine.trace, &error))
        return true;
    report("--trace: " + error);
    m_status.note(ExitCode::Usage);
    return false;
}

bool Launcher::isOnlyInstance()
{
    if (m_instance.isAlone(m_commandLine.loadList))
        return true;
    m_status.note(ExitCode::AnotherInstance);
    return false;
}

void Launcher::leaveBreadcrumbs()
{
    const QString name =
        VQMProperties::getStringProperty("StartupProcess", "Breadcrumb", QString(), 0, nullptr);
    if (!name.isEmpty())
        m_observer.leaveBreadcrumbs(QDir(VQMProperties::directory()).filePath(name));
}

void Launcher::runInstrument()
{
    std::optional<TraceSpan> preparing(std::in_place, "phase", "the application and its windows");
    const bool hasGui = VQMUtility::isGuiEnabled();
    HwAbstractionLayer::createHostRepository();
    LauncherApplication::choosePlatform(m_commandLine.offscreen || !hasGui);
    int qtArgc = 1; // none of ours are Qt's
    char *qtArgv[] = {m_argv[0], nullptr};
    LauncherApplication application(qtArgc, qtArgv);

    const AlertReporter alertReporter;
    GuiThreadQueue queue;
    std::optional<MessageBoxes> messageBoxes;
    if (hasGui && LauncherApplication::isOnDisplay()) // a box that nobody sees is not waited for
        messageBoxes.emplace(&queue);
    ServiceNotifier serviceManager;
    std::optional<ProgressDisplay> display;
    std::optional<Screenshot> screenshot;

    StartupSequence sequence({.argc = m_argc,
                              .argv = m_argv,
                              .family = m_family,
                              .skipped = m_commandLine.skipped,
                              .until = m_commandLine.until,
                              .alertsOnGui = hasGui,
                              .stageAnnounced =
                                  [&](ESuStage stage) {
                                      if (stage == SuCompleteFinished)
                                          serviceManager.ready();
                                  },
                              .startupOver =
                                  [&](bool runs) {
                                      summarize();
                                      if (!runs)
                                          return;
                                      m_observer.pauseBreadcrumbs();
                                      display->startupOver();
                                      if (!m_commandLine.until)
                                          report("start-up is over");
                                      if (screenshot)
                                          screenshot->take();
                                      else if (m_commandLine.until)
                                          sequence.requestShutdown();
                                  },
                              .shuttingDown =
                                  [&] {
                                      m_observer.resumeBreadcrumbs();
                                      serviceManager.stopping();
                                      display->shuttingDown();
                                      if (screenshot)
                                          screenshot->giveUp();
                                      if (messageBoxes)
                                          messageBoxes->release();
                                  }},
                             &queue, &m_status);
    display.emplace(hasGui, &queue, [&sequence] { sequence.requestShutdown(); });
    if (!m_commandLine.screenshot.isEmpty())
        screenshot.emplace(m_commandLine.screenshot, [&](const QString &error) {
            noteScreenshot(error);
            if (m_commandLine.until)
                sequence.requestShutdown();
        });
    application.setExceptionHandler([&sequence] { sequence.eventThrew(); });
    const auto notifier = m_signals.notify([&sequence] { sequence.requestShutdown(); });
    preparing.reset();
    sequence.run();
}

void Launcher::summarize()
{
    const QStringList lines = m_observer.summary();
    for (const QString &line : lines)
        report(line);
    if (m_commandLine.strict && !m_observer.wentWell())
        m_status.note(ExitCode::Incomplete);
    m_observer.startupOver();
}

void Launcher::noteScreenshot(const QString &error)
{
    report(error.isEmpty() ? "screenshot saved: " + m_commandLine.screenshot : "--screenshot: " + error);
    if (!error.isEmpty())
        m_status.note(ExitCode::NoScreenshot);
}

} // namespace Orvia

extern "C" int vqmLauncherMain(int argc, char **argv)
{
    Orvia::ExitCode exitCode = Orvia::ExitCode::AllWell;
    const std::optional<Orvia::CommandLine> commandLine = Orvia::parseCommandLine(argc, argv, &exitCode);
    if (!commandLine)
        return static_cast<int>(exitCode);
    if (!commandLine->check.isEmpty())
        return Orvia::runCheck(*commandLine);
    return Orvia::Launcher(*commandLine, argc, argv).run();
}
