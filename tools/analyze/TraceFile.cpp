#include "tools/analyze/TraceFile.h"

#include "diagnosis/TextPieces.h"

#include <QFile>

namespace Orvia {

namespace {

struct Line
{
    std::int64_t microseconds = 0;
    int thread = 0;
    std::string_view threadName;
    std::string_view text;
};

/// "    0.001234 [4711 init-context] text"
std::optional<Line> parseLine(std::string_view rest)
{
    Line line;
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    std::int64_t seconds = 0, fraction = 0;
    const char *end = rest.data() + rest.size();
    const auto [point, noSeconds] = std::from_chars(rest.data(), end, seconds);
    if (noSeconds != std::errc() || end - point < 7 || *point != '.' || seconds < 0 ||
        seconds > 1'000'000'000)
        return std::nullopt;
    const auto [rear, noFraction] = std::from_chars(point + 1, point + 7, fraction);
    if (noFraction != std::errc() || rear != point + 7 || fraction < 0)
        return std::nullopt;
    line.microseconds = seconds * 1'000'000 + fraction;
    rest.remove_prefix(static_cast<std::size_t>(rear - rest.data()));
    if (!take(&rest, " ["))
        return std::nullopt;
    const std::optional<int> thread = takeNumber(&rest);
    const std::size_t bracket = rest.find("] ");
    if (!thread || bracket == std::string_view::npos || !take(&rest, " "))
        return std::nullopt;
    line.thread = *thread;
    line.threadName = rest.substr(0, bracket - 1);
    line.text = rest.substr(bracket + 1);
    return line;
}

} // namespace

QString readTrace(const QString &fileName, StartupRecord *record)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return fileName + ": " + file.errorString();
    const QByteArray content = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return fileName + ": " + file.errorString();

    std::string_view rest(content.constData(), static_cast<std::size_t>(content.size()));
    int number = 0;
    for (std::size_t end; (end = rest.find('\n')) != std::string_view::npos; rest.remove_prefix(end + 1)) {
        ++number;
        const std::optional<Line> line = parseLine(rest.substr(0, end));
        if (!line)
            return QStringLiteral("%1:%2: not a line of a trace").arg(fileName).arg(number);
        record->addLine(line->microseconds, line->thread, line->threadName, line->text);
    }
    return number == 0 ? fileName + ": no trace: it has no whole line" : QString();
}

} // namespace Orvia
