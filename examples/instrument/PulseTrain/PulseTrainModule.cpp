#include "examples/instrument/Extension/Extension.h"
#include "examples/instrument/PulseMod/PulseSettings.h"

namespace Orvia {

namespace {

constexpr NumberSetting count = {"train/count", 1, 1000, 1};
constexpr NumberSetting pause = {"train/pause", 0, 10, 0}; // between two trains, in s

double duration(const SettingsDatabase &settings)
{
    return storedNumber(settings, count) * storedNumber(settings, pulsePeriodSetting) +
           storedNumber(settings, pause);
}

ExtensionContent content()
{
    return {.commands = {.settings = {{"[:SOURce]:PULM:TRAin:COUNt", count, ScpiQuantity::Count},
                                      {"[:SOURce]:PULM:TRAin:PAUSe", pause, ScpiQuantity::Time}},
                         .queries = {{"[:SOURce]:PULM:TRAin:DURation?", duration}}}};
}

} // namespace

/// Trains of pulses with a pause between them, option TRAIN.
class PulseTrainModule final : public Extension
{
public:
    explicit PulseTrainModule(int id) : Extension(id, content()) {}
};

} // namespace Orvia

VQM_MODULE(Orvia::PulseTrainModule)
