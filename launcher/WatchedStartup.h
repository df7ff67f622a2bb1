#pragma once

#include "Startup/VQMIntegrationStartup.h"
#include "launcher/ModuleWatch.h"
#include "platform/TraceSpan.h"

#include <QStringList>

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace Orvia {

class ExitStatus;

/// The startup object with an eye on what its operations come to: the stages announced, and every module's
/// status, of which the passes themselves return the last one only. Files can be left out of the load list.
/// It is the last to know of the modules: it deletes their records.
class WatchedStartup : public VQMIntegrationStartup, private CallRecord
{
public:
    /// `skipped`: names of files to leave out, with or without folder and suffix. `stageAnnounced` is called
    /// when all have been told, on the thread that announces. `status` is not owned.
    WatchedStartup(int id, const QStringList &skipped, std::function<void(ESuStage)> stageAnnounced,
                   ExitStatus *status);
    /// After freeResources().
    ~WatchedStartup() override;

    using VQMIntegrationStartup::initializeModules;
    void addLoadListFile(const QString &path) override;
    int initializeModules(const QStringList &names, bool exclude) override;
    int initializePlugIns(int parts) override;
    int initializeSwpRemote(ESwpStartupStep step,
                            void (*callback)(ESwpStartupStep, VQMMainThread *)) override;
    void stageInfo(ESuStage stage, int parts) override;
    /// To be called on the way out of the Gui stage.
    void guiStageOver() { m_startingGui.reset(); }

    /// Any thread.
    bool hasAnnounced(ESuStage stage) const;
    /// The names to leave out that no file of the load list bears.
    const QStringList &unusedSkips() const { return m_unusedSkips; }
    /// The module that threw since the last call, empty for none. To be called where the exception is caught.
    std::string takeThrowingModule();

private:
    void makeWatches();
    bool isSkipped(const QString &path);
    class Watching;

    void initialized(const std::string &module, int status) override;
    void threw(const std::string &module) override;

    const QStringList m_skipped;
    QStringList m_unusedSkips;
    const std::function<void(ESuStage)> m_stageAnnounced;
    ExitStatus *m_status;
    std::vector<std::pair<VQMLoadedModuleInformation *, ModuleWatch>> m_watches; ///< made when first needed
    bool m_isWatching = false;
    std::string m_throwing;
    /// Where the Gui stage calls the Gui module itself: from the start-up step callback to "complete
    /// finished", and behind that, when it asks for the main widget.
    std::optional<TraceSpan> m_startingGui;
    std::atomic<std::uint32_t> m_announced = 0; ///< a bit a stage
};

} // namespace Orvia
