#include "examples/instrument/Extension/Extension.h"

namespace Orvia {

namespace {

constexpr NumberSetting start = {"sweep/start", frequencySetting.minimum, frequencySetting.maximum, 500e6};
constexpr NumberSetting stop = {"sweep/stop", frequencySetting.minimum, frequencySetting.maximum, 1500e6};
constexpr NumberSetting points = {"sweep/points", 2, 10000, 101};

bool keepsStartBelowStop(const SettingsDatabase &settings, SettingsMap *changed)
{
    return !concerns(*changed, {start, stop}) ||
           numberAfter(settings, *changed, start) < numberAfter(settings, *changed, stop);
}

double step(const SettingsDatabase &settings)
{
    return (storedNumber(settings, stop) - storedNumber(settings, start)) /
           (storedNumber(settings, points) - 1);
}

ExtensionContent content()
{
    return {.rule = keepsStartBelowStop,
            .commands = {.settings = {{"[:SOURce]:FREQuency:STARt", start, ScpiQuantity::Frequency},
                                      {"[:SOURce]:FREQuency:STOP", stop, ScpiQuantity::Frequency},
                                      {"[:SOURce]:SWEep:POINts", points, ScpiQuantity::Count}},
                         .queries = {{"[:SOURce]:SWEep:STEP?", step}}}};
}

} // namespace

/// The definition of a linear frequency sweep.
class FreqSweepModule final : public Extension
{
public:
    explicit FreqSweepModule(int id) : Extension(id, content()) {}
};

} // namespace Orvia

VQM_MODULE(Orvia::FreqSweepModule)
