#pragma once

#include "platform/Export.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <map>

namespace Orvia {

struct SMenuTree;

/// Takes alerts while no GUI object exists. Position 2 of its virtual table is the alert.
class VQM_EXPORT VQMErrorManagerHook
{
public:
    virtual ~VQMErrorManagerHook();
    /// Any thread.
    virtual void alert(const QString &caption, const QString &text) = 0;
};

/// Told every line of the trace. Called on the thread that traces, one line at a time and in their order; it
/// must not trace itself.
class VQM_EXPORT VQMTraceListener
{
public:
    virtual ~VQMTraceListener();
    /// `microseconds` since tracing began. The texts are valid during the call only.
    virtual void traced(std::int64_t microseconds, int thread, const char *threadName, const char *text) = 0;
};

/// Services shared by all parts of the firmware. Any thread, except where said otherwise.
class VQM_EXPORT VQMUtility
{
public:
    /// One line of the trace, with a monotonic time stamp and the thread; nothing when tracing is off. The
    /// line survives a crash of the process once the call has returned.
    static void traceMessage(const char *text);
    /// Whether traceMessage() does anything, for lines that are costly to make.
    static bool isTracing();
    /// Start-up is over; `parts` is -1.
    static void setStartupComplete(int parts);
    static bool isStartupComplete();
    /// Memory that can still be had, swap included, in MiB.
    static int determineAvailableVirtualMemoryMb();
    /// False when the property "StartupProcess"/"Gui" is "0".
    static bool isGuiEnabled();
    static VQMErrorManagerHook *getErrorManagerHook();
    /// Runs `work` on the GUI thread, after what was posted there before, and returns when it is done: at
    /// once on the GUI thread, elsewhere once the thread gets to it, so not while it waits for the caller. No
    /// code of the caller's library is left to run there afterwards. What `work` throws leaves here.
    static void runOnGuiThread(const std::function<void()> &work);

    /// Take over container and nodes; the readers go on filling them while they read. GUI thread.
    static void setMenuDescription(std::map<QString, SMenuTree *> *menu);
    static void setLanguageList(std::map<QString, QString> *languages);
    static std::map<QString, SMenuTree *> *menuDescription();
    static std::map<QString, QString> *languageList();
    /// Weight of a menu level in an entry's position: level 0 the groups, 1 the subgroups.
    static int getMenuLevelIndicator(int level);
    /// The pieces up to the last one that is not a null string, joined with ":" (an empty piece between two
    /// others stays empty).
    static QString buildString(const QString &p1, const QString &p2, const QString &p3, const QString &p4,
                               const QString &p5, const QString &p6, const QString &p7, const QString &p8,
                               const QString &p9, const QString &p10, const QString &p11, const QString &p12,
                               const QString &p13, const QString &p14, const QString &p15);

    /// For the launcher. The hook is not owned; null removes it.
    static void setErrorManagerHook(VQMErrorManagerHook *hook);
    /// Starts the trace in a new file; false, with the reason in `error`, when it cannot be created. A full
    /// disk ends the trace, which is said. After a crash the lines are followed by zero bytes.
    static bool startTrace(const QString &fileName, QString *error);
    /// Cuts the file to the lines written. Called when nobody traces any more.
    static void stopTrace();
    /// The listener, of which there is one, is not owned; null removes it, and it is called no more then.
    static void setTraceListener(VQMTraceListener *listener);
};

} // namespace Orvia
