#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Orvia {

/// Cuts a stream of bytes into lines. Holds one line of bounded length, however much is sent without a line
/// end.
class MessageBuffer
{
public:
    static constexpr std::size_t maxLength = std::size_t{16} * 1024;

    enum class Piece
    {
        Nothing, ///< more bytes are needed
        Message,
        Overrun, ///< a line was too long and is being dropped; said once for each
    };

    void append(std::string_view bytes);

    /// The next line, without its end, in `message`; valid until the next append().
    Piece next(std::string_view *message);

private:
    std::string m_bytes;
    std::size_t m_begin = 0; ///< bytes before have been handed out
    bool m_dropping = false; ///< up to the next line end
};

} // namespace Orvia
