#include "platform/TraceSpan.h"

#include "platform/VQMUtility.h"

#include <algorithm>
#include <string_view>

namespace Orvia {

namespace {

char *put(char *out, std::string_view text)
{
    return std::copy(text.begin(), text.end(), out);
}

/// Traces "VERB OPERATION: TEXT", for an empty text without the colon. A line of usual length needs no heap.
void trace(std::string_view verb, std::string_view operation, std::string_view text)
{
    char buffer[240];
    std::string longLine;
    const std::size_t length = verb.size() + operation.size() + text.size() + std::string_view(" : ").size();
    char *line = buffer;
    if (length >= sizeof buffer) {
        longLine.resize(length);
        line = longLine.data();
    }
    char *end = put(put(put(line, verb), " "), operation);
    if (!text.empty())
        end = put(put(end, ": "), text);
    *end = '\0';
    VQMUtility::traceMessage(line);
}

} // namespace

TraceSpan::TraceSpan(const char *operation, const char *subject) : m_active(VQMUtility::isTracing())
{
    if (!m_active)
        return;
    m_operation = operation;
    trace("begin", m_operation, subject);
}

TraceSpan::~TraceSpan()
{
    if (m_active)
        trace("end", m_operation, m_outcome);
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
