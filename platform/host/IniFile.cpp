#include "platform/host/IniFile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSettings>
#include <QTemporaryFile>

#include <atomic>
#include <sys/mman.h>
#include <sys/stat.h>

namespace Orvia {

namespace {

constexpr qint64 maxFileSize = 16 << 20;

bool fail(QString *error, const QString &fileName, const QString &reason)
{
    *error = fileName + ": " + reason;
    return false;
}

bool readAll(const QString &fileName, QByteArray *contents, QString *error)
{
    QFile file(fileName);
    const QFileInfo info(file);
    if (info.exists() && !info.isFile()) // a pipe would keep the reader waiting
        return fail(error, fileName, "not a file");
    if (info.size() > maxFileSize)
        return fail(error, fileName, "too large for a property file");
    if (!file.open(QIODevice::ReadOnly))
        return fail(error, fileName, file.errorString());
    *contents = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return fail(error, fileName, file.errorString());
    if (contents->contains('\0'))
        return fail(error, fileName, "not a text file");
    return true;
}

/// Puts quotes around a plain value with commas, of which QSettings would make a list.
QByteArray protectedCommas(const QByteArray &line)
{
    const auto valueStart = line.indexOf('=') + 1;
    QByteArray value = line.mid(valueStart);
    if (!value.contains(',') || value.contains('"'))
        return line;
    const auto comment = value.indexOf(';');
    if (comment >= 0)
        value.truncate(comment);
    return line.left(valueStart) + '"' + value.trimmed() + '"';
}

/// False, with the reason, for a line that is no entry, section or comment.
bool preprocess(const QByteArray &contents, QByteArray *prepared, QString *reason)
{
    const QByteArray byteOrderMark = "\xef\xbb\xbf";
    int number = 0;
    bool continued = false;
    for (QByteArray line : contents.split('\n')) {
        if (++number == 1 && line.startsWith(byteOrderMark))
            line.remove(0, byteOrderMark.size());
        line = line.trimmed();
        const bool continues = line.endsWith('\\');
        const bool isEntry = !line.isEmpty() && !line.startsWith(';') && !line.startsWith('#');
        if (isEntry && !continued) {
            if (line.startsWith('[') ? !line.contains(']') : line.indexOf('=') <= 0) {
                *reason = QStringLiteral("line %1: neither key=value nor [section]").arg(number);
                return false;
            }
            if (!line.startsWith('[') && !continues)
                line = protectedCommas(line);
        }
        continued = isEntry && continues;
        *prepared += line + '\n';
    }
    return true;
}

/// Makes a file of it that needs no room on a disk, which may be full, and that never stays behind.
bool openInMemory(const QByteArray &contents, QFile *file)
{
    // Of a file with the name, size and time of an earlier one QSettings believes that it has read it.
    static std::atomic<int> number = 0;
    const timespec time = {++number, 0};
    const timespec times[] = {time, time};
    return file->open(::memfd_create("properties", MFD_CLOEXEC), QIODevice::ReadWrite,
                      QFileDevice::AutoCloseHandle) &&
           file->write(contents) == contents.size() && file->flush() &&
           ::futimens(file->handle(), times) == 0;
}

} // namespace

QString iniKey(const QString &section, const QString &key)
{
    return section.isEmpty() || section == QLatin1String("General") ? key : section + '/' + key;
}

bool readIniFile(const QString &fileName, IniValues *values, QString *error)
{
    QByteArray contents, prepared;
    QString reason;
    if (!readAll(fileName, &contents, error))
        return false;
    if (!preprocess(contents, &prepared, &reason))
        return fail(error, fileName, reason);

    QFile copy;
    if (!openInMemory(prepared, &copy))
        return fail(error, fileName, "copy in memory: " + copy.errorString());
    QSettings settings("/proc/self/fd/" + QString::number(copy.handle()), QSettings::IniFormat);
    const QStringList keys = settings.allKeys();
    if (settings.status() != QSettings::NoError)
        return fail(error, fileName, "malformed");
    for (const QString &key : keys) {
        const auto slash = key.lastIndexOf('/');
        (*values)[iniKey(key.left(slash < 0 ? 0 : slash), key.mid(slash + 1))] =
            settings.value(key).toStringList().join(',');
    }
    return true;
}

bool writeIniFile(const QString &fileName, const IniValues &values, QString *error)
{
    QTemporaryFile temporary;
    if (!temporary.open())
        return fail(error, fileName, "temporary copy: " + temporary.errorString());
    QSettings settings(temporary.fileName(), QSettings::IniFormat);
    for (const auto &[key, value] : values)
        settings.setValue(key, value);
    settings.sync();
    QFile source(temporary.fileName()); // another file than the open one: QSettings has replaced it
    if (settings.status() != QSettings::NoError || !source.open(QIODevice::ReadOnly))
        return fail(error, fileName, "temporary copy: cannot be written");
    const QByteArray contents = source.readAll();

    QSaveFile target(fileName);
    if (!target.open(QIODevice::WriteOnly) || target.write(contents) != contents.size() || !target.commit())
        return fail(error, fileName, target.errorString());
    return true;
}

} // namespace Orvia
