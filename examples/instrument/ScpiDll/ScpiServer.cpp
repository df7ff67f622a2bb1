#include "examples/instrument/ScpiDll/ScpiServer.h"

#include "examples/instrument/ScpiDll/MessageBuffer.h"
#include "examples/instrument/ScpiDll/ScpiError.h"

#include <QTcpSocket>

#include <memory>

namespace Orvia {

namespace {

constexpr qint64 maxUnread = qint64{64} * 1024; ///< bytes received and not yet looked at
constexpr qint64 maxUnsent = qint64{64} * 1024; ///< bytes of responses before messages have to wait

/// One client. Lives as long as the slots on its socket.
class Connection
{
public:
    Connection(const ScpiInstrument &instrument, QTcpSocket *socket) : m_session(instrument), m_socket(socket)
    {
    }

    /// Takes messages as long as the client takes the responses; bytesWritten() goes on from there.
    void serve()
    {
        while (!isFull() || makeRoom()) {
            if (serveMessage())
                continue;
            if (!makeRoom() || m_socket->bytesAvailable() == 0)
                return;
            const QByteArray bytes = m_socket->readAll();
            m_input.append({bytes.constData(), static_cast<std::size_t>(bytes.size())});
        }
    }

private:
    bool isFull() const { return m_socket->bytesToWrite() >= maxUnsent; }

    /// Sends now what goes without waiting: a client that has closed its sending end still waits for it,
    /// whereas Qt closes the socket as soon as it sees that end.
    bool makeRoom()
    {
        m_socket->flush();
        return !isFull();
    }

    /// False when there is no message left.
    bool serveMessage()
    {
        std::string_view message;
        switch (m_input.next(&message)) {
        case MessageBuffer::Piece::Nothing:
            return false;
        case MessageBuffer::Piece::Overrun:
            m_session.report({ScpiInputBufferOverrun, std::string()});
            return true;
        case MessageBuffer::Piece::Message:
            break;
        }
        std::string response = m_session.execute(message);
        if (!response.empty() && m_socket->isWritable()) {
            response += '\n';
            m_socket->write(response.data(), static_cast<qint64>(response.size()));
        }
        return true;
    }

    ScpiSession m_session;
    QTcpSocket *m_socket;
    MessageBuffer m_input;
};

} // namespace

ScpiServer::ScpiServer(const ScpiInstrument &instrument) : m_instrument(instrument)
{
    QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] { acceptClients(); });
}

bool ScpiServer::listen(const QHostAddress &address, quint16 port, QString *error)
{
    if (m_server.listen(address, port))
        return true;
    *error = m_server.errorString();
    return false;
}

void ScpiServer::acceptClients()
{
    while (QTcpSocket *socket = m_server.nextPendingConnection()) {
        QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        if (m_server.findChildren<QTcpSocket *>().size() > maxClients) {
            socket->abort();
            continue;
        }
        socket->setReadBufferSize(maxUnread);
        socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        socket->setSocketOption(QAbstractSocket::KeepAliveOption, 1); // notices clients that are gone
        const auto connection = std::make_shared<Connection>(m_instrument, socket);
        QObject::connect(socket, &QTcpSocket::readyRead, socket, [connection] { connection->serve(); });
        QObject::connect(socket, &QTcpSocket::bytesWritten, socket, [connection] { connection->serve(); });
    }
}

} // namespace Orvia
