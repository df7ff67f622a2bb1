#pragma once

#include "examples/instrument/ScpiRegistry.h"

#include <optional>
#include <span>
#include <string_view>

namespace Orvia {

/// A unit that a number may carry, in capitals, and how it leads to the base unit: times `factor`, then by
/// `divisor`. Powers of ten below 1 are none of the numbers that a double holds.
struct ScpiSuffix
{
    std::string_view text;
    double factor;
    double divisor = 1;
};

/// The units of a quantity, none for those without.
std::span<const ScpiSuffix> suffixesOf(ScpiQuantity quantity);

// These throw ScpiError.

/// A decimal number with an optional unit out of `suffixes`.
double parseNumber(std::string_view text, std::span<const ScpiSuffix> suffixes);

/// What MINimum, MAXimum or DEFault stands for; nothing for any other text. Does not throw.
std::optional<double> namedValue(std::string_view text, const NumberSetting &setting);

/// A named value, or a number within the range of the setting, rounded when whole numbers are counted.
double parseSetting(std::string_view text, const NumberSetting &setting, ScpiQuantity quantity);

/// A whole number from 0 to 255; fractions are rounded.
int parseRegister(std::string_view text);

/// ON, OFF or a number, which is on unless it rounds to 0.
bool parseBoolean(std::string_view text);

} // namespace Orvia
