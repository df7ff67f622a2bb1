#include "launcher/SingleInstance.h"

#include "Startup/VQMIntegrationStartup.h"
#include "launcher/Report.h"
#include "platform/TraceSpan.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace Orvia {

namespace {

constexpr const char *formatVariable = "PS_FORMAT";
constexpr auto patience = std::chrono::seconds(5); ///< with others that are about to end
constexpr auto interval = std::chrono::milliseconds(50);

/// The process list as the startup object counts in it, with the command as third column.
bool isSeenTwice(const char *loadList)
{
    std::atomic_ref(VQMIntegrationStartup::sm_preventFlag).store(false); // of the time before
    const bool wasSet = qEnvironmentVariableIsSet(formatVariable);
    const QByteArray before = qgetenv(formatVariable);
    qputenv(formatVariable, "pid,tty,args");
    VQMIntegrationStartup::setPreventFlag(QString::fromLocal8Bit(loadList));
    if (wasSet)
        qputenv(formatVariable, before);
    else
        qunsetenv(formatVariable);
    return VQMIntegrationStartup::getPreventFlag();
}

QString lockFileName(const QString &loadList)
{
    const QFileInfo file(loadList);
    const QString path = file.exists() ? file.canonicalFilePath() : file.absoluteFilePath();
    const QByteArray hash = QCryptographicHash::hash(path.toUtf8(), QCryptographicHash::Sha256).toHex();
    const QString runtimeFolder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    const QString folder = runtimeFolder.isEmpty() ? QDir::tempPath() : runtimeFolder;
    return folder + "/mainstartup-" + QString::fromLatin1(hash.left(16)) + ".lock";
}

/// Whether the name still stands for the open file: the last holder removes it while others wait at it.
bool isFileAt(const QByteArray &fileName, int descriptor)
{
    struct stat opened = {};
    struct stat named = {};
    return ::fstat(descriptor, &opened) == 0 && ::stat(fileName.constData(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

/// What the holder has written into the file; it may not have got that far.
QString holderOf(int descriptor)
{
    char text[32];
    const ssize_t length = ::pread(descriptor, text, sizeof text, 0);
    const QByteArray pid = QByteArray(text, std::max<ssize_t>(length, 0)).split('\n').first();
    return pid.isEmpty() ? QString("another mainstartup")
                         : QString("process %1 (mainstartup)").arg(QString::fromLatin1(pid));
}

} // namespace

SingleInstance::~SingleInstance()
{
    if (m_descriptor < 0)
        return;
    ::unlink(m_fileName.constData());
    ::close(m_descriptor);
}

bool SingleInstance::lock(const char *loadList)
{
    const QString name = QString::fromLocal8Bit(loadList);
    m_fileName = QFile::encodeName(lockFileName(name));
    int descriptor;
    while ((descriptor = ::open(m_fileName.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0644)) >=
           0) {
        if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
            if (errno == EWOULDBLOCK) {
                report(QString("%1 is in use by %2").arg(name, holderOf(descriptor)));
                ::close(descriptor);
                return false;
            }
            break;
        }
        if (isFileAt(m_fileName, descriptor)) {
            m_descriptor = descriptor;
            const QByteArray text = QByteArray::number(::getpid()) + "\nmainstartup\n";
            if (::ftruncate(descriptor, 0) != 0 ||
                ::pwrite(descriptor, text.constData(), text.size(), 0) != text.size())
                report(QFile::decodeName(m_fileName) + ": " + qt_error_string(errno));
            return true;
        }
        ::close(descriptor);
    }
    report("cannot create " + QFile::decodeName(m_fileName) + "; a second instance would go unnoticed");
    if (descriptor >= 0)
        ::close(descriptor);
    return true;
}

bool SingleInstance::isAlone(const char *loadList) const
{
    const TraceSpan span("phase", "the single-instance test");
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (isSeenTwice(loadList)) {
        if (m_descriptor < 0 || std::chrono::steady_clock::now() > deadline) {
            report("another mainstartup runs with " + QString::fromLocal8Bit(loadList));
            return false;
        }
        std::this_thread::sleep_for(interval);
    }
    return true;
}

} // namespace Orvia
