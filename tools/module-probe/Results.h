#pragma once

#include "diagnosis/ProbeProtocol.h"

#include <string>

namespace Orvia::probe {

/// Write the lines of diagnosis/ProbeProtocol.h at once, so that they are out whatever comes next.
void announce(Step step);
__attribute__((format(printf, 1, 2))) void result(const char *format, ...);
void textResult(const char *what, const char *text);
void defect(const char *rule, const std::string &text);
void note(const char *rule, const std::string &text);

} // namespace Orvia::probe
