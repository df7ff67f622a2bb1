#pragma once

#include "examples/instrument/SourceSettings.h"

namespace Orvia {

/// The settings of the pulse modulation; times in s.
inline constexpr NumberSetting pulseStateSetting = {"pulse/state", 0, 1, 0};
inline constexpr NumberSetting pulsePeriodSetting = {"pulse/period", 40e-9, 10, 10e-6};
inline constexpr NumberSetting pulseWidthSetting = {"pulse/width", 20e-9, 1, 1e-6};

} // namespace Orvia
