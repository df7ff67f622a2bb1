#include "examples/instrument/ScpiDll/ScpiError.h"

#include "platform/ErrorManager.h"

#include <algorithm>

namespace Orvia {

namespace {

constexpr int registrationId = 106;
constexpr std::size_t maxDetail = 60;

constexpr int codeOf(int number)
{
    return 60000 - number;
}

constexpr CErrorManager::SErrorDefinition row(int number, const char *text)
{
    return {codeOf(number), 1, number, 0, text, "", ""};
}

constexpr CErrorManager::SErrorDefinition scpiErrors[] = {
    row(ScpiInvalidCharacter, "Invalid character"),
    row(ScpiSyntaxError, "Syntax error"),
    row(ScpiDataTypeError, "Data type error"),
    row(ScpiParameterNotAllowed, "Parameter not allowed"),
    row(ScpiMissingParameter, "Missing parameter"),
    row(ScpiUndefinedHeader, "Undefined header"),
    row(ScpiInvalidCharacterInNumber, "Invalid character in number"),
    row(ScpiInvalidSuffix, "Invalid suffix"),
    row(ScpiSuffixNotAllowed, "Suffix not allowed"),
    row(ScpiInvalidStringData, "Invalid string data"),
    row(ScpiDataOutOfRange, "Data out of range"),
    row(ScpiInputBufferOverrun, "Input buffer overrun"),
    {-1, 0, 0, 0, "", "", ""},
};

/// SCPI string data: printable ASCII, quotes doubled.
std::string quoted(const QString &text)
{
    std::string result = "\"";
    for (const QChar character : text) {
        const char16_t code = character.unicode();
        if (code == '"')
            result += '"';
        result += code >= ' ' && code <= '~' ? static_cast<char>(code) : '?';
    }
    return result + '"';
}

} // namespace

void registerScpiErrors()
{
    ErrorManager()->registerErrors(scpiErrors, registrationId);
}

void withdrawScpiErrors()
{
    ErrorManager()->registerErrors(nullptr, registrationId);
}

void signalScpiError(const ScpiError &error)
{
    ErrorManager()->signal(codeOf(error.number), QString::fromLatin1(error.detail.substr(0, maxDetail)));
}

std::string takeScpiErrorText()
{
    CErrorManager::Announcement oldest;
    if (!ErrorManager()->takeScpiError(&oldest))
        return "0,\"No error\"";
    const QString text = oldest.detail.isEmpty() ? oldest.text : oldest.text + ';' + oldest.detail;
    return std::to_string(oldest.scpiCode) + ',' + quoted(text);
}

bool hasScpiError()
{
    const auto queue = ErrorManager()->announcements();
    return std::any_of(queue.begin(), queue.end(), [](const auto &entry) { return entry.scpiCode != 0; });
}

void clearScpiErrors()
{
    CErrorManager::Announcement taken;
    while (ErrorManager()->takeScpiError(&taken)) {
    }
}

} // namespace Orvia
