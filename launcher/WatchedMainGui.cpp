#include "launcher/WatchedMainGui.h"

#include "gui/EGuiEventType.h"
#include "launcher/ExitGuard.h"

#include <QEvent>

#include <utility>

namespace Orvia {

WatchedMainGui::WatchedMainGui(VQMIntegrationStartup *startup, GuiStageRunner runner)
    : VQMMainGui(startup), m_runner(std::move(runner))
{
}

bool WatchedMainGui::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != static_cast<QEvent::Type>(eStartGui))
        return VQMMainGui::eventFilter(watched, event);
    m_runner([this, watched, event] {
        const ExitGuard guard; // for the memory test
        VQMMainGui::eventFilter(watched, event);
    });
    return true;
}

} // namespace Orvia
