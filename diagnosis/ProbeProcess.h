#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>
#include <optional>
#include <sys/types.h>

namespace Orvia {

/// vqm-module-probe at work on one module library, in a process group of its own that is killed at the end.
/// Its standard output and error go nowhere.
class ProbeProcess
{
public:
    using Clock = std::chrono::steady_clock;

    /// How the process ended.
    struct End
    {
        int signal = 0; ///< 0: it ended by itself
        int exitCode = 0;
    };

    explicit ProbeProcess(const QString &modulePath);
    ~ProbeProcess();
    ProbeProcess(const ProbeProcess &) = delete;
    ProbeProcess &operator=(const ProbeProcess &) = delete;

    /// Why it could not be started; empty when it was.
    const QString &startError() const { return m_startError; }
    /// The next line that it wrote, without the line feed; none when there is none by then or the process has
    /// ended or writes what is no line.
    std::optional<QByteArray> nextLine(Clock::time_point deadline);
    /// Kills what is left of it; says how it ended when it had ended before.
    std::optional<End> finish();

private:
    bool start(const QByteArray &program, const QByteArray &module, int resultEnd);
    void takeOutput();

    QString m_startError;
    pid_t m_process = -1;
    int m_ended = -1;    ///< a process descriptor: readable once the process has ended
    int m_results = -1;  ///< end of the pipe
    bool m_open = false; ///< more may come
    QByteArray m_output; ///< read, but not yet taken
};

} // namespace Orvia
