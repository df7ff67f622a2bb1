#include "launcher/Breadcrumb.h"

#include <QDateTime>
#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Orvia {

namespace {

// "MILLISECONDS TEXT", the time since 1970, padded with blanks to this length and a line feed.
constexpr int markLength = 512;

std::int64_t now()
{
    timespec time;
    ::clock_gettime(CLOCK_REALTIME, &time);
    return std::int64_t(time.tv_sec) * 1000 + time.tv_nsec / 1000000;
}

/// What an earlier process has left, in words; empty when that is no mark.
QString understood(const QByteArray &mark)
{
    const QByteArray line = mark.trimmed();
    const auto blank = line.indexOf(' ');
    bool isNumber = false;
    const qint64 time = line.left(blank).toLongLong(&isNumber);
    if (!isNumber || blank < 0)
        return QString();
    QString text = QString::fromUtf8(line.mid(blank + 1));
    const auto isControl = [](QChar character) { return character.category() == QChar::Other_Control; };
    std::replace_if(text.begin(), text.end(), isControl, QChar('?'));
    return text + QDateTime::fromMSecsSinceEpoch(time).toString("', at' yyyy-MM-dd HH:mm:ss");
}

} // namespace

Breadcrumb::~Breadcrumb()
{
    close();
}

std::optional<QString> Breadcrumb::open(const QString &fileName, QString *error)
{
    // Nonblocking: whatever the name stands for, the start does not wait for it.
    m_descriptor =
        ::open(QFile::encodeName(fileName).constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0644);
    struct stat status = {};
    if (m_descriptor < 0 || ::fstat(m_descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        *error = fileName + ": " + (m_descriptor < 0 ? qt_error_string(errno) : QString("no regular file"));
        close();
        return std::nullopt;
    }
    std::array<char, markLength + 1> left;
    const ssize_t length = ::pread(m_descriptor, left.data(), left.size(), 0);
    if (length <= 0)
        return std::nullopt;
    const QByteArray mark(left.data(), length);
    const QString text = length == markLength ? understood(mark) : QString();
    const bool isVoid = length <= markLength && mark.count('\0') == length; // the power failed meanwhile
    if (text.isEmpty() && !isVoid) {
        *error = fileName + ": holds something else and is left as it is";
        close();
        return std::nullopt;
    }
    clear();
    return isVoid ? std::nullopt : std::optional(text);
}

void Breadcrumb::mark(std::string_view text)
{
    if (m_descriptor < 0)
        return;
    std::array<char, markLength> mark;
    mark.fill(' ');
    char *out = std::to_chars(mark.data(), mark.data() + mark.size(), now()).ptr + 1;
    std::copy_n(text.begin(), std::min<std::size_t>(text.size(), mark.data() + markLength - 1 - out), out);
    mark.back() = '\n';
    // A full disk loses the mark; there is nothing better to do during a start.
    [[maybe_unused]] const ssize_t written = ::pwrite(m_descriptor, mark.data(), mark.size(), 0);
}

void Breadcrumb::clear()
{
    if (m_descriptor >= 0) [[maybe_unused]]
        const int result = ::ftruncate(m_descriptor, 0);
}

void Breadcrumb::close()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    m_descriptor = -1;
}

} // namespace Orvia
