#pragma once

#include "diagnosis/KeptLines.h"
#include "diagnosis/StartupRecord.h"
#include "launcher/Breadcrumb.h"
#include "platform/VQMUtility.h"

#include <QStringList>

#include <mutex>
#include <string>

namespace Orvia {

/// Follows the run by its trace lines, whether or not they go to a file: for the summary at the end of
/// start-up, and for the breadcrumb that says where a start ended that could not say so itself. Without
/// breadcrumbs lines are only kept until somebody asks: they do not hold the start-up up. Any thread.
class StartupObserver : public VQMTraceListener
{
public:
    StartupObserver();
    ~StartupObserver() override;
    StartupObserver(const StartupObserver &) = delete;
    StartupObserver &operator=(const StartupObserver &) = delete;

    /// Leaves breadcrumbs in this file from now on; reports what an earlier process has left there.
    void leaveBreadcrumbs(const QString &fileName);
    /// Nothing is under way: the instrument runs, or it has been shut down.
    void pauseBreadcrumbs();
    /// The shutdown begins.
    void resumeBreadcrumbs();
    /// Nobody will ask for the summary any more: without breadcrumbs it has heard enough.
    void startupOver();

    /// How start-up went, a line each.
    QStringList summary() const;
    /// Everything listed is up, everything required is there.
    bool wentWell() const;

    void traced(std::int64_t microseconds, int thread, const char *threadName, const char *text) override;

private:
    mutable std::mutex m_mutex;
    mutable StartupRecord m_record;
    mutable KeptLines m_heard; ///< what the record has still to be told
    Breadcrumb m_breadcrumb;
    std::string m_marked;
    bool m_marks = false;
};

} // namespace Orvia
