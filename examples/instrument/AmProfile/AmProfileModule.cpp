#include "examples/instrument/AmMod/AmSettings.h"
#include "examples/instrument/Extension/Extension.h"

#include <cstddef>
#include <iterator>

namespace Orvia {

namespace {

struct Profile
{
    double depth;     ///< in percent
    double frequency; ///< in Hz
};

constexpr Profile profiles[] = {
    {30, 1000}, // receiver sensitivity
    {80, 1000}, // radiated immunity
    {30, 1020}, // identification of a radio beacon
};

/// Number of the profile, from 1; 0 when depth or frequency were chosen freely.
constexpr NumberSetting profile = {"am/profile", 0, std::size(profiles), 0};

/// A profile brings its depth and frequency along; whoever sets one of these leaves the profile.
bool followProfile(const SettingsDatabase & /*settings*/, SettingsMap *changed)
{
    const auto chosen = changed->find(profile.key);
    const double number = chosen != changed->end() ? settingNumber(chosen->second, profile) : 0;
    if (number > 0) {
        const Profile &values = profiles[static_cast<std::size_t>(number) - 1];
        changed->insert_or_assign(amDepthSetting.key, numberText(values.depth));
        changed->insert_or_assign(amFrequencySetting.key, numberText(values.frequency));
    } else if (changed->contains(amDepthSetting.key) || changed->contains(amFrequencySetting.key)) {
        changed->insert_or_assign(profile.key, "0");
    }
    return true;
}

ExtensionContent content()
{
    return {
        .rule = followProfile,
        .commands = {.settings = {{"[:SOURce]:AM:PROFile", profile, ScpiQuantity::Count}}, .queries = {}}};
}

} // namespace

/// Ready-made settings for the amplitude modulation.
class AmProfileModule final : public Extension
{
public:
    explicit AmProfileModule(int id) : Extension(id, content()) {}
};

} // namespace Orvia

VQM_MODULE(Orvia::AmProfileModule)
