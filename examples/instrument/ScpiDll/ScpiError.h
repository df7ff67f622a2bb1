#pragma once

#include <string>

namespace Orvia {

/// Error numbers of the SCPI standard that this instrument reports by itself.
enum ScpiErrorNumber : int
{
    ScpiInvalidCharacter = -101,
    ScpiSyntaxError = -102,
    ScpiDataTypeError = -104,
    ScpiParameterNotAllowed = -108,
    ScpiMissingParameter = -109,
    ScpiUndefinedHeader = -113,
    ScpiInvalidCharacterInNumber = -121,
    ScpiInvalidSuffix = -131,
    ScpiSuffixNotAllowed = -138,
    ScpiInvalidStringData = -151,
    ScpiDataOutOfRange = -222,
    ScpiInputBufferOverrun = -363,
};

/// Thrown where a message or a parameter turns out to be wrong; ends no further up than the session.
struct ScpiError
{
    ScpiErrorNumber number;
    std::string detail; ///< what was wrong, as it was sent
};

/// The errors above in the error manager, code 60000 - number (60113 for -113). The table goes with this
/// library: withdraw it before the library is closed.
void registerScpiErrors();
void withdrawScpiErrors();

/// Puts the error into the instrument's error queue.
void signalScpiError(const ScpiError &error);

/// Takes the oldest error out of the queue, as SYSTem:ERRor? answers it.
std::string takeScpiErrorText();
bool hasScpiError();
void clearScpiErrors();

} // namespace Orvia
