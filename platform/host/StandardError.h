#pragma once

#include <QString>

namespace Orvia {

/// Writes `text` and a line feed to standard error in one piece, in UTF-8. Any thread; lines of several
/// threads never mix.
void writeStandardError(const QString &text);

} // namespace Orvia
