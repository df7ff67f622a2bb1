#include "diagnosis/KeptLines.h"

#include "diagnosis/StartupRecord.h"
#include "diagnosis/TextPieces.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace Orvia {

namespace {

/// Details of what other lines tell.
constexpr std::string_view details[] = {"Module Version ", "Module Interface Version:", "Initializing ",
                                        "...ok."};

/// Spans of which only a bad end counts. Of the last stage the time is told.
bool isPassing(std::string_view text)
{
    return take(&text, "begin look-up: ") ||
           (take(&text, "begin stage: ") && !text.starts_with("complete finished"));
}

} // namespace

void KeptLines::keep(std::int64_t microseconds, int thread, std::string_view threadName,
                     std::string_view text)
{
    m_lastTime = microseconds;
    const std::size_t speaker = speakerOf(thread, threadName);
    if (m_span != none && endsLastSpan(speaker, text)) {
        m_lines.resize(m_span);
        m_span = none;
        return;
    }
    if (std::any_of(std::begin(details), std::end(details),
                    [text](auto detail) { return text.starts_with(detail); }))
        return;
    m_span = isPassing(text) ? m_lines.size() : none;
    const Head head = {microseconds, text.size(), speaker};
    m_lines.append(reinterpret_cast<const char *>(&head), sizeof head).append(text);
}

void KeptLines::tellTo(StartupRecord *record)
{
    const auto tell = [&](std::int64_t time, const Speaker &speaker, std::string_view text) {
        record->addLine(time, speaker.thread, speaker.name, text);
    };
    for (std::string_view rest = m_lines; !rest.empty();) {
        Head head;
        std::memcpy(&head, rest.data(), sizeof head);
        tell(head.microseconds, m_speakers[head.speaker], rest.substr(sizeof head, head.length));
        rest.remove_prefix(sizeof head + head.length);
    }
    if (!m_speakers.empty())
        tell(m_lastTime, m_speakers[m_lastSpeaker], "");
    *this = KeptLines();
}

std::size_t KeptLines::speakerOf(int thread, std::string_view name)
{
    const auto isIt = [&](const Speaker &speaker) {
        return speaker.thread == thread && speaker.name == name;
    };
    if (m_lastSpeaker >= m_speakers.size() || !isIt(m_speakers[m_lastSpeaker])) {
        const auto known = std::find_if(m_speakers.begin(), m_speakers.end(), isIt);
        m_lastSpeaker = static_cast<std::size_t>(known - m_speakers.begin());
        if (known == m_speakers.end())
            m_speakers.push_back({thread, std::string(name)});
    }
    return m_lastSpeaker;
}

/// Whether this is the good end of the span at m_span, within which nobody has said anything.
bool KeptLines::endsLastSpan(std::size_t speaker, std::string_view text) const
{
    Head head;
    std::memcpy(&head, m_lines.data() + m_span, sizeof head);
    std::string_view begin(m_lines.data() + m_span + sizeof head, head.length);
    return take(&text, "end ") && take(&begin, "begin ") && text == before(begin, ": ") &&
           speaker == head.speaker;
}

} // namespace Orvia
