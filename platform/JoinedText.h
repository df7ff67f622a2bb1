#pragma once

#include <algorithm>
#include <initializer_list>
#include <string>
#include <string_view>

namespace Orvia {

/// Pieces of text in one, for a call. A text of usual length needs no heap.
class JoinedText
{
public:
    JoinedText(std::initializer_list<std::string_view> pieces)
    {
        std::size_t size = 0;
        for (const std::string_view piece : pieces)
            size += piece.size();
        char *end = m_buffer;
        if (size >= sizeof m_buffer) {
            m_long.resize(size);
            m_text = end = m_long.data();
        }
        for (const std::string_view piece : pieces)
            end = std::copy(piece.begin(), piece.end(), end);
        *end = '\0';
    }
    JoinedText(const JoinedText &) = delete;
    JoinedText &operator=(const JoinedText &) = delete;

    const char *c_str() const { return m_text; }

private:
    char m_buffer[240];
    std::string m_long;
    const char *m_text = m_buffer;
};

} // namespace Orvia
