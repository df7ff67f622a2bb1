#include "Startup/VQMIntegrationStartup.h"

#include "Startup/ComponentErrors.h"
#include "Startup/IcppAnnouncementWrapper.h"
#include "Startup/ModuleRules.h"
#include "platform/Debug.h"
#include "platform/VQMProperties.h"
#include "platform/VQMUtility.h"

#include <cstdlib>

namespace Orvia {

namespace {

const QStringList &guiModuleOnly()
{
    static const QStringList names{guiModuleName};
    return names;
}

} // namespace

VQMIntegrationStartup::VQMIntegrationStartup(int id) : VQMMainStartupImplementation(id)
{
    registerVQMComponentsErrors();
}

VQMIntegrationStartup::~VQMIntegrationStartup()
{
    m_announcementObserver = nullptr;
}

void VQMIntegrationStartup::setComponentSelector(componentId selector)
{
    m_componentSelector = selector;
}

int VQMIntegrationStartup::initializeModules()
{
    testForAvailableMemory();
    if (m_componentSelector == componentAllButGui)
        return initializeModules(guiModuleOnly(), true);
    if (m_componentSelector == componentGuiOnly && VQMUtility::isGuiEnabled())
        return initializeModules(guiModuleOnly(), false);
    return 0;
}

void VQMIntegrationStartup::modulesTerminate()
{
    if (m_componentSelector == componentAllButGui)
        modulesTerminate(guiModuleOnly(), true);
    else if (m_componentSelector == componentGuiOnly)
        modulesTerminate(guiModuleOnly(), false);
}

void VQMIntegrationStartup::testForAvailableMemory()
{
    const int available = VQMUtility::determineAvailableVirtualMemoryMb();
    const int required = VQMProperties::getIntegerProperty("StartupProcess", "RequiredMemoryMB", 0, 0);
    if (available >= required)
        return;
    VQMProperties::setIntegerProperty("DebugServer", "enableMessageBoxes", 1, 1);
    Debug::debugMessageBox("Startup",
                           "<h3 align=\"center\">Not enough memory to start application!</h3>"
                           "        <h3>Please free up memory or increase the size of the system swap "
                           "file!</h3><ul>",
                           true, 3, 17, 0, 0);
    VQMProperties::setIntegerProperty("DebugServer", "enableMessageBoxes", 0, 1);
    std::exit(1);
}

void VQMIntegrationStartup::registerAnnouncementObersever(IcppAnnouncementWrapper *observer)
{
    m_announcementObserver = observer;
}

void VQMIntegrationStartup::unregisterAnnouncementObersever()
{
    m_announcementObserver = nullptr;
}

void VQMIntegrationStartup::destroyAnnouncement(int id)
{
    if (m_announcementObserver != nullptr)
        m_announcementObserver->destroyAnnouncement(id);
    else
        VQMMainStartupImplementation::destroyAnnouncement(id);
}

void VQMIntegrationStartup::destroyAllAnnouncements()
{
    if (m_announcementObserver != nullptr)
        m_announcementObserver->destroyAllAnnouncements();
    else
        VQMMainStartupImplementation::destroyAllAnnouncements();
}

} // namespace Orvia
