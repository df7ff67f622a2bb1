#include "Startup/VQMIntegrationStartup.h"
#include "platform/VQMProperties.h"

#include <QCoreApplication>

using namespace Orvia;

/// The last to know of the modules deletes their records.
class Startup final : public VQMIntegrationStartup
{
public:
    Startup() : VQMIntegrationStartup(-1) {}
    ~Startup() override
    {
        ModuleIterator walk(moduleTable);
        for (VQMLoadedModuleInformation *record = walk.toFirst(); record != nullptr; record = walk.next())
            delete record;
    }
};

/// Brings the base modules of a configuration up and takes them down: -l CONFIGURATION
int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    VQMProperties::setStringProperty("DebugServer", "level.1", "3", 0);
    static VQMAnchorInterface anchor{}; // like the pointer to it
    VQMMainStartupImplementation::anchorInterface = &anchor;
    Startup startup;
    startup.setProgArgument(argc, argv);
    startup.setTargetId(0x2);
    int status = startup.findModules(nullptr);
    startup.setComponentSelector(componentAllButGui);
    if (status == 0)
        status = startup.initializeModules();
    startup.modulesTerminate();
    startup.freeProgressBar();
    startup.freeResources();
    return status;
}
