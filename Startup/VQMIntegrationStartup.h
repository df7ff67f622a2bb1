#pragma once

#include "Startup/VQMMainStartupImplementation.h"

#include <cstdint>

namespace Orvia {

class IcppAnnouncementWrapper;

/// Which base modules a pass covers.
enum componentId : std::int32_t
{
    componentNone = 0,
    componentAllButGui = 1, ///< every base module but "GuiDll"
    componentGuiOnly = 2,   ///< "GuiDll" alone
};

/// The startup object that the launcher creates: passes over the base modules, the memory test, and the
/// process-wide flags.
class VQM_EXPORT VQMIntegrationStartup : public VQMMainStartupImplementation
{
public:
    explicit VQMIntegrationStartup(int id);
    ~VQMIntegrationStartup() override;

    using VQMMainStartupImplementation::initializeModules;
    using VQMMainStartupImplementation::modulesTerminate;

    /// Any other value behaves as componentNone.
    void setComponentSelector(componentId selector);
    /// Memory test, then the pass selected; its status, 0 when no pass runs. The Gui pass runs only when the
    /// GUI is enabled.
    int initializeModules();
    /// Takes down what the pass selected covers.
    void modulesTerminate() override;
    /// Returns only when "StartupProcess"/"RequiredMemoryMB" MiB can be had; else says so and exits with 1.
    void testForAvailableMemory();

    /// Not owned. With an observer the error manager is not asked to destroy announcements.
    void registerAnnouncementObersever(IcppAnnouncementWrapper *observer);
    void unregisterAnnouncementObersever();
    void destroyAnnouncement(int id) override;
    void destroyAllAnnouncements() override;

    // Process-wide values. Any thread.

    /// Counts the launchers in the output of "ps" whose line contains `name`; sets the prevent flag when
    /// there is more than one. Waits for "ps" to end.
    static void setPreventFlag(QString name);
    static bool getPreventFlag();
    /// Makes discovery stop before the next module file.
    static void setAbortFlag(bool abort);
    static bool getAbortFlag();
    /// Advances the counter by one.
    static void setStartupStage();
    static int getStartupStage();

    static bool sm_preventFlag;
    static bool sm_abortFlag;
    static int sm_startupStage;

private:
    [[maybe_unused]] std::int32_t m_reserved[2] = {0, 0};
    componentId m_componentSelector = componentNone;
    IcppAnnouncementWrapper *m_announcementObserver = nullptr;
};

} // namespace Orvia
