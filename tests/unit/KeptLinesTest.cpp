#include "diagnosis/KeptLines.h"
#include "diagnosis/StartupSummary.h"

#include <gmock/gmock.h>

namespace Orvia {
namespace {

struct Line
{
    std::int64_t hundredths; ///< of a second, as the summary tells it
    int thread;
    const char *text;
};

std::vector<std::string> toldAtOnce(const std::vector<Line> &lines)
{
    StartupRecord record;
    for (const Line &line : lines)
        record.addLine(line.hundredths * 10'000, line.thread, line.thread == 1 ? "startup" : "other",
                       line.text);
    return summaryOf(record);
}

std::vector<std::string> toldLater(const std::vector<Line> &lines)
{
    StartupRecord record;
    KeptLines kept;
    for (const Line &line : lines) {
        kept.keep(line.hundredths * 10'000, line.thread, line.thread == 1 ? "startup" : "other", line.text);
        if (line.thread == 2) // somebody has asked in between
            kept.tellTo(&record);
    }
    kept.tellTo(&record);
    return summaryOf(record);
}

TEST(KeptLinesTest, TellTheSameSummaryLater)
{
    std::vector<Line> lines = {
        {10, 1, "listed: /m/One.so"},
        {10, 1, "listed: /m/Two.so"},
        {10, 1, "listed: /m/Old.so"},
        {20, 1, "begin open: /m/One.so"},
        {30, 1, "end open"},
        {30, 1, "begin look-up: VQMGetModuleInfo"},
        {31, 1, "end look-up"},
        {32, 1, "Module Name             : One"},
        {33, 1, "begin look-up: VQMCreateModuleInterfaceInstance"},
        {33, 3, "a module's own thread says something"},
        {34, 1, "end look-up"},
        {35, 1, "Module Id               : 7"},
        {36, 1, "Module Version          : 01.00.00"},
        {40, 1, "begin open: /m/Two.so"},
        {50, 1, "end open"},
        {51, 1, "begin look-up: VQMGetModuleInfo"},
        {52, 1, "end look-up"},
        {53, 1, "Module Name             : Two"},
        {54, 1, "begin look-up: VQMCreateModuleInterfaceInstance"},
        {55, 1, "end look-up"},
        {56, 1, "Module Id               : 8"},
        {60, 1, "begin open: /m/Old.so"},
        {70, 1, "end open"},
        {71, 1, "begin look-up: VQMGetModuleInfo"},
        {72, 1, "end look-up: undefined symbol: VQMGetModuleInfo"},
        {73, 1, "Could not access the interface method VQMGetModuleInfoof module /m/Old.so!"},
        {80, 1, "Initializing One..."},
        {80, 1, "begin initialize: 7 One, parts -1"},
        {90, 1, "end initialize"},
        {90, 1, "...ok."},
        {91, 1, "begin initialize: 8 Two, parts -1"},
        {92, 1, "end initialize"},
        {100, 1, "begin stage: modules finished: 7 One"},
        {101, 1, "end stage"},
        {102, 3, "begin stage: modules finished: 7 One"},
        {103, 1, "begin stage: modules finished: 8 Two"},
        {104, 3, "end stage"},
        {105, 1, "end stage: threw no more"},
        {106, 2, "begin stage: modules finished: 7 One"},
        {107, 2, "end stage"},
        {400, 1, "Stage: complete finished"},
        {400, 1, "begin stage: complete finished: 7 One"},
        {401, 1, "end stage"},
        {401, 1, "begin stage: complete finished: 8 Two"},
        {900, 1, "end stage"},
    };
    EXPECT_THAT(toldAtOnce(lines),
                testing::ElementsAre("1 of 3 modules up in 9.00 s", testing::StartsWith("failed: Two: stage"),
                                     testing::StartsWith("no entry point: Old.so: undefined symbol")));
    for (; !lines.empty(); lines.pop_back()) // wherever the start has got to
        EXPECT_EQ(toldLater(lines), toldAtOnce(lines)) << lines.back().text;
}

} // namespace
} // namespace Orvia
