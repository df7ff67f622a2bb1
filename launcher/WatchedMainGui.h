#pragma once

#include "gui/VQMMainGui.h"

#include <functional>

namespace Orvia {

/// The GUI object; leaves it to its owner when and whether the Gui stage runs. GUI thread.
class WatchedMainGui : public VQMMainGui
{
public:
    using GuiStageRunner = std::function<void(const std::function<void()> &stage)>;

    /// `runner` is called for every event that is to start the Gui stage; calling `stage` runs it.
    WatchedMainGui(VQMIntegrationStartup *startup, GuiStageRunner runner);
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    GuiStageRunner m_runner;
};

} // namespace Orvia
