#include "examples/instrument/ScpiDll/ScpiCommands.h"

#include "examples/instrument/ScpiDll/ScpiError.h"
#include "examples/instrument/ScpiDll/ScpiExtensions.h"
#include "examples/instrument/ScpiDll/ScpiMessage.h"
#include "examples/instrument/ScpiDll/ScpiNumber.h"
#include "examples/instrument/ScpiDll/ScpiSession.h"
#include "examples/instrument/ScpiDll/ScpiSettings.h"
#include "examples/instrument/SourceSettings.h"

namespace Orvia {

namespace {

using Parameters = std::vector<std::string_view>;

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
    SettingsMap defaults = defaultSourceSettings();
    defaults.merge(session.instrument().extensions.defaults());
    session.store(defaults);
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
};

constexpr ScpiSetting sourceSettings[] = {
    {"[:SOURce]:FREQuency[:CW]", frequencySetting, ScpiQuantity::Frequency},
    {"[:SOURce]:POWer[:LEVel]", levelSetting, ScpiQuantity::Level},
    {":OUTPut[:STATe]", {outputKey, 0, 1, 0}, ScpiQuantity::Switch},
};

} // namespace

std::string runScpiCommand(ScpiSession *session, const ScpiUnit &unit)
{
    for (const Command &command : commands) {
        if (matchesHeader(command.header, unit.header)) {
            checkParameterCount(unit, command.minParameters, command.maxParameters);
            return command.run(*session, unit.parameters);
        }
    }
    std::string response;
    for (const ScpiSetting &setting : sourceSettings) {
        if (runScpiSetting(session, setting, unit, &response))
            return response;
    }
    if (session->instrument().extensions.run(session, unit, &response))
        return response;
    throw ScpiError{ScpiUndefinedHeader, unit.header};
}

} // namespace Orvia
