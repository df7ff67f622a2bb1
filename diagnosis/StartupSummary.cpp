#include "diagnosis/StartupSummary.h"

#include "diagnosis/TextPieces.h"

#include <algorithm>
#include <cstdio>

namespace Orvia {

namespace {

using Outcome = StartupRecord::Outcome;

struct OutcomeText
{
    Outcome outcome;
    const char *text;
};

/// In the order of the summary.
constexpr OutcomeText outcomeTexts[] = {
    {Outcome::Refused, "refused"},
    {Outcome::Failed, "failed"},
    {Outcome::NoEntryPoint, "no entry point"},
    {Outcome::NotOpened, "missing"},
    {Outcome::Created, "not initialized"},
    {Outcome::Skipped, "skipped"},
    {Outcome::NeverReached, "never reached"},
};

/// The loader's reasons begin with the path, which the line has named already.
std::string_view withoutPath(std::string_view reason, std::string_view path)
{
    std::string_view rest = reason;
    return take(&rest, path) && take(&rest, ": ") ? rest : reason;
}

/// What was opened and got no further has been reached.
Outcome outcomeOf(const StartupRecord::Module &module)
{
    return module.outcome == Outcome::NeverReached && module.isOpened ? Outcome::Created : module.outcome;
}

/// The module by its name once the start-up has called it by that, else by its file.
std::string lineOf(const char *text, const StartupRecord::Module &module)
{
    const bool isNamed = module.outcome == Outcome::Failed || module.outcome == Outcome::Created;
    std::string line = std::string(text) + ": " + (isNamed ? module.label() : module.fileName());
    if (!module.reason.empty())
        line.append(": ").append(withoutPath(module.reason, module.path));
    return line;
}

/// "FILE:LINE:COLUMN: XML error: TEXT" reads as "not well formed: FILE:LINE:COLUMN: TEXT".
std::string errorLine(const std::string &error)
{
    constexpr std::string_view mark = ": XML error: ";
    const std::size_t position = error.find(mark);
    if (position == std::string::npos)
        return "configuration: " + error;
    return "not well formed: " + error.substr(0, position) + ": " + error.substr(position + mark.size());
}

} // namespace

std::vector<std::string> summaryOf(const StartupRecord &record)
{
    const auto &modules = record.modules();
    const auto up = std::count_if(modules.begin(), modules.end(),
                                  [](const auto &module) { return module.outcome == Outcome::Up; });
    std::vector<std::string> lines{std::to_string(up) + " of " + std::to_string(modules.size()) +
                                   (modules.size() == 1 ? " module up in " : " modules up in ") +
                                   secondsText(record.startupEnd())};
    for (const OutcomeText &row : outcomeTexts) {
        for (const StartupRecord::Module &module : modules) {
            if (outcomeOf(module) == row.outcome)
                lines.push_back(lineOf(row.text, module));
        }
        if (row.outcome == Outcome::NotOpened) {
            for (const std::string &name : record.missingModules())
                lines.push_back("missing: " + name + " (required)");
        }
    }
    for (const std::string &error : record.configurationErrors())
        lines.push_back(errorLine(error));
    return lines;
}

std::string secondsText(std::int64_t microseconds, int decimals)
{
    char text[48];
    std::snprintf(text, sizeof(text), "%.*f s", decimals, static_cast<double>(microseconds) / 1e6);
    return text;
}

} // namespace Orvia
