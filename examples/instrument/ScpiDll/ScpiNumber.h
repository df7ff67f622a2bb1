#pragma once

#include "examples/instrument/SourceSettings.h"

#include <optional>
#include <span>
#include <string_view>

namespace Orvia {

/// A unit that a number may carry, in capitals, and its factor to the base unit.
struct ScpiSuffix
{
    std::string_view text;
    double factor;
};

inline constexpr ScpiSuffix frequencySuffixes[] = {
    {"HZ", 1}, {"KHZ", 1e3}, {"MHZ", 1e6}, {"MAHZ", 1e6}, {"GHZ", 1e9}};
inline constexpr ScpiSuffix levelSuffixes[] = {{"DBM", 1}};

// These throw ScpiError.

/// A decimal number with an optional unit out of `suffixes`.
double parseNumber(std::string_view text, std::span<const ScpiSuffix> suffixes);

/// What MINimum, MAXimum or DEFault stands for; nothing for any other text. Does not throw.
std::optional<double> namedValue(std::string_view text, const NumberSetting &setting);

/// A named value, or a number within the range of the setting.
double parseSetting(std::string_view text, const NumberSetting &setting,
                    std::span<const ScpiSuffix> suffixes);

/// A whole number from 0 to 255; fractions are rounded.
int parseRegister(std::string_view text);

/// ON, OFF or a number, which is on unless it rounds to 0.
bool parseBoolean(std::string_view text);

} // namespace Orvia
