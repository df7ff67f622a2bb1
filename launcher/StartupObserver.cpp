#include "launcher/StartupObserver.h"

#include "Startup/StartupErrors.h"
#include "diagnosis/StartupSummary.h"
#include "launcher/Report.h"
#include "platform/ErrorManager.h"

#include <utility>

namespace Orvia {

namespace {

constexpr int warning = 2; ///< severities are 1 error, 2 warning, 3 information

/// What was signalled to the error manager and no line of the trace tells of.
QStringList signalledErrors()
{
    QStringList errors;
    const auto announcements = ErrorManager()->announcements();
    for (const CErrorManager::Announcement &announcement : announcements) {
        if (announcement.severity > warning && announcement.code != StartupUnknownOption)
            continue;
        errors.append(QString("signalled %1: %2 %3")
                          .arg(announcement.code)
                          .arg(announcement.text, announcement.detail)
                          .simplified());
    }
    return errors;
}

} // namespace

StartupObserver::StartupObserver()
{
    VQMUtility::setTraceListener(this);
}

StartupObserver::~StartupObserver()
{
    VQMUtility::setTraceListener(nullptr);
}

void StartupObserver::leaveBreadcrumbs(const QString &fileName)
{
    QString error;
    std::optional<QString> left;
    {
        const std::lock_guard lock(m_mutex);
        left = m_breadcrumb.open(fileName, &error);
        m_marks = m_breadcrumb.isOpen();
    }
    if (!error.isEmpty())
        report("breadcrumb: " + error);
    if (left)
        report("previous start ended in: " + *left);
}

void StartupObserver::pauseBreadcrumbs()
{
    const std::lock_guard lock(m_mutex);
    m_marks = false;
    m_marked.clear();
    m_breadcrumb.clear();
}

void StartupObserver::resumeBreadcrumbs()
{
    const std::lock_guard lock(m_mutex);
    m_marks = m_breadcrumb.isOpen();
}

void StartupObserver::startupOver()
{
    bool isNeeded = false;
    {
        const std::lock_guard lock(m_mutex);
        isNeeded = m_breadcrumb.isOpen();
    }
    if (!isNeeded) // not under the lock: whoever traces takes the two locks in the other order
        VQMUtility::setTraceListener(nullptr);
}

QStringList StartupObserver::summary() const
{
    const QStringList errors = signalledErrors(); // not under the lock: whoever signals may trace as well
    const std::lock_guard lock(m_mutex);
    m_heard.tellTo(&m_record);
    QStringList lines;
    for (const std::string &line : summaryOf(m_record))
        lines.append(QString::fromLocal8Bit(line.c_str()));
    return lines + errors;
}

bool StartupObserver::wentWell() const
{
    if (!signalledErrors().isEmpty())
        return false;
    const std::lock_guard lock(m_mutex);
    m_heard.tellTo(&m_record);
    return m_record.wentWell();
}

void StartupObserver::traced(std::int64_t microseconds, int thread, const char *threadName, const char *text)
{
    const std::lock_guard lock(m_mutex);
    if (!m_breadcrumb.isOpen()) {
        m_heard.keep(microseconds, thread, threadName, text);
        return;
    }
    m_heard.tellTo(&m_record);
    m_record.addLine(microseconds, thread, threadName, text);
    if (!m_marks)
        return;
    std::string current = m_record.current();
    if (current.empty() || current == m_marked)
        return;
    m_breadcrumb.mark(current);
    m_marked = std::move(current);
}

} // namespace Orvia
