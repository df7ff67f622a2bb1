#include "examples/instrument/ScpiDll/MessageBuffer.h"

#include <algorithm>
#include <utility>

namespace Orvia {

void MessageBuffer::append(std::string_view bytes)
{
    m_bytes.erase(0, std::exchange(m_begin, 0));
    m_bytes.append(bytes);
}

MessageBuffer::Piece MessageBuffer::next(std::string_view *message)
{
    for (;;) {
        const std::string_view rest = std::string_view(m_bytes).substr(m_begin);
        const std::size_t end = rest.find('\n');
        const bool complete = end != std::string_view::npos;
        const std::size_t length = complete ? end : rest.size();
        const bool tooLong = length > maxLength && !m_dropping;
        if (!complete && !tooLong && !m_dropping)
            return Piece::Nothing;

        m_begin += std::min(length + 1, rest.size());
        const bool dropped = std::exchange(m_dropping, !complete) || tooLong;
        if (tooLong)
            return Piece::Overrun;
        if (!dropped) {
            *message = rest.substr(0, length);
            return Piece::Message;
        }
        if (!complete)
            return Piece::Nothing;
    }
}

} // namespace Orvia
