#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Orvia {

/// One command or query of a program message.
struct ScpiUnit
{
    std::string header; ///< from the root of the command tree, without leading colon; ends in "?" for a query
    std::vector<std::string_view> parameters; ///< into the message, blanks around them taken off
};

/// Cuts a program message, one line without its end, into units: "FREQ 1 GHZ;:OUTP ON;*OPC?".
///
/// A header without leading colon continues the path of the one before it (SCPI's path rule); common commands
/// neither use nor change the path. Empty units are skipped.
class ScpiMessage
{
public:
    /// The text is not copied.
    explicit ScpiMessage(std::string_view text) : m_rest(text) {}

    /// The next unit; false at the end. Throws ScpiError.
    bool next(ScpiUnit *unit);

private:
    std::string resolve(std::string_view header);

    std::string_view m_rest;
    std::string m_path; ///< empty, or ends in ":"
};

/// Whether `header` spells a header pattern such as "[:SOURce]:FREQuency[:CW]?": every mnemonic in its long
/// form or in its short one (the capitals), in any case; what stands in brackets may be left out.
bool matchesHeader(std::string_view pattern, std::string_view header);

/// The same for a single word, such as "MINimum".
bool matchesWord(std::string_view pattern, std::string_view word);

std::string_view trimmed(std::string_view text);

} // namespace Orvia
