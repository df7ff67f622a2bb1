#pragma once

#include "diagnosis/StartupRecord.h"

#include <QString>

namespace Orvia {

/// Tells the record what the trace file says. Zero bytes at its end and a last line without its end, as a
/// crash leaves them, are left out. Returns what is wrong, "FILE:LINE: ..." where it is about a line, empty
/// when nothing is.
QString readTrace(const QString &fileName, StartupRecord *record);

} // namespace Orvia
