#pragma once

#include "examples/instrument/SourceSettings.h"

#include <QString>

#include <optional>
#include <span>

namespace Orvia {

/// A unit is 10^exponent of the quantity's basic unit, in which settings are stored.
struct Unit
{
    const char *name;
    int exponent;
};

/// How a setting is written for people: "1.234 567 890 12 GHz", every digit down to the resolution.
struct Quantity
{
    NumberSetting setting;
    int decimals;                ///< of the basic unit: the resolution is 10^-decimals
    std::span<const Unit> units; ///< largest first
};

inline constexpr Unit frequencyUnits[] = {{"GHz", 9}, {"MHz", 6}, {"kHz", 3}, {"Hz", 0}};
inline constexpr Unit levelUnits[] = {{"dBm", 0}};
inline constexpr Quantity frequencyQuantity = {frequencySetting, 2, frequencyUnits};
inline constexpr Quantity levelQuantity = {levelSetting, 2, levelUnits};

/// The unit in which a value is shown: the largest one that leaves a digit before the point.
const Unit &unitOf(const Quantity &quantity, double value);
/// The value in its unit.
QString quantityText(const Quantity &quantity, double value);
/// The value in its unit without zeros at the end, for messages and scales.
QString shortText(const Quantity &quantity, double value);
/// Reads a number with a unit, which may be cut short ("100k"); without one the number is in `defaultUnit`.
/// The value is rounded to the resolution. Nothing when it is no number or not in the range.
std::optional<double> parseQuantity(const Quantity &quantity, const QString &text, const Unit &defaultUnit);
/// The value `count` times 10^exponent away, or the end of the range.
double stepped(const Quantity &quantity, double value, int exponent, int count);

/// Power of ten that the digit at `position` of a quantityText() stands for, counted from the unit shown;
/// nothing when there is no digit.
std::optional<int> placeAt(const QString &text, int position);
/// Position of the digit for that power of ten, or the first digit when the number has none that high.
int positionOf(const QString &text, int place);

} // namespace Orvia
