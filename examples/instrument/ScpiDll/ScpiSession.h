#pragma once

#include "examples/instrument/SettingsDatabase.h"

#include <functional>
#include <string>
#include <string_view>

namespace Orvia {

class ScpiExtensions;
struct ScpiError;
struct ScpiUnit;

/// The instrument as its commands see it, shared by all sessions.
struct ScpiInstrument
{
    SettingsDatabase &settings;
    std::string identification;    ///< answer of *IDN?
    std::function<int()> selfTest; ///< answer of *TST?, 0 when all is well
    const ScpiExtensions &extensions;
};

/// One client's conversation with the instrument: interprets its program messages and keeps its status
/// registers. Settings and the error queue are the instrument's, common to all clients. One thread.
class ScpiSession
{
public:
    explicit ScpiSession(const ScpiInstrument &instrument) : m_instrument(instrument) {}

    /// Carries out one line and returns the responses, without a line end; empty when nothing was asked.
    /// Errors go to the error queue. A command error (-1xx) ends the message, because what follows would be
    /// read relative to a header that was not understood; other errors end just their command.
    std::string execute(std::string_view message);

    /// Notes an error in the status and in the error queue.
    void report(const ScpiError &error);

    /// Sets the values; when that fails, notes it in the status (the database has put the error into the
    /// queue).
    void store(const SettingsMap &values);

    const ScpiInstrument &instrument() const { return m_instrument; }

    /// Bits of the standard event status register (*ESR?).
    enum EventStatus
    {
        OperationComplete = 1,
        DeviceError = 8,
        ExecutionError = 16,
        CommandError = 32,
    };
    /// Bits of the status byte (*STB?).
    enum StatusByte
    {
        ErrorQueueNotEmpty = 4,
        EventSummary = 32,
        MasterSummary = 64,
    };

    int statusByte() const;
    int takeEvents();
    void addEvent(EventStatus event) { m_events |= event; }
    void clear();

    int eventEnable = 0;   ///< *ESE
    int serviceEnable = 0; ///< *SRE

private:
    const ScpiInstrument &m_instrument;
    int m_events = 0; ///< *ESR?
};

} // namespace Orvia
