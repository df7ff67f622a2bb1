#pragma once

#include "examples/instrument/SettingsDatabase.h"

#include <charconv>
#include <string>

namespace Orvia {

/// A number among the settings, with the range that the hardware can do.
struct NumberSetting
{
    const char *key;
    double minimum;
    double maximum;
    double defaultValue;
};

/// The settings of the signal source.
inline constexpr NumberSetting frequencySetting = {"source/frequency", 100e3, 6e9, 1e9}; ///< in Hz
inline constexpr NumberSetting levelSetting = {"source/level", -120, 20, -30};           ///< in dBm
inline constexpr const char *outputKey = "source/output"; ///< "1" is on, "0" off

/// The shortest decimal text, without exponent, that reads back as the same number.
inline std::string numberText(double number)
{
    char text[400];
    const std::to_chars_result end =
        std::to_chars(text, text + sizeof text, number + 0.0, std::chars_format::fixed); // no "-0"
    return std::string(text, end.ptr);
}

/// The stored number; the default when there is none, or one that is not in the range.
inline double storedNumber(const SettingsDatabase &settings, const NumberSetting &setting)
{
    const std::string text = settings.value(setting.key, std::string());
    double number = setting.defaultValue;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool valid = error == std::errc() && end == text.data() + text.size() &&
                       number >= setting.minimum && number <= setting.maximum;
    return valid ? number : setting.defaultValue;
}

inline SettingsMap defaultSourceSettings()
{
    return {{frequencySetting.key, numberText(frequencySetting.defaultValue)},
            {levelSetting.key, numberText(levelSetting.defaultValue)},
            {outputKey, "0"}};
}

} // namespace Orvia
