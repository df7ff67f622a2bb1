#pragma once

#include <QApplication>

#include <functional>

namespace Orvia {

/// The application object. Qt's event loops do not let exceptions through, so they end here.
class LauncherApplication : public QApplication
{
public:
    /// Sets Qt's platform in the environment, unless the caller's environment names one: offscreen if wanted
    /// or if there is no display, which is said. Before construction.
    static void choosePlatform(bool offscreen);

    LauncherApplication(int &argc, char **argv);

    /// `handler` runs in the catch block, on the thread whose event loop the exception has reached. To be set
    /// before there are other threads.
    void setExceptionHandler(std::function<void()> handler);
    /// Called by Qt for the events of all threads.
    bool notify(QObject *receiver, QEvent *event) override;

    /// Whether what is shown can be seen and clicked.
    static bool isOnDisplay();

private:
    std::function<void()> m_exceptionHandler;
};

} // namespace Orvia
