#pragma once

#include "Startup/VQMIntegrationStartup.h"

#include <atomic>
#include <cstdint>

namespace Orvia {

class ExitStatus;

/// The startup object with an eye on what its operations come to: the stages announced, and the passes that
/// end with a status. It is the last to know of the modules: it deletes their records.
class WatchedStartup : public VQMIntegrationStartup
{
public:
    /// `status` is not owned.
    WatchedStartup(int id, ExitStatus *status);
    /// After freeResources().
    ~WatchedStartup() override;

    using VQMIntegrationStartup::initializeModules;
    int initializeModules(const QStringList &names, bool exclude) override;
    int initializePlugIns(int parts) override;
    void stageInfo(ESuStage stage, int parts) override;

    /// Any thread.
    bool hasAnnounced(ESuStage stage) const;

private:
    int noteStatus(const QString &what, int status);

    ExitStatus *m_status;
    std::atomic<std::uint32_t> m_announced = 0; ///< a bit a stage
};

} // namespace Orvia
