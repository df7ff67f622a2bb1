#include "launcher/SingleInstance.h"

#include "Startup/VQMIntegrationStartup.h"
#include "launcher/Report.h"
#include "platform/TraceSpan.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace Orvia {

namespace {

constexpr const char *formatVariable = "PS_FORMAT";

/// The process list as the startup object counts in it, with the command as third column.
bool isSeenTwice(const char *loadList)
{
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

} // namespace

bool SingleInstance::lock(const char *loadList)
{
    const QString name = QString::fromLocal8Bit(loadList);
    m_lock = std::make_unique<QLockFile>(lockFileName(name));
    m_lock->setStaleLockTime(0); // locked for as long as the process lives
    // The file may name a process that is gone and whose number is in use again. While the holder lives, the
    // kernel's lock on the file keeps it from being removed.
    if (m_lock->tryLock(0) || (m_lock->error() == QLockFile::LockFailedError &&
                               m_lock->removeStaleLockFile() && m_lock->tryLock(0)))
        return true;
    if (m_lock->error() != QLockFile::LockFailedError) {
        report("cannot create " + m_lock->fileName() + "; a second instance would go unnoticed");
        return true;
    }
    qint64 pid = 0;
    QString host;
    QString program;
    if (!m_lock->getLockInfo(&pid, &host, &program))
        program = QStringLiteral("unknown program");
    report(QString("%1 is in use by process %2 (%3)").arg(name).arg(pid).arg(program));
    return false;
}

bool SingleInstance::isAlone(const char *loadList)
{
    const TraceSpan span("phase", "the single-instance test");
    if (!isSeenTwice(loadList))
        return true;
    report("another mainstartup runs with " + QString::fromLocal8Bit(loadList));
    return false;
}

} // namespace Orvia
