#include "Startup/VQMMainStartupImplementation.h"

#include "Startup/StartupErrors.h"
#include "platform/ErrorManager.h"
#include "platform/VQMProgressBar.h"
#include "platform/VQMProperties.h"

#include <algorithm>
#include <limits>

namespace Orvia {

namespace {

VQMModuleVersion startupInterfaceVersion(0, 0, 5);

} // namespace

bool VQMMainStartupImplementation::platform = false;
VQMAnchorInterface *VQMMainStartupImplementation::anchorInterface = nullptr;
char VQMMainStartupImplementation::exceptionLocation[20] = "                   ";

VQMMainStartupImplementation::VQMMainStartupImplementation(int id)
    : moduleTable(new ModuleTable(false, true)),
      showProgress(VQMProperties::getStringProperty("StartupProcess", "ProgressBar", "0", 0, nullptr) == "1"),
      moduleName("MainStartup"), moduleId(id == -1 ? 2 : qMax(id, 0))
{
    registerStartupErrors();
}

VQMMainStartupImplementation::~VQMMainStartupImplementation()
{
    delete moduleTable;
    moduleName = nullptr;
}

VQMModuleVersion *VQMMainStartupImplementation::getInterfaceVersion()
{
    return &startupInterfaceVersion;
}

const char *VQMMainStartupImplementation::getModuleName()
{
    return moduleName;
}

int VQMMainStartupImplementation::getModuleId()
{
    return moduleId;
}

HwESigGenFamily VQMMainStartupImplementation::getTargetId()
{
    return targetId;
}

void VQMMainStartupImplementation::destroyAnnouncement(int id)
{
    ErrorManager()->destroyAnnouncement(static_cast<unsigned int>(id));
}

void VQMMainStartupImplementation::destroyAllAnnouncements()
{
    ErrorManager()->destroyAllAnnouncements();
}

void VQMMainStartupImplementation::setId(int id)
{
    moduleId = id;
}

void VQMMainStartupImplementation::setTargetId(HwESigGenFamily family)
{
    targetId = family;
}

void VQMMainStartupImplementation::freeProgressBar()
{
    if (!showProgress)
        return;
    for (int *barId : {&loadProgressBarId, &baseProgressBarId, &plugInProgressBarId}) {
        if (*barId != -1)
            VQMProgressBar::removeProgressBar(*barId, false);
        *barId = -1;
    }
}

void VQMMainStartupImplementation::setProgArgument(int argc, char **argv)
{
    for (int i = 1; i + 1 < argc; ++i) {
        const char *option = argv[i];
        if (option[0] == '-' && (option[1] == 'l' || option[1] == 'L'))
            loadListName = argv[++i];
    }
}

const char *const &VQMMainStartupImplementation::getProgArgument() const
{
    return loadListName;
}

void VQMMainStartupImplementation::addLoadListFile(const QString &path)
{
    loadListFiles.append(QFileInfo(path));
}

bool VQMMainStartupImplementation::isExcluded(const char *name, const QStringList &list, bool inList) const
{
    return list.contains(QLatin1String(name)) == inList;
}

int VQMMainStartupImplementation::wholePercent(double percent)
{
    return static_cast<int>(std::min<double>(percent, std::numeric_limits<int>::max()));
}

void VQMMainStartupImplementation::showProgressBar(int *barId, const char *title, int percent)
{
    if (*barId < 0)
        *barId = VQMProgressBar::createProgressBar(title, false);
    VQMProgressBar::updateProgressBar(*barId, percent, false);
}

} // namespace Orvia
