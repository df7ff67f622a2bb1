#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Orvia {

class StartupRecord;

/// Trace lines for a StartupRecord that need not be understood at once: kept as they are, which is cheap,
/// without those that no summary tells of. Not thread-safe.
class KeptLines
{
public:
    void keep(std::int64_t microseconds, int thread, std::string_view threadName, std::string_view text);
    /// Tells the record all lines in their order, and keeps them no more.
    void tellTo(StartupRecord *record);

private:
    /// What stands before the text of a line.
    struct Head
    {
        std::int64_t microseconds;
        std::size_t length;
        std::size_t speaker; ///< index into m_speakers
    };

    /// A thread, which may change its name or leave its id to another.
    struct Speaker
    {
        int thread;
        std::string name;
    };

    static constexpr std::size_t none = std::string::npos;

    std::size_t speakerOf(int thread, std::string_view name);
    void append(const Head &head, std::string_view text);
    std::pair<Head, std::string_view> lineAt(std::size_t place) const;

    std::string m_lines; ///< one after the other, each a Head and its text
    std::vector<Speaker> m_speakers;
    std::size_t m_lastSpeaker = 0;
    std::int64_t m_lastTime = 0;
    std::size_t m_span = none;      ///< where the last line stands, if it is the begin of a span that may go
    std::size_t m_lastStage = none; ///< where the last two lines stand, if they are such a span
};

} // namespace Orvia
