#pragma once

#include <QString>

#include <exception>

namespace Orvia {

/// One line on standard error, headed "mainstartup: ". Any thread.
void report(const QString &text);

/// What the exception says of itself.
QString exceptionText(const std::exception_ptr &thrown);

} // namespace Orvia
