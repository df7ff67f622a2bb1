#include "launcher/WatchedStartup.h"

#include "launcher/ExitCodes.h"
#include "launcher/Report.h"
#include "platform/JoinedText.h"
#include "platform/VQMUtility.h"

#include <QFileInfo>

namespace Orvia {

namespace {

const std::string guiName = "GuiDll"; // as the startup object knows it
const std::string guiLabel = std::to_string(VQMGuiId) + ' ' + guiName;

} // namespace

/// While it lives, the module objects are watched. Where they are already it does nothing.
class WatchedStartup::Watching
{
public:
    explicit Watching(WatchedStartup *startup)
        : m_startup(startup), m_isOutermost(!std::exchange(startup->m_isWatching, true))
    {
        if (!m_isOutermost)
            return;
        if (m_startup->m_watches.empty())
            m_startup->makeWatches();
        for (auto &[record, watch] : m_startup->m_watches)
            if (record->moduleInterface != nullptr)
                record->moduleInterface = &watch;
    }
    ~Watching()
    {
        if (!m_isOutermost)
            return;
        for (auto &[record, watch] : m_startup->m_watches)
            if (record->moduleInterface != nullptr)
                record->moduleInterface = watch.module();
        m_startup->m_isWatching = false;
    }
    Watching(const Watching &) = delete;
    Watching &operator=(const Watching &) = delete;

private:
    WatchedStartup *m_startup;
    bool m_isOutermost;
};

WatchedStartup::WatchedStartup(int id, const QStringList &skipped,
                               std::function<void(ESuStage)> stageAnnounced, ExitStatus *status)
    : VQMIntegrationStartup(id), m_skipped(skipped), m_unusedSkips(skipped),
      m_stageAnnounced(std::move(stageAnnounced)), m_status(status)
{
}

WatchedStartup::~WatchedStartup()
{
    ModuleIterator walk(moduleTable);
    for (VQMLoadedModuleInformation *record = walk.toFirst(); record != nullptr; record = walk.next())
        delete record;
}

void WatchedStartup::addLoadListFile(const QString &path)
{
    const bool skip = isSkipped(path);
    VQMUtility::traceMessage(
        JoinedText(skip ? "skipped: " : "listed: ", path.toLocal8Bit().constData()).c_str());
    if (!skip)
        VQMIntegrationStartup::addLoadListFile(path);
}

void WatchedStartup::makeWatches()
{
    m_watches.reserve(moduleTable->count); // the records will point into it
    ModuleIterator walk(moduleTable);
    for (VQMLoadedModuleInformation *record = walk.toFirst(); record != nullptr; record = walk.next())
        if (record->moduleInterface != nullptr)
            m_watches.emplace_back(record,
                                   ModuleWatch(record->moduleObject(), record->moduleId, record->name, this));
}

bool WatchedStartup::isSkipped(const QString &path)
{
    if (m_skipped.isEmpty())
        return false;
    const QFileInfo file(path);
    for (const QString &name : {path, file.fileName(), file.completeBaseName()}) {
        if (!m_skipped.contains(name))
            continue;
        m_unusedSkips.removeAll(name);
        return true;
    }
    return false;
}

int WatchedStartup::initializeModules(const QStringList &names, bool exclude)
{
    const Watching watching(this);
    return VQMIntegrationStartup::initializeModules(names, exclude);
}

int WatchedStartup::initializePlugIns(int parts)
{
    const Watching watching(this);
    return VQMIntegrationStartup::initializePlugIns(parts);
}

int WatchedStartup::initializeSwpRemote(ESwpStartupStep step,
                                        void (*callback)(ESwpStartupStep, VQMMainThread *))
{
    const int result = VQMIntegrationStartup::initializeSwpRemote(step, callback);
    // The next that the Gui stage does is to start the Gui module, then it announces the last stage.
    if (step != SwpRegisterCallback && anchorInterface->guiModule != nullptr)
        m_startingGui.emplace("start-gui", guiLabel.c_str());
    return result;
}

void WatchedStartup::stageInfo(ESuStage stage, int parts)
{
    m_startingGui.reset();
    setStartupStage();
    m_announced |= 1U << static_cast<unsigned>(stage);
    {
        const Watching watching(this);
        VQMIntegrationStartup::stageInfo(stage, parts);
    }
    m_stageAnnounced(stage);
    if (stage == SuCompleteFinished && anchorInterface->guiModule != nullptr)
        m_startingGui.emplace("start-gui", guiLabel.c_str());
}

bool WatchedStartup::hasAnnounced(ESuStage stage) const
{
    return (m_announced & 1U << static_cast<unsigned>(stage)) != 0;
}

std::string WatchedStartup::takeThrowingModule()
{
    if (m_startingGui) {
        m_startingGui->setThrown(std::current_exception());
        m_startingGui.reset();
        m_throwing = guiName;
    }
    return std::exchange(m_throwing, std::string());
}

void WatchedStartup::initialized(const std::string &module, int status)
{
    if (status == 0)
        return;
    report(QString("initialization of module %1 ended with status %2")
               .arg(QString::fromLatin1(module.c_str()))
               .arg(status));
    m_status->note(ExitCode::ModuleFailed);
}

void WatchedStartup::threw(const std::string &module)
{
    if (m_throwing.empty())
        m_throwing = module;
}

} // namespace Orvia
