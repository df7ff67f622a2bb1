#pragma once

#include <cstring>
#include <string>
#include <string_view>

namespace Orvia {

/// Pieces of text in one, for a call. A text of usual length needs no heap.
class JoinedText
{
public:
    template <typename... Pieces>
    JoinedText(const Pieces &...pieces)
    {
        join(std::string_view(pieces)...);
    }
    JoinedText(const JoinedText &) = delete;
    JoinedText &operator=(const JoinedText &) = delete;

    const char *c_str() const { return m_text; }

private:
    template <typename... Pieces>
    void join(Pieces... pieces)
    {
        char *end = m_buffer;
        const std::size_t size = (pieces.size() + ...);
        if (size >= sizeof m_buffer) {
            m_long.resize(size);
            m_text = end = m_long.data();
        }
        ((std::memcpy(end, pieces.data(), pieces.size()), end += pieces.size()), ...);
        *end = '\0';
    }

    char m_buffer[240];
    std::string m_long;
    const char *m_text = m_buffer;
};

} // namespace Orvia
