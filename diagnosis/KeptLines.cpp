#include "diagnosis/KeptLines.h"

#include "diagnosis/StartupRecord.h"
#include "diagnosis/TextPieces.h"

#include <algorithm>
#include <cstring>

namespace Orvia {

namespace {

constexpr std::string_view lastStageBegins = "begin stage: complete finished";

/// A detail of what other lines tell.
bool isDetail(std::string_view text)
{
    return text.starts_with("Module Version ") || text.starts_with("Module Interface Version:") ||
           text.starts_with("Initializing ") || text.starts_with("...ok.");
}

/// Spans of which only a bad end counts.
bool isPassing(std::string_view text)
{
    return text.starts_with("begin look-up: ") || text.starts_with("begin stage: ");
}

bool isGoodEnd(std::string_view text, std::string_view begin)
{
    return take(&text, "end ") && take(&begin, "begin ") && text == before(begin, ": ");
}

} // namespace

void KeptLines::keep(std::int64_t microseconds, int thread, std::string_view threadName,
                     std::string_view text)
{
    m_lastTime = microseconds;
    const std::size_t speaker = speakerOf(thread, threadName);
    if (m_span != none) {
        const auto [head, begin] = lineAt(m_span);
        if (speaker == head.speaker && isGoodEnd(text, begin)) { // and nobody has said anything within it
            if (begin.starts_with(lastStageBegins)) {
                m_lastStage = m_span;
                append({microseconds, text.size(), speaker}, text);
            } else {
                m_lines.resize(m_span);
            }
            m_span = none;
            return;
        }
    }
    if (m_lastStage != none && text.starts_with(lastStageBegins))
        m_lines.resize(m_lastStage);
    m_lastStage = none;
    if (isDetail(text))
        return;
    m_span = isPassing(text) ? m_lines.size() : none;
    append({microseconds, text.size(), speaker}, text);
}

void KeptLines::tellTo(StartupRecord *record)
{
    const auto tell = [&](std::int64_t time, const Speaker &speaker, std::string_view text) {
        record->addLine(time, speaker.thread, speaker.name, text);
    };
    for (std::size_t place = 0; place < m_lines.size();) {
        const auto [head, text] = lineAt(place);
        tell(head.microseconds, m_speakers[head.speaker], text);
        place += sizeof head + head.length;
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

void KeptLines::append(const Head &head, std::string_view text)
{
    m_lines.append(reinterpret_cast<const char *>(&head), sizeof head).append(text);
}

/// The line that stands at a place, with its text.
std::pair<KeptLines::Head, std::string_view> KeptLines::lineAt(std::size_t place) const
{
    Head head;
    std::memcpy(&head, m_lines.data() + place, sizeof head);
    return {head, std::string_view(m_lines).substr(place + sizeof head, head.length)};
}

} // namespace Orvia
