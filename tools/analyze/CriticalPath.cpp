#include "diagnosis/StartupSummary.h"
#include "tools/analyze/Reports.h"

#include <algorithm>
#include <cstdio>
#include <tuple>

namespace Orvia {

namespace {

using Span = StartupRecord::Span;

constexpr int decimals = 6;

/// A link of the chain: an outermost span up to where the next link begins.
struct Link
{
    int span;
    std::int64_t until;
};

std::int64_t endOf(const Span &span, std::int64_t limit)
{
    return span.isOpen() ? limit : std::min(span.end, limit);
}

/// The spans of a thread that are in no other, and the spans in each span; in the order they began.
struct Nesting
{
    explicit Nesting(const StartupRecord &record)
        : outermost(record.threads().size()), inside(record.spans().size())
    {
        for (std::size_t i = 0; i < record.spans().size(); ++i) {
            const Span &span = record.spans()[i];
            if (span.parent >= 0)
                inside[span.parent].push_back(static_cast<int>(i));
            else if (span.operation != StartupRecord::Operation::Own)
                outermost[span.thread].push_back(static_cast<int>(i));
        }
    }

    std::vector<std::vector<int>> outermost;
    std::vector<std::vector<int>> inside;
};

/// Of the outermost spans that had begun before `time` the one that ended last, at a tie the one on `thread`;
/// -1: none.
int lastBefore(const StartupRecord &record, const Nesting &nesting, std::int64_t time, int thread)
{
    int best = -1;
    const auto rank = [&](int span) {
        return std::make_tuple(endOf(record.spans()[span], time), record.spans()[span].thread == thread);
    };
    for (const std::vector<int> &spans : nesting.outermost) {
        const auto next = std::partition_point(spans.begin(), spans.end(),
                                               [&](int span) { return record.spans()[span].begin < time; });
        if (next != spans.begin() && (best < 0 || rank(next[-1]) > rank(best)))
            best = next[-1];
    }
    return best;
}

/// Backwards from the end of start-up: what a span waited for is what ended last before it began.
std::vector<Link> chainOf(const StartupRecord &record, const Nesting &nesting)
{
    std::vector<Link> chain;
    std::int64_t time = record.startupEnd();
    int thread = -1;
    for (int span; (span = lastBefore(record, nesting, time, thread)) >= 0;) {
        chain.push_back({span, endOf(record.spans()[span], time)});
        time = record.spans()[span].begin;
        thread = record.spans()[span].thread;
    }
    std::reverse(chain.begin(), chain.end());
    return chain;
}

std::string line(std::int64_t begin, std::int64_t duration, int depth, const std::string &what)
{
    char head[64];
    std::snprintf(head, sizeof(head), "%12.6f %12.6f  ", static_cast<double>(begin) / 1e6,
                  static_cast<double>(duration) / 1e6);
    return head + std::string(2 * static_cast<std::size_t>(depth), ' ') + what + '\n';
}

/// The spans in it, in their order; those under a hundredth of the whole are counted together.
std::string insideOf(const StartupRecord &record, const Nesting &nesting, const Link &link,
                     std::int64_t whole)
{
    std::string text;
    std::int64_t inside = 0, minor = 0;
    int minorCount = 0;
    for (const int index : nesting.inside[link.span]) {
        const Span &span = record.spans()[index];
        if (span.begin >= link.until)
            break;
        const std::int64_t time = endOf(span, link.until) - span.begin;
        inside += time;
        if (time * 100 < whole) {
            minor += time;
            ++minorCount;
        } else {
            text += line(span.begin, time, 1, inWords(span) + (span.isOpen() ? " (did not end)" : ""));
        }
    }
    const Span &outer = record.spans()[link.span];
    if (minorCount > 0)
        text += line(outer.begin, minor, 1, std::to_string(minorCount) + " shorter ones together");
    if (inside > 0)
        text += line(outer.begin, link.until - outer.begin - inside, 1, "itself");
    return text;
}

/// When the thread of this outermost span was last in something before it.
std::int64_t idleSince(const StartupRecord &record, const Nesting &nesting, int index)
{
    const std::vector<int> &spans = nesting.outermost[record.spans()[index].thread];
    const auto position = std::lower_bound(spans.begin(), spans.end(), index);
    return position == spans.begin() ? 0 : record.spans()[position[-1]].end;
}

} // namespace

std::string criticalPath(const StartupRecord &record)
{
    const std::int64_t whole = record.startupEnd();
    const Nesting nesting(record);
    std::string text =
        (record.isComplete() ? "complete finished after " : "complete finished not reached, up to ") +
        secondsText(whole, decimals) + "\n       begin     duration\n";
    std::int64_t time = 0;
    int thread = -1;
    for (const Link &link : chainOf(record, nesting)) {
        const Span &span = record.spans()[link.span];
        const std::string &name = record.threads()[span.thread].name;
        if (thread >= 0 && span.thread != thread) {
            const std::int64_t since = idleSince(record, nesting, link.span);
            text += line(since, span.begin - since, 0, name + " waited for " + record.threads()[thread].name);
        }
        if (span.begin > time)
            text += line(time, span.begin - time, 0,
                         thread < 0 ? "before the first phase" : "between the phases");
        text += line(span.begin, link.until - span.begin, 0, name + ": " + inWords(span));
        text += insideOf(record, nesting, link, whole);
        time = link.until;
        thread = span.thread;
    }
    if (whole > time)
        text += line(time, whole - time, 0, "after the last phase");
    return text;
}

} // namespace Orvia
