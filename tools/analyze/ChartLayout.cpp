#include "tools/analyze/ChartLayout.h"

#include "diagnosis/StartupSummary.h"

#include <algorithm>

namespace Orvia::Chart {

namespace {

using Operation = StartupRecord::Operation;
using Outcome = StartupRecord::Outcome;
using Span = StartupRecord::Span;

constexpr double padding = 4;
constexpr double closeBy = 10;
constexpr std::size_t manyLabels = 40; ///< more that have to be moved out of each other's way help nobody

std::string shortName(const Span &span)
{
    if (span.operation == Operation::Initialize)
        return "init";
    if (span.operation == Operation::LookUp)
        return "open";
    if (span.operation == Operation::StartGui)
        return "start";
    if (span.operation == Operation::Stage)
        return span.subject.substr(0, span.subject.find(": "));
    return inWords(span).substr(0, operationName(span.operation).size());
}

Bar barOf(const StartupRecord &record, const Layout &layout, const Span &span)
{
    const std::int64_t end = span.isOpen() ? record.lastTime() : span.end;
    const bool isPhase = span.parent < 0 && span.module < 0;
    Bar bar;
    bar.kind = isPhase ? "phase" : std::string(operationName(span.operation));
    bar.label = isPhase ? inWords(span) : shortName(span);
    bar.tip = inWords(span) + ", " + secondsText(end - span.begin, 6) + ", on " +
              record.threads()[span.thread].name;
    bar.x = layout.xOf(span.begin);
    const double right = std::min(layout.xOf(end), plotWidth);
    bar.width = std::max(minBarWidth, right - bar.x);
    bar.isTick = span.operation == Operation::Stage && right - bar.x < 2 * minBarWidth;
    bar.isBad = !span.result.empty() || span.isOpen();
    const std::string result = span.isOpen() ? "did not end" : span.result;
    if (bar.isBad)
        bar.tip += ": " + result;
    if (bar.isBad && (isPhase || span.operation >= Operation::Initialize) && result.size() < 32)
        bar.label += ": " + result;
    return bar;
}

void addWord(std::string *text, const std::string &word)
{
    if ((' ' + *text + ' ').find(' ' + word + ' ') == std::string::npos)
        *text += ' ' + word;
}

/// Bars are named inside where the name fits; else, with those close to them, to their right or left.
void labelBars(Row *row)
{
    std::vector<const Bar *> bars;
    for (const Bar &bar : row->bars) {
        if (!bar.isTick)
            bars.push_back(&bar);
    }
    const auto fitsInside = [](const Bar *bar) { return widthOf(bar->label) + 2 * padding <= bar->width; };
    double free = -padding; // what is left of here is taken
    for (std::size_t i = 0; i < bars.size(); ++i) {
        const double left = bars[i]->x;
        double right = left + bars[i]->width;
        if (fitsInside(bars[i])) {
            row->labels.push_back({bars[i]->label, left, bars[i]->width, Label::Place::Inside});
            free = std::max(free, right);
            continue;
        }
        std::string text = bars[i]->label;
        while (i + 1 < bars.size() && bars[i + 1]->x < right + closeBy && !fitsInside(bars[i + 1])) {
            addWord(&text, bars[++i]->label);
            right = std::max(right, bars[i]->x + bars[i]->width);
        }
        const double width = widthOf(text);
        if (i + 1 == bars.size() || right + width + 2 * padding <= bars[i + 1]->x) {
            row->labels.push_back({text, right + padding, width});
            right += padding + width;
        } else if (free + padding <= left - padding - width) {
            row->labels.push_back({text, left - padding - width, width, Label::Place::Left});
        }
        free = std::max(free, right);
    }
}

/// Texts that begin at given places go onto as many lines as they need. A line drawn from the first level to
/// a text's own crosses no other text.
int stagger(std::vector<Label> *labels)
{
    int levels = 0;
    for (std::size_t i = labels->size(); i-- > 0;) {
        Label &label = (*labels)[i];
        label.width = widthOf(label.text);
        const double right = label.x + label.width + 2 * padding;
        for (std::size_t j = i + 1; j < labels->size() && (*labels)[j].x < right; ++j)
            label.level = std::max(label.level, (*labels)[j].level + 1);
        levels = std::max(levels, label.level + 1);
    }
    return levels;
}

struct Mark
{
    Outcome outcome;
    const char *text;
    bool isBad;
};

constexpr Mark marks[] = {
    {Outcome::NotOpened, "not opened", true},     {Outcome::NoEntryPoint, "no entry point", true},
    {Outcome::Refused, "refused", false},         {Outcome::Failed, "failed", true},
    {Outcome::Created, "not initialized", false},
};

Row moduleRow(const StartupRecord::Module &module)
{
    Row row;
    row.title = module.label();
    for (const Mark &mark : marks) {
        if (mark.outcome == module.outcome) {
            row.mark = mark.text;
            row.isBad = mark.isBad;
        }
    }
    return row;
}

void addRows(const StartupRecord &record, Layout *layout)
{
    std::vector<int> rows(record.modules().size(), -1);
    layout->threads.resize(record.threads().size());
    for (std::size_t i = 0; i < record.threads().size(); ++i)
        layout->threads[i].title = record.threads()[i].name;
    for (const Span &span : record.spans()) {
        if (static_cast<double>(span.begin) > layout->end)
            break;
        if (span.module < 0) {
            if (span.parent < 0)
                layout->threads[span.thread].bars.push_back(barOf(record, *layout, span));
            continue;
        }
        int &row = rows[span.module];
        if (row < 0) {
            row = static_cast<int>(layout->modules.size());
            layout->modules.push_back(moduleRow(record.modules()[span.module]));
        }
        layout->modules[row].bars.push_back(barOf(record, *layout, span));
        if (span.isOpen()) {
            layout->modules[row].mark = "did not end";
            layout->modules[row].isBad = true;
        }
    }
}

void addStages(const StartupRecord &record, Layout *layout)
{
    for (const StartupRecord::Stage &stage : record.stages()) {
        if (static_cast<double>(stage.time) > layout->end || layout->stages.size() == manyLabels)
            break;
        Label label;
        label.text = stage.parts.empty() ? stage.name : stage.name + " (" + stage.parts + ')';
        label.x = layout->xOf(stage.time);
        layout->stages.push_back(label);
    }
    layout->stageLevels = stagger(&layout->stages);
}

} // namespace

double widthOf(const std::string &text, double size)
{
    return 0.62 * size * static_cast<double>(text.size());
}

Layout layOut(const StartupRecord &record, bool all)
{
    Layout layout;
    layout.end =
        static_cast<double>(std::max<std::int64_t>(all ? record.lastTime() : record.startupEnd(), 1));
    addRows(record, &layout);
    addStages(record, &layout);
    for (Row &row : layout.threads) {
        for (const Bar &bar : row.bars) {
            if (row.bars.size() > manyLabels && bar.width < widthOf(bar.label))
                continue;
            Label label;
            label.text = bar.label;
            label.x = bar.x;
            row.labels.push_back(label);
        }
        row.levels = stagger(&row.labels);
    }
    std::erase_if(layout.threads, [](const Row &row) { return row.bars.empty(); });
    for (Row &row : layout.modules)
        labelBars(&row);
    return layout;
}

} // namespace Orvia::Chart
