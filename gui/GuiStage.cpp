#include "Startup/VQMIntegrationStartup.h"
#include "gui/VQMMainGui.h"

namespace Orvia {

void VQMMainGui::runGuiStage()
{
    m_startup->setComponentSelector(componentGuiOnly);
    m_startup->initializeModules();
}

} // namespace Orvia
