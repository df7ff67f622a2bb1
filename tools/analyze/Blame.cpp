#include "tools/analyze/Reports.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <numeric>

namespace Orvia {

namespace {

using Operation = StartupRecord::Operation;

struct Column
{
    const char *title;
    Operation first, last; ///< operations that count in it
};

constexpr Column columns[] = {
    {"open", Operation::Open, Operation::LookUp},
    {"describe", Operation::Describe, Operation::Describe},
    {"create", Operation::Create, Operation::Create},
    {"initialize", Operation::Initialize, Operation::Initialize},
    {"start-gui", Operation::StartGui, Operation::StartGui},
    {"stages", Operation::Stage, Operation::Stage},
    {"terminate", Operation::Terminate, Operation::Terminate},
    {"close", Operation::Close, Operation::Close},
};
using Times = std::array<std::int64_t, std::size(columns)>;

std::int64_t totalOf(const Times &times)
{
    return std::accumulate(times.begin(), times.end(), std::int64_t(0));
}

std::int64_t &timeOf(const StartupRecord::Span &span, std::vector<Times> *times)
{
    const auto column = std::find_if(std::begin(columns), std::end(columns), [&](const Column &row) {
        return span.operation >= row.first && span.operation <= row.last;
    });
    return (*times)[span.module][column - std::begin(columns)];
}

std::string cell(std::int64_t microseconds, int width)
{
    char text[32];
    if (microseconds == 0)
        std::snprintf(text, sizeof(text), " %*s", width, "-");
    else
        std::snprintf(text, sizeof(text), " %*.3f", width, static_cast<double>(microseconds) / 1e3);
    return text;
}

} // namespace

std::string blame(const StartupRecord &record)
{
    std::vector<Times> times(record.modules().size(), Times{});
    for (const StartupRecord::Span &span : record.spans()) {
        if (span.module < 0)
            continue;
        const std::int64_t time = (span.isOpen() ? record.lastTime() : span.end) - span.begin;
        timeOf(span, &times) += time;
        int outer = span.parent;
        while (outer >= 0 && record.spans()[outer].module < 0)
            outer = record.spans()[outer].parent;
        if (outer >= 0)
            timeOf(record.spans()[outer], &times) -= time;
    }
    std::vector<std::size_t> order(times.size());
    std::iota(order.begin(), order.end(), 0U);
    std::stable_sort(order.begin(), order.end(), [&](std::size_t left, std::size_t right) {
        return totalOf(times[left]) > totalOf(times[right]);
    });

    std::size_t nameWidth = 6;
    for (const StartupRecord::Module &module : record.modules())
        nameWidth = std::max(nameWidth, module.label().size());
    constexpr int width = 10;
    std::string text = "milliseconds\n" + std::string("module").append(nameWidth - 6, ' ') + "      total";
    for (const Column &column : columns) {
        const std::string title = column.title;
        text += ' ' + std::string(width - title.size(), ' ') + title;
    }
    for (const std::size_t index : order) {
        const std::string label = record.modules()[index].label();
        text +=
            '\n' + label + std::string(nameWidth - label.size(), ' ') + cell(totalOf(times[index]), width);
        for (const std::int64_t time : times[index])
            text += cell(time, width);
    }
    return text + '\n';
}

} // namespace Orvia
