#pragma once

#include "diagnosis/StartupRecord.h"

namespace Orvia {

/// The outcome of a start-up for people to read: how many modules are up and in what time, then a line for
/// every one that is not and everything else that went wrong. Plain lines, without prefix.
std::vector<std::string> summaryOf(const StartupRecord &record);

/// "0.42 s".
std::string secondsText(std::int64_t microseconds, int decimals = 2);

} // namespace Orvia
