#include "gui/VQMMainGui.h"

#include "gui/EGuiEventType.h"
#include "gui/VQMGuiAlertEventType.h"
#include "platform/VQMUtility.h"

#include <QApplication>
#include <QMessageBox>

#include <atomic>
#include <mutex>

namespace Orvia {

namespace {

void showBox(const QString &caption, const QString &text)
{
    QMessageBox box(QMessageBox::Critical, caption, text, QMessageBox::Ok, nullptr,
                    Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint);
    box.setModal(true);
    box.exec();
}

/// Held while an alert is posted, so that its receiver is not destroyed in between.
constinit std::mutex posting;

void giveToHook(const QString &caption, const QString &text)
{
    if (VQMErrorManagerHook *hook = VQMUtility::getErrorManagerHook())
        hook->alert(caption, text);
}

/// Stands before an object at its end: what alerts it has not shown yet go to the hook.
class Heir : public QObject
{
public:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (const auto *alert = dynamic_cast<VQMGuiAlertEventType *>(event))
            giveToHook(alert->m_caption, alert->m_text);
        return true;
    }
};

} // namespace

// Plain variables, as other parts of the firmware declare them; every access here is atomic.
VQMMainGui *VQMMainGui::receiver = nullptr;
int VQMMainGui::m_Id = -1;

VQMMainGui::VQMMainGui(VQMIntegrationStartup *startup) : m_startup(startup)
{
    installEventFilter(this);
    std::atomic_ref(receiver).store(this);
}

VQMMainGui::~VQMMainGui()
{
    {
        const std::lock_guard lock(posting);
        VQMMainGui *self = this;
        std::atomic_ref(receiver).compare_exchange_strong(self, nullptr);
    }
    Heir heir;
    installEventFilter(&heir);
    QCoreApplication::sendPostedEvents(this, eAlert);
    m_startup = nullptr;
    m_initContextThread = nullptr;
}

void VQMMainGui::setInitContextThread(VQMThread *thread)
{
    m_initContextThread = thread;
}

void VQMMainGui::showAlert(const QString &caption, const QString &text)
{
    {
        const std::lock_guard lock(posting);
        if (VQMMainGui *gui = std::atomic_ref(receiver).load()) {
            QApplication::postEvent(gui, new VQMGuiAlertEventType(caption, text));
            return;
        }
    }
    giveToHook(caption, text);
}

bool VQMMainGui::eventFilter(QObject *, QEvent *event)
{
    switch (static_cast<int>(event->type())) {
    case eStartGui:
        runGuiStage();
        break;
    case eQuit:
        QApplication::quit();
        break;
    case eAlert:
        if (const auto *alert = dynamic_cast<VQMGuiAlertEventType *>(event))
            showBox(alert->m_caption, alert->m_text);
        break;
    case eMessageAndQuit:
        showBox("caption", "message");
        QApplication::quit();
        break;
    default:
        break;
    }
    return true;
}

} // namespace Orvia
