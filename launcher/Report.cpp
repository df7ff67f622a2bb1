#include "launcher/Report.h"

#include "platform/VQMUtility.h"

#include <cstdio>

namespace Orvia {

void report(const QString &text)
{
    const QByteArray line = ("mainstartup: " + text).toLocal8Bit();
    // In one call, so that the lines of several threads do not mix.
    std::fputs((line + '\n').constData(), stderr);
    VQMUtility::traceMessage(line.constData());
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
