#include "launcher/MessageBoxes.h"

#include "launcher/GuiThreadQueue.h"
#include "platform/Debug.h"

#include <QApplication>
#include <QMessageBox>

namespace Orvia {

MessageBoxes::MessageBoxes(GuiThreadQueue *queue) : m_queue(queue)
{
    Debug::installMessageBoxPresenter(
        [this](const QString &caption, const QString &text) { present(caption, text); });
}

MessageBoxes::~MessageBoxes()
{
    Debug::installMessageBoxPresenter({});
    release();
}

void MessageBoxes::release()
{
    {
        const std::lock_guard lock(m_mutex);
        m_released = true;
    }
    m_closed.notify_all();
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (auto *dialog = qobject_cast<QDialog *>(window))
            dialog->reject();
    }
}

void MessageBoxes::present(const QString &caption, const QString &text)
{
    if (m_queue->isGuiThread()) {
        if (!isReleased())
            QMessageBox(QMessageBox::Critical, caption, text, QMessageBox::Ok).exec();
        return;
    }
    const auto closed = std::make_shared<bool>(false);
    m_queue->post([this, caption, text, closed] { show(caption, text, closed); });
    std::unique_lock lock(m_mutex);
    m_closed.wait(lock, [this, &closed] { return *closed || m_released; });
}

// Without a nested event loop: boxes of several threads can be closed in any order.
void MessageBoxes::show(const QString &caption, const QString &text, const std::shared_ptr<bool> &closed)
{
    if (isReleased())
        return;
    auto *box = new QMessageBox(QMessageBox::Critical, caption, text, QMessageBox::Ok);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setModal(true);
    QObject::connect(box, &QDialog::finished, [this, closed] {
        const std::lock_guard lock(m_mutex);
        *closed = true;
        m_closed.notify_all();
    });
    box->show();
}

bool MessageBoxes::isReleased()
{
    const std::lock_guard lock(m_mutex);
    return m_released;
}

} // namespace Orvia
