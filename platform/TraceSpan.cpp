#include "platform/TraceSpan.h"

#include "platform/JoinedText.h"
#include "platform/VQMUtility.h"

namespace Orvia {

TraceSpan::TraceSpan(const char *operation, const char *subject) : m_active(VQMUtility::isTracing())
{
    if (!m_active)
        return;
    m_operation = operation;
    if (*subject == '\0')
        VQMUtility::traceMessage(JoinedText("begin ", m_operation).c_str());
    else
        VQMUtility::traceMessage(JoinedText("begin ", m_operation, ": ", subject).c_str());
}

TraceSpan::TraceSpan(const char *operation, const char *kind, const char *subject)
    : m_active(VQMUtility::isTracing())
{
    if (!m_active)
        return;
    m_operation = operation;
    if (*subject == '\0')
        VQMUtility::traceMessage(JoinedText("begin ", m_operation, ": ", kind).c_str());
    else
        VQMUtility::traceMessage(JoinedText("begin ", m_operation, ": ", kind, ": ", subject).c_str());
}

TraceSpan::~TraceSpan()
{
    if (!m_active)
        return;
    if (m_outcome.empty())
        VQMUtility::traceMessage(JoinedText("end ", m_operation).c_str());
    else
        VQMUtility::traceMessage(JoinedText("end ", m_operation, ": ", m_outcome).c_str());
}

void TraceSpan::setOutcome(const std::string &outcome)
{
    if (m_active)
        m_outcome = outcome;
}

void TraceSpan::setThrown(const std::exception_ptr &thrown)
{
    if (!m_active)
        return;
    try {
        std::rethrow_exception(thrown);
    } catch (const std::exception &exception) {
        m_outcome = std::string("threw ") + exception.what();
    } catch (const char *text) {
        m_outcome = std::string("threw ") + text;
    } catch (...) {
        m_outcome = "threw an exception of unknown type";
    }
}

} // namespace Orvia
