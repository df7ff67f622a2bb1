#pragma once

#include "examples/instrument/SourceSettings.h"

namespace Orvia {

/// The settings of the amplitude modulation.
inline constexpr NumberSetting amStateSetting = {"am/state", 0, 1, 0};
inline constexpr NumberSetting amDepthSetting = {"am/depth", 0, 100, 30};              ///< in percent
inline constexpr NumberSetting amFrequencySetting = {"am/frequency", 0.1, 100e3, 1e3}; ///< in Hz

} // namespace Orvia
