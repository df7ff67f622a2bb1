#include "examples/instrument/ScpiDll/ScpiNumber.h"

#include "examples/instrument/ScpiDll/ScpiError.h"
#include "examples/instrument/ScpiDll/ScpiMessage.h"

#include <charconv>
#include <cmath>
#include <string>

namespace Orvia {

namespace {

constexpr ScpiSuffix frequencySuffixes[] = {
    {"HZ", 1}, {"KHZ", 1e3}, {"MHZ", 1e6}, {"MAHZ", 1e6}, {"GHZ", 1e9}};
constexpr ScpiSuffix levelSuffixes[] = {{"DBM", 1}};
constexpr ScpiSuffix ratioSuffixes[] = {{"DB", 1}};
constexpr ScpiSuffix timeSuffixes[] = {{"S", 1}, {"MS", 1, 1e3}, {"US", 1, 1e6}, {"NS", 1, 1e9}};
constexpr ScpiSuffix percentSuffixes[] = {{"PCT", 1}};

ScpiError errorAt(ScpiErrorNumber number, std::string_view text)
{
    return ScpiError{number, std::string(text)};
}

/// The number that `text` starts with; `rest` is what follows it.
double leadingNumber(std::string_view text, std::string_view *rest)
{
    // std::from_chars knows "inf" and "nan" and no plus sign; SCPI has it the other way round.
    const std::size_t first = text.find_first_not_of("+-");
    if (first == std::string_view::npos ||
        std::string_view(".0123456789").find(text[first]) == std::string_view::npos)
        throw errorAt(ScpiDataTypeError, text);
    if (first > 1)
        throw errorAt(ScpiInvalidCharacterInNumber, text);
    const std::string_view digits = text.substr(text.starts_with('+') ? 1 : 0);
    double number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error == std::errc::result_out_of_range)
        throw errorAt(ScpiDataOutOfRange, text);
    if (error != std::errc())
        throw errorAt(ScpiInvalidCharacterInNumber, text);
    *rest = trimmed(digits.substr(end - digits.data()));
    return number;
}

} // namespace

std::span<const ScpiSuffix> suffixesOf(ScpiQuantity quantity)
{
    switch (quantity) {
    case ScpiQuantity::Frequency:
        return frequencySuffixes;
    case ScpiQuantity::Level:
        return levelSuffixes;
    case ScpiQuantity::Ratio:
        return ratioSuffixes;
    case ScpiQuantity::Time:
        return timeSuffixes;
    case ScpiQuantity::Percent:
        return percentSuffixes;
    case ScpiQuantity::Switch:
    case ScpiQuantity::Count:
        break;
    }
    return {};
}

double parseNumber(std::string_view text, std::span<const ScpiSuffix> suffixes)
{
    std::string_view suffix;
    const double number = leadingNumber(text, &suffix);
    if (suffix.empty())
        return number;
    if (suffix.front() < 'A')
        throw errorAt(ScpiInvalidCharacterInNumber, text);
    if (suffixes.empty())
        throw errorAt(ScpiSuffixNotAllowed, text);
    for (const ScpiSuffix &known : suffixes) {
        if (matchesWord(known.text, suffix))
            return number * known.factor / known.divisor;
    }
    throw errorAt(ScpiInvalidSuffix, text);
}

std::optional<double> namedValue(std::string_view text, const NumberSetting &setting)
{
    if (matchesWord("MINimum", text))
        return setting.minimum;
    if (matchesWord("MAXimum", text))
        return setting.maximum;
    if (matchesWord("DEFault", text))
        return setting.defaultValue;
    return std::nullopt;
}

double parseSetting(std::string_view text, const NumberSetting &setting, ScpiQuantity quantity)
{
    if (const std::optional<double> named = namedValue(text, setting))
        return *named;
    const double parsed = parseNumber(text, suffixesOf(quantity));
    const double number = quantity == ScpiQuantity::Count ? std::round(parsed) : parsed;
    if (number < setting.minimum || number > setting.maximum)
        throw errorAt(ScpiDataOutOfRange, text);
    return number;
}

int parseRegister(std::string_view text)
{
    const double number = std::round(parseNumber(text, {}));
    if (number < 0 || number > 255)
        throw errorAt(ScpiDataOutOfRange, text);
    return static_cast<int>(number);
}

bool parseBoolean(std::string_view text)
{
    if (matchesWord("ON", text))
        return true;
    if (matchesWord("OFF", text))
        return false;
    return std::round(parseNumber(text, {})) != 0;
}

} // namespace Orvia
