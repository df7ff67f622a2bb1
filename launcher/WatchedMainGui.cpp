#include "launcher/WatchedMainGui.h"

#include "gui/EGuiEventType.h"
#include "launcher/ExitGuard.h"

#include <QEvent>

#include <utility>

namespace Orvia {

WatchedMainGui::WatchedMainGui(VQMIntegrationStartup *startup, GuiStageReturned returned)
    : VQMMainGui(startup), m_returned(std::move(returned))
{
}

bool WatchedMainGui::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != static_cast<QEvent::Type>(eStartGui))
        return VQMMainGui::eventFilter(watched, event);
    std::exception_ptr thrown;
    try {
        const ExitGuard guard; // for the memory test
        VQMMainGui::eventFilter(watched, event);
    } catch (...) {
        thrown = std::current_exception();
    }
    m_returned(thrown);
    return true;
}

} // namespace Orvia
