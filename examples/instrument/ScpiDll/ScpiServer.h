#pragma once

#include "examples/instrument/ScpiDll/ScpiSession.h"

#include <QHostAddress>
#include <QTcpServer>

namespace Orvia {

/// Serves remote-control clients over TCP, one session each. Created, used and destroyed on one thread, which
/// runs an event loop; everything happens there, one message at a time.
///
/// No client can hold up another or make the server grow: lines are of bounded length, of a client that does
/// not read its responses no further messages are taken, and the number of clients is limited.
class ScpiServer
{
public:
    static constexpr int maxClients = 32;

    /// `instrument` outlives the server.
    explicit ScpiServer(const ScpiInstrument &instrument);

    /// Port 0 picks a free one. False, with the reason in `error`, when the address cannot be had.
    bool listen(const QHostAddress &address, quint16 port, QString *error);
    QHostAddress address() const { return m_server.serverAddress(); }
    quint16 port() const { return m_server.serverPort(); }

private:
    void acceptClients();

    const ScpiInstrument &m_instrument;
    QTcpServer m_server; ///< the clients' sockets are its children
};

} // namespace Orvia
