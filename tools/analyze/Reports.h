#pragma once

#include "diagnosis/StartupRecord.h"

#include <QByteArray>

#include <string>

namespace Orvia {

/// The outcome, when which stage was reached, and how the run ended: in order or where it died.
std::string runSummary(const StartupRecord &record);

/// How the run ended, one line each; the threads' whereabouts if it did not end in order.
std::vector<std::string> endOfRun(const StartupRecord &record);

/// The modules, the one that took longest first, with the milliseconds in each operation. What runs inside an
/// operation on behalf of another module counts there only.
std::string blame(const StartupRecord &record);

/// The chain of phases and of what ran in them that decided when start-up was over, with the waits between
/// the threads.
std::string criticalPath(const StartupRecord &record);

/// A chart (SVG) of the start-up; with the shutdown if `all`.
QByteArray chart(const StartupRecord &record, bool all);

/// The record in Chrome's trace event format (JSON).
QByteArray chromeTrace(const StartupRecord &record);

} // namespace Orvia
