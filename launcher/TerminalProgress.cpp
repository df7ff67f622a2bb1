#include "launcher/TerminalProgress.h"

#include "launcher/Report.h"
#include "platform/Debug.h"

#include <cstdio>
#include <unistd.h>

namespace Orvia {

namespace {

constexpr int startupModule = 1;
constexpr int progressLevel = 3;

QString textOf(const QString &title, int percent)
{
    return QString("%1 %2 %").arg(title, -30).arg(percent, 3);
}

} // namespace

TerminalProgress::TerminalProgress()
    : m_redraws(isatty(STDERR_FILENO) != 0 && !Debug::isActive(startupModule, progressLevel, 0))
{
}

void TerminalProgress::barCreated(int id, const QString &title)
{
    m_bars[id].title = title;
}

void TerminalProgress::barUpdated(int id, int percent)
{
    const auto found = m_bars.find(id);
    if (found == m_bars.end())
        return;
    Bar &bar = found->second;
    if (m_redraws) {
        if (m_openLine != id)
            endLine();
        m_openLine = id;
        // The cursor returns to the front, so that an error line covers the bar instead of joining it.
        std::fputs(("\x1b[K" + textOf(bar.title, percent) + '\r').toLocal8Bit().constData(), stderr);
    } else if (percent / 10 != bar.tens) {
        report(textOf(bar.title, percent));
    }
    bar.tens = percent / 10;
}

void TerminalProgress::barRemoved(int id)
{
    if (m_openLine == id)
        endLine();
    m_bars.erase(id);
}

void TerminalProgress::buttonCreated(int, const QString &, const std::function<void()> &) {}

void TerminalProgress::buttonRemoved(int) {}

void TerminalProgress::endLine()
{
    if (m_openLine >= 0)
        std::fputc('\n', stderr);
    m_openLine = -1;
}

} // namespace Orvia
