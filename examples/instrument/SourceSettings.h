#pragma once

#include "examples/instrument/SettingsDatabase.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>
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

/// The number that `text` spells; the default when it spells none, or one that is not in the range.
inline double settingNumber(const std::string &text, const NumberSetting &setting)
{
    double number = setting.defaultValue;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool valid = error == std::errc() && end == text.data() + text.size() &&
                       number >= setting.minimum && number <= setting.maximum;
    return valid ? number : setting.defaultValue;
}

/// The stored number, or the default.
inline double storedNumber(const SettingsDatabase &settings, const NumberSetting &setting)
{
    return settingNumber(settings.value(setting.key, std::string()), setting);
}

/// Whether one of the settings is about to be set. A rule keeps out of all else: what was stored before it
/// was there may break it, and that must not keep other settings from being set.
inline bool concerns(const SettingsMap &changed, std::initializer_list<NumberSetting> settings)
{
    return std::any_of(settings.begin(), settings.end(),
                       [&changed](const NumberSetting &setting) { return changed.contains(setting.key); });
}

/// What storedNumber() will be once `changed` is set.
inline double numberAfter(const SettingsDatabase &settings, const SettingsMap &changed,
                          const NumberSetting &setting)
{
    const auto found = changed.find(setting.key);
    return found != changed.end() ? settingNumber(found->second, setting) : storedNumber(settings, setting);
}

inline SettingsMap defaultSourceSettings()
{
    return {{frequencySetting.key, numberText(frequencySetting.defaultValue)},
            {levelSetting.key, numberText(levelSetting.defaultValue)},
            {outputKey, "0"}};
}

} // namespace Orvia
