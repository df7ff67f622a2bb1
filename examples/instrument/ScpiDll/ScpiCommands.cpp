#include "examples/instrument/ScpiDll/ScpiCommands.h"

#include "examples/instrument/ScpiDll/ScpiError.h"
#include "examples/instrument/ScpiDll/ScpiMessage.h"
#include "examples/instrument/ScpiDll/ScpiNumber.h"
#include "examples/instrument/ScpiDll/ScpiSession.h"
#include "examples/instrument/SourceSettings.h"

namespace Orvia {

namespace {

using Parameters = std::vector<std::string_view>;

void store(ScpiSession &session, const SettingsMap &values)
{
    if (session.instrument().settings.set(values))
        return;
    // The database has put the storage fault into the error queue itself.
    session.addEvent(ScpiSession::DeviceError);
}

std::string clearStatus(ScpiSession &session, const Parameters &)
{
    session.clear();
    return {};
}

std::string setEventEnable(ScpiSession &session, const Parameters &parameters)
{
    session.eventEnable = parseRegister(parameters[0]);
    return {};
}

std::string eventEnable(ScpiSession &session, const Parameters &)
{
    return std::to_string(session.eventEnable);
}

std::string takeEvents(ScpiSession &session, const Parameters &)
{
    return std::to_string(session.takeEvents());
}

std::string identification(ScpiSession &session, const Parameters &)
{
    return session.instrument().identification;
}

std::string noteCompletion(ScpiSession &session, const Parameters &)
{
    session.addEvent(ScpiSession::OperationComplete);
    return {};
}

std::string completion(ScpiSession &, const Parameters &)
{
    return "1"; // every command is complete before the next one starts
}

std::string reset(ScpiSession &session, const Parameters &)
{
    store(session, defaultSourceSettings());
    return {};
}

std::string setServiceEnable(ScpiSession &session, const Parameters &parameters)
{
    session.serviceEnable = parseRegister(parameters[0]) & ~ScpiSession::MasterSummary;
    return {};
}

std::string serviceEnable(ScpiSession &session, const Parameters &)
{
    return std::to_string(session.serviceEnable);
}

std::string statusByte(ScpiSession &session, const Parameters &)
{
    return std::to_string(session.statusByte());
}

std::string selfTest(ScpiSession &session, const Parameters &)
{
    return std::to_string(session.instrument().selfTest());
}

std::string waitForCompletion(ScpiSession &, const Parameters &)
{
    return {};
}

std::string nextError(ScpiSession &, const Parameters &)
{
    return takeScpiErrorText();
}

std::string scpiVersion(ScpiSession &, const Parameters &)
{
    return "1999.0";
}

template <const NumberSetting &setting, const auto &suffixes>
std::string setNumber(ScpiSession &session, const Parameters &parameters)
{
    store(session, {{setting.key, numberText(parseSetting(parameters[0], setting, suffixes))}});
    return {};
}

/// With a parameter (MINimum, MAXimum, DEFault): the number that it stands for.
template <const NumberSetting &setting>
std::string number(ScpiSession &session, const Parameters &parameters)
{
    if (parameters.empty())
        return numberText(storedNumber(session.instrument().settings, setting));
    const std::optional<double> named = namedValue(parameters[0], setting);
    if (!named)
        throw ScpiError{ScpiDataTypeError, std::string(parameters[0])};
    return numberText(*named);
}

std::string setOutput(ScpiSession &session, const Parameters &parameters)
{
    store(session, {{outputKey, parseBoolean(parameters[0]) ? "1" : "0"}});
    return {};
}

std::string output(ScpiSession &session, const Parameters &)
{
    return session.instrument().settings.value(outputKey, "0");
}

struct Command
{
    const char *header;
    std::size_t minParameters;
    std::size_t maxParameters;
    std::string (*run)(ScpiSession &session, const Parameters &parameters);
};

constexpr Command commands[] = {
    {"*CLS", 0, 0, clearStatus},
    {"*ESE", 1, 1, setEventEnable},
    {"*ESE?", 0, 0, eventEnable},
    {"*ESR?", 0, 0, takeEvents},
    {"*IDN?", 0, 0, identification},
    {"*OPC", 0, 0, noteCompletion},
    {"*OPC?", 0, 0, completion},
    {"*RST", 0, 0, reset},
    {"*SRE", 1, 1, setServiceEnable},
    {"*SRE?", 0, 0, serviceEnable},
    {"*STB?", 0, 0, statusByte},
    {"*TST?", 0, 0, selfTest},
    {"*WAI", 0, 0, waitForCompletion},
    {":SYSTem:ERRor[:NEXT]?", 0, 0, nextError},
    {":SYSTem:VERSion?", 0, 0, scpiVersion},
    {"[:SOURce]:FREQuency[:CW]", 1, 1, setNumber<frequencySetting, frequencySuffixes>},
    {"[:SOURce]:FREQuency[:CW]?", 0, 1, number<frequencySetting>},
    {"[:SOURce]:POWer[:LEVel]", 1, 1, setNumber<levelSetting, levelSuffixes>},
    {"[:SOURce]:POWer[:LEVel]?", 0, 1, number<levelSetting>},
    {":OUTPut[:STATe]", 1, 1, setOutput},
    {":OUTPut[:STATe]?", 0, 0, output},
};

const Command &findCommand(const std::string &header)
{
    for (const Command &command : commands) {
        if (matchesHeader(command.header, header))
            return command;
    }
    throw ScpiError{ScpiUndefinedHeader, header};
}

} // namespace

std::string runScpiCommand(ScpiSession *session, const ScpiUnit &unit)
{
    const Command &command = findCommand(unit.header);
    if (unit.parameters.size() < command.minParameters)
        throw ScpiError{ScpiMissingParameter, unit.header};
    if (unit.parameters.size() > command.maxParameters)
        throw ScpiError{ScpiParameterNotAllowed, unit.header};
    return command.run(*session, unit.parameters);
}

} // namespace Orvia
