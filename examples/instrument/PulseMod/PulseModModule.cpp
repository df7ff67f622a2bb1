#include "examples/instrument/Extension/Extension.h"
#include "examples/instrument/Extension/SettingsPage.h"
#include "examples/instrument/PulseMod/PulseSettings.h"

namespace Orvia {

namespace {

bool keepsWidthBelowPeriod(const SettingsDatabase &settings, SettingsMap *changed)
{
    return !concerns(*changed, {pulseWidthSetting, pulsePeriodSetting}) ||
           numberAfter(settings, *changed, pulseWidthSetting) <
               numberAfter(settings, *changed, pulsePeriodSetting);
}

constexpr Unit time[] = {{"s", 0}, {"ms", -3}, {"µs", -6}, {"ns", -9}};
constexpr SettingsPageRow rows[] = {
    {QT_TRANSLATE_NOOP("PulsePage", "Period"), {pulsePeriodSetting, 10, time}, -6},
    {QT_TRANSLATE_NOOP("PulsePage", "Width"), {pulseWidthSetting, 10, time}, -7},
};
constexpr SettingsPageContent page = {"PulsePage", QT_TRANSLATE_NOOP("PulsePage", "Pulse"),
                                      QT_TRANSLATE_NOOP("PulsePage", "Pulse modulation"), pulseStateSetting,
                                      rows};

ExtensionContent content()
{
    return {.rule = keepsWidthBelowPeriod,
            .commands = {.settings = {{"[:SOURce]:PULM:STATe", pulseStateSetting, ScpiQuantity::Switch},
                                      {"[:SOURce]:PULM:PERiod", pulsePeriodSetting, ScpiQuantity::Time},
                                      {"[:SOURce]:PULM:WIDTh", pulseWidthSetting, ScpiQuantity::Time}},
                         .queries = {}},
            .createPage = [](SettingsDatabase *settings) -> QWidget * {
                return new SettingsPage(settings, page);
            }};
}

} // namespace

/// Pulse modulation by the internal pulse generator.
class PulseModModule final : public Extension
{
public:
    explicit PulseModModule(int id) : Extension(id, content()) {}
};

} // namespace Orvia

VQM_MODULE(Orvia::PulseModModule)
