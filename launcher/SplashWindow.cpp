#include "launcher/SplashWindow.h"

#include "launcher/GuiThreadQueue.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace Orvia {

namespace {

constexpr int windowWidth = 480;
constexpr int margin = 24;

constexpr const char *look = R"(
    #splash { background: #f4f6f8; }
    #header { background: #16324f; }
    #product { color: white; font-size: 22px; font-weight: bold; }
    #status { color: #a9c4de; font-size: 13px; }
    #barTitle { color: #33475b; font-size: 12px; }
    QProgressBar { background: #d5dde5; border: none; border-radius: 4px; min-height: 8px; max-height: 8px; }
    QProgressBar::chunk { background: #2f80c3; border-radius: 4px; }
)";

QLabel *newLabel(const QString &text, const char *name)
{
    auto *label = new QLabel(text);
    label->setObjectName(name);
    return label;
}

} // namespace

SplashWindow::SplashWindow(const QString &productName, std::function<void()> closeRequested)
    : m_closeRequested(std::move(closeRequested)), m_status(newLabel(QString(), "status")),
      m_barRows(new QVBoxLayout), m_buttonRow(new QHBoxLayout)
{
    setObjectName("splash");
    setWindowTitle(productName);
    setStyleSheet(look);
    setFixedWidth(windowWidth);
    setAttribute(Qt::WA_StyledBackground);

    auto *header = new QWidget;
    header->setObjectName("header");
    header->setAttribute(Qt::WA_StyledBackground);
    auto *headerRows = new QVBoxLayout(header);
    headerRows->setContentsMargins(margin, margin, margin, margin);
    headerRows->addWidget(newLabel(productName, "product"));
    headerRows->addWidget(m_status);

    m_barRows->setContentsMargins(margin, 0, margin, 0);
    m_barRows->setSpacing(16);
    m_buttonRow->setContentsMargins(margin, 0, margin, margin);
    m_buttonRow->addStretch();

    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(margin);
    rows->addWidget(header);
    rows->addLayout(m_barRows);
    rows->addStretch();
    rows->addLayout(m_buttonRow);
    setMinimumHeight(windowWidth * 5 / 8);
    adjustSize();
    move(screen()->availableGeometry().center() - rect().center());
}

void SplashWindow::setStatus(const QString &text)
{
    m_status->setText(text);
}

void SplashWindow::addBar(int id, const QString &title)
{
    auto *row = new QWidget;
    auto *lines = new QVBoxLayout(row);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(6);
    auto *bar = new QProgressBar;
    bar->setTextVisible(false);
    lines->addWidget(newLabel(title, "barTitle"));
    lines->addWidget(bar);
    m_barRows->addWidget(row);
    m_bars[id] = {row, bar};
}

void SplashWindow::updateBar(int id, int percent)
{
    if (const auto found = m_bars.find(id); found != m_bars.end())
        found->second.bar->setValue(std::clamp(percent, 0, 100));
}

void SplashWindow::addButton(int id, const QString &title, const std::function<void()> &pressed)
{
    auto *button = new QPushButton(title);
    connect(button, &QPushButton::clicked, this, [pressed] { pressed(); });
    m_buttonRow->addWidget(button);
    m_buttons[id] = button;
}

void SplashWindow::remove(int id)
{
    if (const auto bar = m_bars.extract(id))
        bar.mapped().row->deleteLater();
    if (const auto button = m_buttons.extract(id)) {
        button.mapped()->hide();
        button.mapped()->deleteLater(); // it may be removed by what it does when pressed
    }
}

void SplashWindow::closeEvent(QCloseEvent *event)
{
    event->ignore();
    m_closeRequested();
}

SplashProgress::SplashProgress(GuiThreadQueue *queue, SplashWindow *window) : m_queue(queue), m_window(window)
{
}

void SplashProgress::barCreated(int id, const QString &title)
{
    onWindow([id, title](SplashWindow *window) { window->addBar(id, title); });
}

void SplashProgress::barUpdated(int id, int percent)
{
    onWindow([id, percent](SplashWindow *window) { window->updateBar(id, percent); });
}

void SplashProgress::barRemoved(int id)
{
    onWindow([id](SplashWindow *window) { window->remove(id); });
}

void SplashProgress::buttonCreated(int id, const QString &title, const std::function<void()> &pressed)
{
    onWindow([id, title, pressed](SplashWindow *window) { window->addButton(id, title, pressed); });
}

void SplashProgress::buttonRemoved(int id)
{
    onWindow([id](SplashWindow *window) { window->remove(id); });
}

void SplashProgress::onWindow(std::function<void(SplashWindow *)> work)
{
    m_queue->post([this, work = std::move(work)] {
        if (m_window != nullptr)
            work(m_window);
    });
}

} // namespace Orvia
