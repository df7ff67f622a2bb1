#include "examples/instrument/ScpiDll/ScpiSession.h"

#include "examples/instrument/ScpiDll/ScpiCommands.h"
#include "examples/instrument/ScpiDll/ScpiError.h"
#include "examples/instrument/ScpiDll/ScpiMessage.h"

#include <utility>

namespace Orvia {

namespace {

bool isCommandError(ScpiErrorNumber number)
{
    return number > -200;
}

ScpiSession::EventStatus eventOf(ScpiErrorNumber number)
{
    if (isCommandError(number))
        return ScpiSession::CommandError;
    return number > -300 ? ScpiSession::ExecutionError : ScpiSession::DeviceError;
}

} // namespace

std::string ScpiSession::execute(std::string_view message)
{
    std::string responses;
    ScpiMessage units(message);
    for (;;) {
        try {
            ScpiUnit unit;
            if (!units.next(&unit))
                return responses;
            const std::string response = runScpiCommand(this, unit);
            if (!responses.empty() && !response.empty())
                responses += ';';
            responses += response;
        } catch (const ScpiError &error) {
            report(error);
            if (isCommandError(error.number))
                return responses;
        }
    }
}

void ScpiSession::report(const ScpiError &error)
{
    m_events |= eventOf(error.number);
    signalScpiError(error);
}

void ScpiSession::store(const SettingsMap &values)
{
    bool refused = false;
    if (!m_instrument.settings.set(values, &refused))
        addEvent(refused ? ExecutionError : DeviceError);
}

int ScpiSession::statusByte() const
{
    int status = hasScpiError() ? ErrorQueueNotEmpty : 0;
    if ((m_events & eventEnable) != 0)
        status |= EventSummary;
    if ((status & serviceEnable) != 0)
        status |= MasterSummary;
    return status;
}

int ScpiSession::takeEvents()
{
    return std::exchange(m_events, 0);
}

void ScpiSession::clear()
{
    m_events = 0;
    clearScpiErrors();
}

} // namespace Orvia
