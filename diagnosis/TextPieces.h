#pragma once

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace Orvia {

/// Takes the prefix off; false if the text does not begin with it.
inline bool take(std::string_view *text, std::string_view prefix)
{
    if (!text->starts_with(prefix))
        return false;
    text->remove_prefix(prefix.size());
    return true;
}

/// What stands before the separator, all of the text if there is none.
inline std::string_view before(std::string_view text, std::string_view separator)
{
    return text.substr(0, text.find(separator));
}

/// What stands behind the separator, nothing if there is none.
inline std::string_view behind(std::string_view text, std::string_view separator)
{
    const std::size_t position = text.find(separator);
    return position == std::string_view::npos ? std::string_view() : text.substr(position + separator.size());
}

inline std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    return text;
}

/// The number that the text begins with, taken off it.
inline std::optional<int> takeNumber(std::string_view *text)
{
    int number = 0;
    const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), number);
    if (error != std::errc())
        return std::nullopt;
    text->remove_prefix(static_cast<std::size_t>(end - text->data()));
    return number;
}

/// The text as a number, nothing if it is something else.
inline std::optional<int> wholeNumber(std::string_view text)
{
    const std::optional<int> number = takeNumber(&text);
    return text.empty() ? number : std::nullopt;
}

inline std::string_view fileNameOf(std::string_view path)
{
    return path.substr(path.rfind('/') + 1);
}

} // namespace Orvia
