#pragma once

#include "launcher/CommandLine.h"

namespace Orvia {

/// Runs "mainstartup --check": prints the findings, with --probe the plan, and a summary to standard output,
/// or all of it as JSON. Returns the exit code, one of checkExitCodes.
int runCheck(const CommandLine &commandLine);

} // namespace Orvia
