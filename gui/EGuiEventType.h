#pragma once

namespace Orvia {

/// The custom Qt events of start-up.
enum EGuiEventType : int
{
    eShowWindow = 1000,     ///< to a window that shows itself later
    eStartGui = 1001,       ///< to VQMMainGui::receiver: runs the Gui stage
    eQuit = 1002,           ///< to VQMMainGui::receiver: quits the application
    eAlert = 1003,          ///< to VQMMainGui::receiver: a VQMGuiAlertEventType
    eMessageAndQuit = 1004, ///< to VQMMainGui::receiver: a message box, then quits
};

} // namespace Orvia
