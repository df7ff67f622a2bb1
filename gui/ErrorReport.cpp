#include "Startup/VQMMainStartupImplementation.h"
#include "gui/VQMMainGui.h"

namespace Orvia {

int VQMMainStartupImplementation::dumpError(int code, const char *title, const QString &text) const
{
    suDebugMsgOut(0, text, 1, code);
    if (code < 10002 || code > 10004) // these three are for the debug output only
        VQMMainGui::showAlert(QString(title), text);
    return code;
}

} // namespace Orvia
