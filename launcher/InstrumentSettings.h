#pragma once

#include "launcher/CommandLine.h"

#include <QString>

#include <optional>

namespace Orvia {

/// Loads the properties given with --properties or, without that, those beside the configuration, if any.
/// What is wrong with them; empty when nothing is.
QString loadProperties(const CommandLine &commandLine, const QString &configuration);

/// The instrument family, from --family or the property Instrument/Family; none, with the reason in `error`,
/// when neither gives one. `isMissing`, if given, tells whether there is no property at all.
std::optional<HwESigGenFamily> instrumentFamily(const CommandLine &commandLine, QString *error,
                                                bool *isMissing = nullptr);

} // namespace Orvia
