#include "diagnosis/StartupSummary.h"
#include "tools/analyze/Reports.h"

namespace Orvia {

namespace {

constexpr int decimals = 3;

/// "initialize Database (id 4)", and what the module itself is at in it.
std::string whereabouts(const StartupRecord &record, const StartupRecord::Thread &thread, int index)
{
    const StartupRecord::Span &span = record.spans()[index];
    std::string text = inWords(span);
    if (span.module >= 0 && record.modules()[span.module].id)
        text += " (id " + std::to_string(*record.modules()[span.module].id) + ')';
    if (thread.open.back() != index)
        text += ", in its " + inWords(record.spans()[thread.open.back()]);
    return text;
}

} // namespace

std::vector<std::string> endOfRun(const StartupRecord &record)
{
    const std::string time = secondsText(record.lastTime(), decimals);
    if (record.exitCode())
        return {"ended in order after " + time + ", exit code " + std::to_string(*record.exitCode())};
    const int current = record.currentSpan();
    if (current < 0)
        return {"not ended in order: nothing under way in the last line, " + time + " after the start"};
    const StartupRecord::Span &span = record.spans()[current];
    const StartupRecord::Thread &last = record.threads()[span.thread];
    std::vector<std::string> lines{"died in: " + whereabouts(record, last, current) + ", on thread " +
                                   last.name + ", " + time + " after the start, " +
                                   secondsText(record.lastTime() - span.begin, decimals) + " into it"};
    for (const StartupRecord::Thread &thread : record.threads()) {
        const int other = record.currentSpan(thread);
        if (&thread != &last)
            lines.push_back("thread " + thread.name + " was in: " +
                            (other < 0 ? "nothing traced" : whereabouts(record, thread, other)));
    }
    return lines;
}

std::string runSummary(const StartupRecord &record)
{
    std::string text;
    for (const std::string &line : summaryOf(record))
        text += line + '\n';
    for (const StartupRecord::Stage &stage : record.stages()) {
        text += "stage reached: " + stage.name;
        if (!stage.parts.empty())
            text += " (" + stage.parts + ')';
        text += " at " + secondsText(stage.time, decimals) + '\n';
    }
    if (!record.isComplete())
        text += "stage not reached: complete finished\n";
    for (const std::string &line : endOfRun(record))
        text += line + '\n';
    return text;
}

} // namespace Orvia
