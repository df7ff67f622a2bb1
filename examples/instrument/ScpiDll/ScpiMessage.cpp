#include "examples/instrument/ScpiDll/ScpiMessage.h"

#include "examples/instrument/ScpiDll/ScpiError.h"

#include <algorithm>

namespace Orvia {

namespace {

bool isLetter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

char upper(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool equalIgnoringCase(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return upper(x) == upper(y); });
}

/// Takes the text before the next separator out of `rest`, and the separator with it. One inside quotes does
/// not count.
std::string_view takeUntil(char separator, std::string_view *rest)
{
    char quote = '\0';
    std::size_t end = 0;
    for (; end < rest->size(); ++end) {
        const char c = (*rest)[end];
        if (quote != '\0')
            quote = c == quote ? '\0' : quote;
        else if (c == '"' || c == '\'')
            quote = c;
        else if (c == separator)
            break;
    }
    const std::string_view piece = rest->substr(0, end);
    if (quote != '\0')
        throw ScpiError{ScpiInvalidStringData, std::string(piece)};
    rest->remove_prefix(std::min(end + 1, rest->size()));
    return piece;
}

void checkCharacters(std::string_view text)
{
    if (std::any_of(text.begin(), text.end(), [](char c) { return !isBlank(c) && (c < ' ' || c > '~'); }))
        throw ScpiError{ScpiInvalidCharacter, std::string(text)};
}

/// Mnemonics with single colons between them.
void checkHeader(std::string_view header)
{
    std::string_view rest = header;
    if (rest.ends_with('?'))
        rest.remove_suffix(1);
    if (rest.starts_with('*') || rest.starts_with(':'))
        rest.remove_prefix(1);
    char previous = ':';
    for (const char c : rest) {
        const bool valid = isLetter(c) || (previous != ':' && (isDigit(c) || c == '_' || c == ':'));
        if (!valid)
            throw ScpiError{ScpiSyntaxError, std::string(header)};
        previous = c;
    }
    if (previous == ':')
        throw ScpiError{ScpiSyntaxError, std::string(header)};
}

/// Takes the first mnemonic out of a header or pattern, with the colon or brackets that it stands in.
std::string_view takeMnemonic(std::string_view *rest)
{
    const std::size_t begin = std::min(rest->find_first_not_of(":[]"), rest->size());
    rest->remove_prefix(begin);
    const std::string_view mnemonic = rest->substr(0, rest->find_first_of(":[]"));
    rest->remove_prefix(mnemonic.size());
    return mnemonic;
}

bool matchesPath(std::string_view pattern, std::string_view header)
{
    const bool optional = pattern.starts_with('[');
    const std::string_view expected = takeMnemonic(&pattern);
    if (pattern.starts_with(']'))
        pattern.remove_prefix(1);
    if (expected.empty())
        return header.empty();
    std::string_view rest = header;
    if (matchesWord(expected, takeMnemonic(&rest)) && matchesPath(pattern, rest))
        return true;
    return optional && matchesPath(pattern, header);
}

} // namespace

bool ScpiMessage::next(ScpiUnit *unit)
{
    std::string_view text;
    do {
        if (m_rest.empty())
            return false;
        text = trimmed(takeUntil(';', &m_rest));
    } while (text.empty());

    checkCharacters(text);
    const std::string_view header =
        text.substr(0, std::find_if(text.begin(), text.end(), isBlank) - text.begin());
    checkHeader(header);
    unit->header = resolve(header);
    unit->parameters.clear();
    std::string_view rest = trimmed(text.substr(header.size()));
    for (bool more = !rest.empty(); more;) {
        const std::size_t before = rest.size();
        const std::string_view piece = takeUntil(',', &rest);
        more = piece.size() < before;
        unit->parameters.push_back(trimmed(piece));
        if (unit->parameters.back().empty())
            throw ScpiError{ScpiSyntaxError, std::string(text)};
    }
    return true;
}

std::string ScpiMessage::resolve(std::string_view header)
{
    if (header.starts_with('*'))
        return std::string(header);
    std::string resolved =
        header.starts_with(':') ? std::string(header.substr(1)) : m_path + std::string(header);
    m_path = resolved.substr(0, resolved.rfind(':') + 1); // npos + 1 is 0
    return resolved;
}

bool matchesHeader(std::string_view pattern, std::string_view header)
{
    if (pattern.ends_with('?') != header.ends_with('?'))
        return false;
    if (pattern.ends_with('?')) {
        pattern.remove_suffix(1);
        header.remove_suffix(1);
    }
    return matchesPath(pattern, header);
}

bool matchesWord(std::string_view pattern, std::string_view word)
{
    const std::size_t shortLength =
        std::find_if(pattern.begin(), pattern.end(), [](char c) { return c >= 'a' && c <= 'z'; }) -
        pattern.begin();
    return equalIgnoringCase(word, pattern) || equalIgnoringCase(word, pattern.substr(0, shortLength));
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

} // namespace Orvia
