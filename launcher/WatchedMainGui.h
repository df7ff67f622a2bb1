#pragma once

#include "gui/VQMMainGui.h"

#include <exception>
#include <functional>

namespace Orvia {

/// The GUI object, telling when the Gui stage has run: when the event has been handled, not merely delivered,
/// for the stage may run event loops of its own. GUI thread.
class WatchedMainGui : public VQMMainGui
{
public:
    using GuiStageReturned = std::function<void(const std::exception_ptr &thrown)>;

    /// `returned` gets what the stage threw, or null.
    WatchedMainGui(VQMIntegrationStartup *startup, GuiStageReturned returned);
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    GuiStageReturned m_returned;
};

} // namespace Orvia
