#pragma once

#include <string>

namespace Orvia {

class ScpiSession;
struct ScpiUnit;

/// Carries out one command or query and returns its response, empty for a command. Throws ScpiError.
std::string runScpiCommand(ScpiSession *session, const ScpiUnit &unit);

} // namespace Orvia
