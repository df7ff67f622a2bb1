#include "examples/instrument/GuiDll/ErrorList.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTableWidget>
#include <QTimer>

#include <algorithm>
#include <chrono>

namespace Orvia {

namespace {

enum Column
{
    Number,
    Severity,
    Text,
    Detail,
    ColumnCount,
};

QString severityText(int severity)
{
    switch (severity) {
    case 1:
        return ErrorList::tr("Error");
    case 2:
        return ErrorList::tr("Warning");
    default:
        return ErrorList::tr("Information");
    }
}

bool areSame(const ErrorList::Errors &some, const ErrorList::Errors &others)
{
    return std::equal(some.begin(), some.end(), others.begin(), others.end(),
                      [](const auto &one, const auto &other) { return one.id == other.id; });
}

} // namespace

ErrorList::ErrorList(QWidget *parent, std::function<void(const Errors &)> changed)
    : QDialog(parent), m_changed(std::move(changed)), m_table(new QTableWidget(0, ColumnCount)),
      m_clear(new QPushButton), m_close(new QPushButton)
{
    setObjectName("errorList");
    resize(720, 360);
    m_table->verticalHeader()->hide();
    m_table->setEditTriggers(QTableWidget::NoEditTriggers);
    m_table->setSelectionBehavior(QTableWidget::SelectRows);
    m_table->setTabKeyNavigation(false);
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_clear->setObjectName("clearErrors");
    m_clear->setAutoDefault(false);
    connect(m_clear, &QPushButton::clicked, this, [this] {
        ErrorManager()->destroyAllAnnouncements();
        poll();
    });
    connect(m_close, &QPushButton::clicked, this, &QDialog::reject);

    QVBoxLayout *layout = new QVBoxLayout(this);
    layout->addWidget(m_table);
    QHBoxLayout *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_clear);
    buttons->addWidget(m_close);
    layout->addLayout(buttons);

    QTimer *timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, &ErrorList::poll);
    timer->start(std::chrono::milliseconds(500));
    retranslate();
}

void ErrorList::poll()
{
    const Errors errors = ErrorManager()->announcements();
    if (areSame(errors, m_errors))
        return;
    m_errors = errors;
    fill();
    m_changed(m_errors);
}

void ErrorList::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QDialog::changeEvent(event);
}

void ErrorList::fill()
{
    m_table->setRowCount(static_cast<int>(m_errors.size()));
    for (int row = 0; row < m_table->rowCount(); ++row) {
        const CErrorManager::Announcement &error = m_errors[row];
        m_table->setItem(row, Number, new QTableWidgetItem(QString::number(error.code)));
        m_table->setItem(row, Severity, new QTableWidgetItem(severityText(error.severity)));
        m_table->setItem(row, Text, new QTableWidgetItem(error.text));
        m_table->setItem(row, Detail, new QTableWidgetItem(error.detail));
    }
    m_table->resizeColumnsToContents();
    m_table->scrollToBottom();
    m_clear->setEnabled(!m_errors.isEmpty());
}

void ErrorList::retranslate()
{
    setWindowTitle(tr("Error list"));
    m_table->setHorizontalHeaderLabels({tr("Number"), tr("Severity"), tr("Error"), tr("Detail")});
    m_clear->setText(tr("C&lear"));
    m_close->setText(tr("&Close"));
    fill();
}

} // namespace Orvia
