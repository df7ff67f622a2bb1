#include "Startup/VQMIntegrationStartup.h"
#include "gui/MainWidget.h"
#include "gui/VQMMainGui.h"
#include "platform/HwAbstractionLayer.h"
#include "platform/VQMProgressBar.h"
#include "xmlconfig/CXmlParseLanguages.h"
#include "xmlconfig/CXmlParseMenuTree.h"

#include <QWidget>

#include <atomic>

namespace Orvia {

namespace {

void readMenuAndLanguages(const char *fileName)
{
    CXmlParseMenuTree::parseProperties(fileName);
    CXmlParseLanguages::parseProperties(fileName);
}

VQMDllModuleInterface *guiModule()
{
    return static_cast<VQMDllModuleInterface *>(VQMMainStartupImplementation::anchorInterface->guiModule);
}

void startGuiModule()
{
    if (VQMDllModuleInterface *module = guiModule())
        module->startGui(VQMMainStartupImplementation::anchorInterface);
}

/// The Gui module's window takes the place of the one that was shown during start-up.
void handOverMainWidget()
{
    VQMDllModuleInterface *module = guiModule();
    if (module == nullptr)
        return;
    QWidget *next = module->getMainWidget();
    QWidget *previous = mainWidget();
    if (next == previous) // the module's already, and not ours to delete
        return;
    setMainWidget(next);
    delete previous;
}

void removeProgressButton()
{
    if (const int button = std::atomic_ref(VQMMainGui::m_Id).load(); button >= 0)
        VQMProgressBar::removeButton(button, false);
}

/// Tells the first unit of the instruments that want to know that start-up is over.
void tellHardware(VQMHwRepository *repository)
{
    if (repository == nullptr ||
        (repository->code() != 64 && repository->code() != 1 && repository->code() != 256))
        return;
    if (VQMHwUnit *unit = repository->unit(0))
        unit->setReady(1);
}

} // namespace

void VQMMainGui::runGuiStage()
{
    readMenuAndLanguages(m_startup->getProgArgument());
    m_startup->setComponentSelector(componentGuiOnly);
    m_startup->initializeModules();
    m_startup->initializePlugIns(VQMScpiPart | VQMGuiPart);
    m_startup->initializeSwpRemote(SwpPlugInsInitialized, nullptr);
    startGuiModule();
    m_startup->stageInfo(SuCompleteFinished, -1);
    handOverMainWidget();
    displayReleaseNotes();
    removeProgressButton();
    m_startup->freeProgressBar();
    tellHardware(HwAbstractionLayer::m_repository);
}

} // namespace Orvia
