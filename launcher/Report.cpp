#include "launcher/Report.h"

#include <cstdio>

namespace Orvia {

void report(const QString &text)
{
    // In one call, so that the lines of several threads do not mix.
    std::fputs(("mainstartup: " + text + '\n').toLocal8Bit().constData(), stderr);
}

QString exceptionText(const std::exception_ptr &thrown)
{
    try {
        std::rethrow_exception(thrown);
    } catch (const std::exception &exception) {
        return QString::fromLocal8Bit(exception.what());
    } catch (const char *text) {
        return QString::fromLocal8Bit(text);
    } catch (...) {
        return QStringLiteral("an exception of unknown type");
    }
}

} // namespace Orvia
