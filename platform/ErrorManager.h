#pragma once

#include "platform/Export.h"

#include <QList>
#include <QString>

namespace Orvia {

/// The process's error manager: files error tables, and keeps the announcements of signalled errors in a
/// bounded queue, oldest first. All operations may be called on any thread.
class VQM_EXPORT CErrorManager
{
public:
    /// One row of an error table. A table ends with a row whose code is -1.
    struct SErrorDefinition
    {
        int code;
        int severity; ///< 1 error, 2 warning, 3 information
        int scpiCode; ///< number in the SCPI error queue; 0 for none
        int flag;
        const char *text;
        const char *text2;
        const char *text3;
    };

    /// A signalled error waiting to be read or destroyed.
    struct Announcement
    {
        unsigned int id;
        int code;
        int severity;
        int scpiCode;
        QString text;   ///< the table's text
        QString detail; ///< what the caller of signal() added
    };

    /// The queue holds this many announcements. What comes when it is full turns the newest into
    /// SCPI -350, "Queue overflow".
    static constexpr int queueLength = 64;

    /// Files `table` under `registrationId`, replacing what that id held; null takes it out. The table is not
    /// copied: a module takes its own out again before its library is closed.
    void registerErrors(const SErrorDefinition *table, int registrationId);
    /// Announces the error with `code`. A code that no table holds is announced all the same, with
    /// severity 1, SCPI -300 and a text that says so.
    void signal(int code, const QString &text);

    /// Ids that are not in the queue are ignored.
    void destroyAnnouncement(unsigned int id);
    void destroyAllAnnouncements();

    QList<Announcement> announcements() const;
    /// Takes out the oldest announcement that has a SCPI number; false when there is none.
    bool takeScpiError(Announcement *taken);
};

/// The one error manager; created at the first call, never destroyed.
VQM_EXPORT CErrorManager *ErrorManager();

} // namespace Orvia
