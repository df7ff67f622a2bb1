#pragma once

#include "platform/VQMProgressBar.h"

#include <map>

namespace Orvia {

/// Progress bars on standard error: a line a bar, redrawn where a terminal shows it undisturbed. Elsewhere,
/// in a log or between debug lines, a line for every ten percent.
class TerminalProgress : public VQMProgressHandler
{
public:
    TerminalProgress();

    void barCreated(int id, const QString &title) override;
    void barUpdated(int id, int percent) override;
    void barRemoved(int id) override;
    void buttonCreated(int id, const QString &title, const std::function<void()> &pressed) override;
    void buttonRemoved(int id) override;

private:
    struct Bar
    {
        QString title;
        int tens = -1; ///< the step last shown, in ten percents
    };

    void endLine();

    const bool m_redraws;
    int m_openLine = -1; ///< the bar whose line is being redrawn
    std::map<int, Bar> m_bars;
};

} // namespace Orvia
