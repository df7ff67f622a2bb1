#pragma once

#include "platform/Export.h"

#include <QString>

#include <functional>

namespace Orvia {

/// Draws the progress display. Installed by the launcher; the operations are called on whatever thread
/// reports progress, one at a time, and must not call VQMProgressBar or wait for a thread that may. Ids count
/// from 0; bars and buttons share them.
class VQM_EXPORT VQMProgressHandler
{
public:
    virtual ~VQMProgressHandler();
    virtual void barCreated(int id, const QString &title) = 0;
    virtual void barUpdated(int id, int percent) = 0;
    virtual void barRemoved(int id) = 0;
    virtual void buttonCreated(int id, const QString &title, const std::function<void()> &pressed) = 0;
    virtual void buttonRemoved(int id) = 0;
};

/// The progress bars of start-up. Any thread. Without a handler bars are counted but not drawn; unknown ids
/// are ignored, percentages outside 0 to 100 are passed on as they are.
class VQM_EXPORT VQMProgressBar
{
public:
    static bool isProgressHandlerInstalled();
    /// Returns the id of the new bar. The flag of this and the next operations is not used.
    static int createProgressBar(const char *title, bool flag);
    static void updateProgressBar(int id, int percent, bool flag);
    static void removeProgressBar(int id, bool flag);
    /// A button on the progress display; `pressed` runs on the thread of the display, outside of the
    /// handler's operations, and may call anything.
    static int createButton(const char *title, std::function<void()> pressed);
    static void removeButton(int id, bool flag);

    /// For the launcher: adds a handler, not owned, and tells it of the bars and buttons there are. A handler
    /// is removed before it is destroyed; once removeProgressHandler() has returned it is called no more.
    static void installProgressHandler(VQMProgressHandler *handler);
    static void removeProgressHandler(VQMProgressHandler *handler);
};

} // namespace Orvia
