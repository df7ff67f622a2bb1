#include "examples/instrument/Extension/Extension.h"

#include <cmath>

namespace Orvia {

namespace {

constexpr NumberSetting state = {"correction/state", 0, 1, 0};
constexpr NumberSetting loss = {"correction/loss", 0, 60, 0}; // in dB at the reference frequency
constexpr double referenceFrequency = 1e9;

/// Level at the far end of the cable. Its loss grows with the root of the frequency (skin effect).
double levelAtTheEnd(const SettingsDatabase &settings)
{
    const double level = storedNumber(settings, levelSetting);
    if (storedNumber(settings, state) == 0)
        return level;
    return level - storedNumber(settings, loss) *
                       std::sqrt(storedNumber(settings, frequencySetting) / referenceFrequency);
}

ExtensionContent content()
{
    return {.commands = {.settings = {{"[:SOURce]:CORRection[:STATe]", state, ScpiQuantity::Switch},
                                      {"[:SOURce]:CORRection:LOSS", loss, ScpiQuantity::Ratio}},
                         .queries = {{"[:SOURce]:CORRection:LEVel?", levelAtTheEnd}}}};
}

} // namespace

/// User correction, option CORRECTION: takes the loss of the cable into account when the level is read back.
class CableLossModule final : public Extension
{
public:
    explicit CableLossModule(int id) : Extension(id, content()) {}
};

} // namespace Orvia

VQM_MODULE(Orvia::CableLossModule)
