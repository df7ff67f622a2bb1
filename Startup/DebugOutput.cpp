#include "Startup/DebugOutput.h"

#include "Startup/VQMMainStartupImplementation.h"
#include "platform/Debug.h"
#include "platform/VQMUtility.h"

namespace Orvia {

namespace {

constexpr int debugModule = 1;
constexpr int progressLevel = 3;

} // namespace

void VQMMainStartupImplementation::suDebugMsgOut(int kind, const QString &text, int level, int code)
{
    if (Debug::isActive(debugModule, level, kind))
        Debug::println(debugModule, kind, text, level, code, nullptr, -1);
    VQMUtility::traceMessage(text.toLatin1().constData());
}

void debugProgress(const JoinedText &line)
{
    if (Debug::isActive(debugModule, progressLevel, 0))
        Debug::println(debugModule, 0, QString::fromLatin1(line.c_str()), progressLevel, 0, nullptr, -1);
    VQMUtility::traceMessage(line.c_str());
}

} // namespace Orvia
