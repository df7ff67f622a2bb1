#include "platform/Debug.h"

#include "platform/VQMProperties.h"
#include "platform/host/PropertyRevision.h"
#include "platform/host/StandardError.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QStringList>

#include <atomic>
#include <cstdint>
#include <mutex>

namespace Orvia {

namespace {

constexpr const char *section = "DebugServer";

struct State
{
    std::mutex mutex;
    QFile logFile; ///< not open when it could not be opened: that is said once, until another file is named
    Debug::MessageBoxPresenter presenter;
};

State &state()
{
    static State &instance = *new State; // never destroyed: threads may write to the very end
    return instance;
}

/// The further lines of a text with several stand indented below the first.
QString indented(QString text)
{
    while (text.endsWith('\n'))
        text.chop(1);
    return text.replace('\n', "\n    ");
}

/// Whether the log file is open afterwards.
bool openLogFile(QFile &file, const QString &path)
{
    if (file.fileName() == path)
        return file.isOpen();
    file.close();
    file.setFileName(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered))
        return true;
    writeStandardError(QStringLiteral("debug log %1: %2").arg(path, file.errorString()));
    return false;
}

void appendToLogFile(const QString &text)
{
    const QString name = VQMProperties::getStringProperty(section, "logFile", QString(), 0, nullptr);
    if (name.isEmpty())
        return;
    const QString path = QDir(VQMProperties::directory()).absoluteFilePath(name);
    const QString time = QDateTime::currentDateTime().toString(Qt::ISODateWithMs);
    const QByteArray line = (time + ' ' + text + '\n').toUtf8();

    const std::lock_guard lock(state().mutex);
    QFile &file = state().logFile;
    if (openLogFile(file, path) && file.write(line) != line.size()) {
        writeStandardError(QStringLiteral("debug log %1: %2").arg(path, file.errorString()));
        file.close();
    }
}

void writeLine(const QString &text)
{
    writeStandardError(text);
    appendToLogFile(text);
}

int debugLevel(int moduleId)
{
    return VQMProperties::getIntegerProperty(section, "level." + QString::number(moduleId), 1, 0);
}

/// The levels of the modules with small ids, which speak most, with the revision of the properties that they
/// are of.
class LevelCache
{
public:
    int level(int moduleId)
    {
        if (moduleId < 0 || moduleId >= size)
            return debugLevel(moduleId);
        const std::uint32_t revision = propertyRevision() + 1; // 0 stands for an empty entry
        const std::uint64_t kept = m_entries[moduleId];
        if (kept >> 32 == revision)
            return static_cast<std::int32_t>(kept);
        const int level = debugLevel(moduleId);
        m_entries[moduleId] = std::uint64_t(revision) << 32 | std::uint32_t(level);
        return level;
    }

private:
    static constexpr int size = 8;
    std::atomic<std::uint64_t> m_entries[size] = {};
};
constinit LevelCache levelCache;

/// What is left of a rich text on a terminal: its lines, without tags.
QString plainText(QString text)
{
    text.replace(QRegularExpression("<(br|li|/p|/h[1-6])\\b[^<>]*>"), "\n");
    text.remove(QRegularExpression("</?[A-Za-z][^<>]*>"));
    text.replace("&lt;", "<").replace("&gt;", ">").replace("&nbsp;", " ").replace("&amp;", "&");
    QStringList lines;
    for (const QString &line : text.split('\n'))
        if (!line.trimmed().isEmpty())
            lines.append(line.trimmed());
    return lines.join('\n');
}

} // namespace

bool Debug::isActive(int moduleId, int level, int /*kind*/)
{
    return level <= levelCache.level(moduleId);
}

void Debug::println(int moduleId, int /*kind*/, const QString &text, int /*level*/, int code,
                    const char *file, int line)
{
    QString output = QStringLiteral("[module %1] ").arg(moduleId);
    if (code != 0)
        output += QStringLiteral("error %1: ").arg(code);
    output += indented(text);
    if (file != nullptr)
        output += QStringLiteral(" (%1:%2)").arg(QString::fromLocal8Bit(file)).arg(line);
    writeLine(output);
}

void Debug::debugMessageBox(const QString &caption, const QString &text, bool /*modal*/, int /*severity*/,
                            int /*buttons*/, int /*reserved1*/, int /*reserved2*/)
{
    writeLine("[message] " + caption + ": " + indented(plainText(text)));
    if (VQMProperties::getIntegerProperty(section, "enableMessageBoxes", 0, 0) == 0)
        return;
    MessageBoxPresenter presenter;
    {
        const std::lock_guard lock(state().mutex);
        presenter = state().presenter;
    }
    if (presenter)
        presenter(caption, text);
}

void Debug::installMessageBoxPresenter(MessageBoxPresenter presenter)
{
    const std::lock_guard lock(state().mutex);
    state().presenter.swap(presenter);
}

} // namespace Orvia
