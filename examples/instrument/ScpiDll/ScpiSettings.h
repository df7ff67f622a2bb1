#pragma once

#include "examples/instrument/ScpiRegistry.h"

#include <cstddef>
#include <string>

namespace Orvia {

class ScpiSession;
struct ScpiUnit;

/// Carries out the unit when it is the setting's command or query; false when it is neither. A query may ask
/// for MINimum, MAXimum or DEFault. Throws ScpiError.
bool runScpiSetting(ScpiSession *session, const ScpiSetting &setting, const ScpiUnit &unit,
                    std::string *response);

/// Throws ScpiError when there are fewer or more.
void checkParameterCount(const ScpiUnit &unit, std::size_t minimum, std::size_t maximum);

} // namespace Orvia
