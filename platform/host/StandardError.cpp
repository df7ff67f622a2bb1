#include "platform/host/StandardError.h"

#include <QByteArray>

#include <cerrno>
#include <mutex>
#include <unistd.h>

namespace Orvia {

void writeStandardError(const QString &text)
{
    static std::mutex mutex; // a pipe may take a long line in several pieces
    const QByteArray line = text.toUtf8() + '\n';
    const std::lock_guard lock(mutex);
    for (qsizetype written = 0; written < line.size();) {
        const ssize_t count = ::write(STDERR_FILENO, line.constData() + written, line.size() - written);
        if (count < 0 && errno != EINTR)
            return;
        written += count > 0 ? count : 0;
    }
}

} // namespace Orvia
