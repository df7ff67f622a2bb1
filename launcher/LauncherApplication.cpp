#include "launcher/LauncherApplication.h"

#include "launcher/Report.h"

#include <utility>

namespace Orvia {

namespace {

constexpr const char *platformVariable = "QT_QPA_PLATFORM";

} // namespace

void LauncherApplication::choosePlatform(bool offscreen)
{
    if (offscreen) {
        qputenv(platformVariable, "offscreen");
        return;
    }
    if (qEnvironmentVariableIsSet(platformVariable))
        return;
    // With a list of platforms Qt tries the next one where it would otherwise abort.
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        qputenv(platformVariable, "wayland;xcb;offscreen");
    else if (!qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv(platformVariable, "xcb;offscreen");
    else {
        report("no display, running offscreen");
        qputenv(platformVariable, "offscreen");
    }
}

LauncherApplication::LauncherApplication(int &argc, char **argv) : QApplication(argc, argv)
{
    setApplicationName("mainstartup");
    setQuitOnLastWindowClosed(false); // an alert may be the only window there is
    if (!isOnDisplay() && qgetenv(platformVariable) != "offscreen")
        report("the display cannot be reached, running offscreen");
}

void LauncherApplication::setExceptionHandler(std::function<void()> handler)
{
    m_exceptionHandler = std::move(handler);
}

bool LauncherApplication::notify(QObject *receiver, QEvent *event)
{
    try {
        return QApplication::notify(receiver, event);
    } catch (...) {
        if (m_exceptionHandler)
            m_exceptionHandler();
        return true;
    }
}

bool LauncherApplication::isOnDisplay()
{
    return platformName() != QLatin1String("offscreen");
}

} // namespace Orvia
