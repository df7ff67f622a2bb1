#pragma once

#include "diagnosis/ConfigurationSections.h"

namespace Orvia {

/// What the real readers take from the file. They leave their keys in the property store; what they would
/// say of syntax errors is not said. GUI thread.
ConfigurationContents readConfiguration(const QString &fileName);

/// Where the contents differ first, in one line; empty when they do not.
QString firstDifference(const ConfigurationContents &expected, const ConfigurationContents &read);

} // namespace Orvia
