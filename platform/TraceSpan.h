#pragma once

#include "platform/Export.h"

#include <exception>
#include <string>

namespace Orvia {

/// The time that something takes, in the trace: a line "begin OPERATION: SUBJECT" when it is constructed and,
/// on the same thread, "end OPERATION" when it is destroyed. Spans of a thread lie one inside another. Does
/// nothing when tracing is off.
class VQM_EXPORT TraceSpan
{
public:
    /// The texts are copied only when tracing is on. An operation is one word.
    TraceSpan(const char *operation, const char *subject);
    /// The subject is "KIND: SUBJECT".
    TraceSpan(const char *operation, const char *kind, const char *subject);
    ~TraceSpan();
    TraceSpan(const TraceSpan &) = delete;
    TraceSpan &operator=(const TraceSpan &) = delete;

    /// What came of it, where that is not success: "end OPERATION: OUTCOME".
    void setOutcome(const std::string &outcome);
    /// The outcome "threw TEXT".
    void setThrown(const std::exception_ptr &thrown);

private:
    bool m_active;
    std::string m_operation;
    std::string m_outcome;
};

} // namespace Orvia
