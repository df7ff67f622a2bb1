#pragma once

#include "platform/Export.h"

#include <QObject>
#include <QString>

namespace Orvia {

class VQMIntegrationStartup;
class VQMThread;

/// The object through which start-up talks to the GUI thread: shows alerts, runs the Gui stage, quits. Lives
/// on the GUI thread. Takes the events of EGuiEventType and swallows every other event sent to it.
class VQM_EXPORT VQMMainGui : public QObject
{
public:
    /// Becomes the receiver of alerts. `startup` is not owned.
    explicit VQMMainGui(VQMIntegrationStartup *startup);
    /// Alerts that have not been shown yet go to the error-manager hook.
    ~VQMMainGui() override;

    /// Not owned.
    void setInitContextThread(VQMThread *thread);
    /// Raises an alert and returns at once. Any thread. Without a receiver the alert goes to the
    /// error-manager hook.
    static void showAlert(const QString &caption, const QString &text);
    bool eventFilter(QObject *watched, QEvent *event) override;
    /// Shows the file named by "StartupProcess"/"ReleaseNotes" in a window of its own, if it can be read.
    void displayReleaseNotes() const;

    /// Where alerts go; null for the error-manager hook. Cleared when the object it points to is destroyed.
    static VQMMainGui *receiver;
    /// The button on the progress display that the Gui stage removes; negative for none.
    static int m_Id;

private:
    void runGuiStage();

    VQMIntegrationStartup *m_startup;
    VQMThread *m_initContextThread = nullptr;
};

} // namespace Orvia
