#include "platform/VQMUtility.h"

#include "platform/VQMProperties.h"
#include "xmlconfig/SMenuTree.h"

#include <QCoreApplication>
#include <QFile>
#include <QStringList>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <exception>
#include <limits>
#include <mutex>
#include <sys/sysinfo.h>

namespace Orvia {

namespace {

constinit std::atomic<bool> startupComplete = false;
constinit std::atomic<VQMErrorManagerHook *> errorManagerHook = nullptr;

// Never destroyed at exit: whoever shows the menu may outlive this library's statics.
std::map<QString, SMenuTree *> *menu = nullptr;
std::map<QString, QString> *languageNames = nullptr;

/// What other threads have for the GUI thread, in order; they wait until it is done.
struct GuiWork
{
    std::mutex mutex;
    std::deque<const std::function<void()> *> waiting;
};

GuiWork &guiWork()
{
    static GuiWork &instance = *new GuiWork; // never destroyed: threads may ask to the very end
    return instance;
}

void runNextGuiWork()
{
    const std::function<void()> *next = nullptr;
    {
        const std::lock_guard lock(guiWork().mutex);
        next = guiWork().waiting.front();
        guiWork().waiting.pop_front();
    }
    (*next)();
}

/// The sum of the named rows of /proc/meminfo in KiB, or -1 when one of them is missing.
qint64 kernelFigure(std::initializer_list<QByteArrayView> rows)
{
    QFile file("/proc/meminfo");
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    const QList<QByteArray> lines = file.readAll().split('\n');
    qint64 sum = 0;
    for (const QByteArrayView row : rows) {
        const auto line = std::find_if(lines.begin(), lines.end(), [row](const QByteArray &candidate) {
            return candidate.startsWith(row) && candidate.mid(row.size()).startsWith(':');
        });
        if (line == lines.end())
            return -1;
        sum += line->mid(row.size() + 1).simplified().split(' ').first().toLongLong();
    }
    return sum;
}

} // namespace

VQMErrorManagerHook::~VQMErrorManagerHook() = default;

void VQMUtility::setStartupComplete(int /*parts*/)
{
    startupComplete = true;
}

bool VQMUtility::isStartupComplete()
{
    return startupComplete;
}

int VQMUtility::determineAvailableVirtualMemoryMb()
{
    qint64 mebibytes = kernelFigure({"MemAvailable", "SwapFree"}) / 1024;
    if (mebibytes <= 0) { // no such figures: what is free at any rate
        struct sysinfo info = {};
        ::sysinfo(&info);
        mebibytes = static_cast<qint64>((quint64(info.freeram) + info.freeswap) * info.mem_unit >> 20);
    }
    return static_cast<int>(std::min<qint64>(mebibytes, std::numeric_limits<int>::max()));
}

bool VQMUtility::isGuiEnabled()
{
    return VQMProperties::getStringProperty("StartupProcess", "Gui", "1", 0, nullptr) != "0";
}

VQMErrorManagerHook *VQMUtility::getErrorManagerHook()
{
    return errorManagerHook;
}

void VQMUtility::setErrorManagerHook(VQMErrorManagerHook *hook)
{
    errorManagerHook = hook;
}

// The event carries nothing and standard mutexes do the waiting: thread checkers see nothing of Qt's own.
void VQMUtility::runOnGuiThread(const std::function<void()> &work)
{
    QCoreApplication *application = QCoreApplication::instance();
    if (QThread::currentThread() == application->thread()) {
        work();
        return;
    }
    std::mutex mutex;
    std::condition_variable finished;
    bool isFinished = false;
    std::exception_ptr thrown;
    const std::function<void()> run = [&] {
        const std::lock_guard lock(mutex);
        try {
            work();
        } catch (...) {
            thrown = std::current_exception();
        }
        isFinished = true;
        finished.notify_one();
    };
    {
        const std::lock_guard lock(guiWork().mutex);
        guiWork().waiting.push_back(&run);
    }
    QMetaObject::invokeMethod(
        application, [] { runNextGuiWork(); }, Qt::QueuedConnection);
    std::unique_lock lock(mutex);
    finished.wait(lock, [&] { return isFinished; });
    if (thrown)
        std::rethrow_exception(thrown);
}

void VQMUtility::setMenuDescription(std::map<QString, SMenuTree *> *description)
{
    if (menu != nullptr && description != menu) {
        for (const auto &[key, node] : *menu)
            delete node;
        delete menu;
    }
    menu = description;
}

void VQMUtility::setLanguageList(std::map<QString, QString> *languages)
{
    if (languages != languageNames)
        delete languageNames;
    languageNames = languages;
}

std::map<QString, SMenuTree *> *VQMUtility::menuDescription()
{
    return menu;
}

std::map<QString, QString> *VQMUtility::languageList()
{
    return languageNames;
}

int VQMUtility::getMenuLevelIndicator(int level)
{
    // Items are numbered up to 990 in a subgroup, subgroups up to 99 in a group: levels never overlap.
    constexpr int subgroup = 1000;
    constexpr int group = 100000;
    static_assert(subgroup > 990 && group > 99 * subgroup + 990);
    return level == 0 ? group : level == 1 ? subgroup : 1;
}

QString VQMUtility::buildString(const QString &p1, const QString &p2, const QString &p3, const QString &p4,
                                const QString &p5, const QString &p6, const QString &p7, const QString &p8,
                                const QString &p9, const QString &p10, const QString &p11, const QString &p12,
                                const QString &p13, const QString &p14, const QString &p15)
{
    QStringList pieces = {p1, p2, p3, p4, p5, p6, p7, p8, p9, p10, p11, p12, p13, p14, p15};
    while (!pieces.isEmpty() && pieces.last().isNull())
        pieces.removeLast();
    return pieces.join(':');
}

} // namespace Orvia
