#include "examples/instrument/AmMod/AmSettings.h"
#include "examples/instrument/Extension/Extension.h"
#include "examples/instrument/Extension/SettingsPage.h"

#include <cmath>

namespace Orvia {

namespace {

/// The peaks of the envelope stay within what the output can do.
bool keepsPeakLevel(const SettingsDatabase &settings, SettingsMap *changed)
{
    if (!concerns(*changed, {amStateSetting, amDepthSetting, levelSetting}) ||
        numberAfter(settings, *changed, amStateSetting) == 0)
        return true;
    const double depth = numberAfter(settings, *changed, amDepthSetting);
    const double level = numberAfter(settings, *changed, levelSetting);
    return level + 20 * std::log10(1 + depth / 100) <= levelSetting.maximum;
}

constexpr Unit percent[] = {{"%", 0}};
constexpr Unit audioFrequency[] = {{"kHz", 3}, {"Hz", 0}};
constexpr SettingsPageRow rows[] = {
    {QT_TRANSLATE_NOOP("AmPage", "Depth"), {amDepthSetting, 1, percent}, 0},
    {QT_TRANSLATE_NOOP("AmPage", "Frequency"), {amFrequencySetting, 1, audioFrequency}, 2},
};
constexpr SettingsPageContent page = {"AmPage", QT_TRANSLATE_NOOP("AmPage", "AM"),
                                      QT_TRANSLATE_NOOP("AmPage", "Amplitude modulation"), amStateSetting,
                                      rows};

ExtensionContent content()
{
    return {
        .rule = keepsPeakLevel,
        .commands = {.settings = {{"[:SOURce]:AM:STATe", amStateSetting, ScpiQuantity::Switch},
                                  {"[:SOURce]:AM:DEPTh", amDepthSetting, ScpiQuantity::Percent},
                                  {"[:SOURce]:AM:FREQuency", amFrequencySetting, ScpiQuantity::Frequency}},
                     .queries = {}},
        .createPage = [](SettingsDatabase *settings) -> QWidget * {
            return new SettingsPage(settings, page);
        }};
}

} // namespace

/// Amplitude modulation by the internal generator.
class AmModModule final : public Extension
{
public:
    explicit AmModModule(int id) : Extension(id, content()) {}
};

} // namespace Orvia

VQM_MODULE(Orvia::AmModModule)
