#include "launcher/ProgressDisplay.h"

#include "gui/MainWidget.h"
#include "gui/VQMMainGui.h"
#include "platform/VQMProperties.h"

#include <atomic>

namespace Orvia {

namespace {

QString productName()
{
    const auto property = [](const char *key) {
        return VQMProperties::getStringProperty("Instrument", key, QString(), 0, nullptr);
    };
    const QString name = (property("Manufacturer") + ' ' + property("Model")).trimmed();
    return name.isEmpty() ? QStringLiteral("Instrument") : name;
}

} // namespace

ProgressDisplay::ProgressDisplay(bool hasGui, GuiThreadQueue *queue,
                                 const std::function<void()> &abortRequested)
{
    VQMProgressBar::installProgressHandler(&m_terminal);
    if (!hasGui)
        return;
    m_window = new SplashWindow(productName(), abortRequested);
    m_window->setStatus("Starting up");
    m_splash.emplace(queue, m_window);
    VQMProgressBar::installProgressHandler(&*m_splash);
    std::atomic_ref(VQMMainGui::m_Id).store(VQMProgressBar::createButton("Abort", abortRequested));
    setMainWidget(m_window);
    m_window->show();
}

ProgressDisplay::~ProgressDisplay()
{
    if (m_splash)
        VQMProgressBar::removeProgressHandler(&*m_splash);
    VQMProgressBar::removeProgressHandler(&m_terminal);
    delete m_window;
}

void ProgressDisplay::startupOver()
{
    if (m_window)
        m_window->setStatus("Ready");
}

void ProgressDisplay::shuttingDown()
{
    if (m_window)
        m_window->setStatus("Shutting down");
}

} // namespace Orvia
