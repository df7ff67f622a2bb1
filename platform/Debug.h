#pragma once

#include "platform/Export.h"

#include <QString>

#include <functional>

namespace Orvia {

/// The debug service: lines to standard error (and to a file when the property "DebugServer"/"logFile" names
/// one), and message boxes. Any thread.
class VQM_EXPORT Debug
{
public:
    /// Whether a line of this level (1 errors, 3 progress and information) is wanted of this module. The
    /// level of module N is the integer property "DebugServer"/"level.N"; unset means 1, errors only.
    static bool isActive(int moduleId, int level, int kind);
    /// Writes one line. `code` is the error code or 0; `file` may be null, `line` is then -1.
    static void println(int moduleId, int kind, const QString &text, int level, int code, const char *file,
                        int line);
    /// Shows a message box and returns once it has been closed, when the property
    /// "DebugServer"/"enableMessageBoxes" is not 0 and a presenter is installed; the line goes to standard
    /// error in every case. The further arguments (modal, severity, buttons and two reserved) describe the
    /// box to presenters that can use them.
    static void debugMessageBox(const QString &caption, const QString &text, bool modal, int severity,
                                int buttons, int reserved1, int reserved2);

    /// How message boxes are shown; called on whatever thread asks for a box, returns when it is closed.
    using MessageBoxPresenter = std::function<void(const QString &caption, const QString &text)>;
    /// For the launcher. An empty function removes the presenter.
    static void installMessageBoxPresenter(MessageBoxPresenter presenter);
};

} // namespace Orvia
