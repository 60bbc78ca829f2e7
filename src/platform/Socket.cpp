#include "platform/Socket.h"

#include "base/Text.h"
#include "platform/Control.h"
#include "platform/DisplayText.h"

#include <QNetworkProxy>
#include <QPointer>
#include <QTcpSocket>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

// One connection. What it has to tell is posted, so that no handler ever runs inside a signal, and it can be deleted at
// any time, by a handler of its own events too: what is posted to it goes with it.
class Socket::Connection : public QObject {
public:
    explicit Connection(Socket& ownerSocket)
        : owner(ownerSocket)
    {
        tcp.setProxy(QNetworkProxy::NoProxy);
        tcp.setReadBufferSize(mostWaiting);
        connect(&tcp, &QTcpSocket::stateChanged, this, [this](QAbstractSocket::SocketState state) { Follow(state); });
        connect(&tcp, &QTcpSocket::readyRead, this, [this] { PostArrival(); });
        connect(&tcp, &QTcpSocket::disconnected, this, [this] { PostClosed(); });
        connect(&tcp, &QTcpSocket::errorOccurred, this, [this](QAbstractSocket::SocketError error) {
            if (!wasConnected)
                PostFailure();
            else if (error != QAbstractSocket::RemoteHostClosedError)
                closedState = SocketState::Error;
        });
    }

    // The end of the socket itself raises signals, which must not meet what is already half gone.
    ~Connection() override { tcp.disconnect(this); }

    void Open(const std::string& host, int port)
    {
        if (port < 1 || port > 65535 || host.empty())
            PostFailure();
        else
            tcp.connectToHost(ToDisplay(host), static_cast<quint16>(port));
    }

    void AcknowledgeAtOnce()
    {
        const int on = 1;
        setsockopt(static_cast<int>(tcp.socketDescriptor()), IPPROTO_TCP, TCP_QUICKACK, &on, sizeof on);
    }

    void PostArrival()
    {
        if (arrivalPosted)
            return;
        arrivalPosted = true;
        Post([this] {
            arrivalPosted = false;
            if (tcp.bytesAvailable() > 0)
                Raise(owner.DataArrival);
        });
    }

    QTcpSocket tcp;

private:
    void Follow(QAbstractSocket::SocketState state)
    {
        if (state == QAbstractSocket::HostLookupState) {
            PostState(SocketState::ResolvingHost);
        } else if (state == QAbstractSocket::ConnectingState) {
            PostState(SocketState::HostResolved);
            PostState(SocketState::Connecting);
        } else if (state == QAbstractSocket::ConnectedState) {
            wasConnected = true;
            tcp.setSocketOption(QAbstractSocket::LowDelayOption, 1);
            AcknowledgeAtOnce();
            PostState(SocketState::Connected);
        }
    }

    template <class Function> void Post(Function function)
    {
        QMetaObject::invokeMethod(this, std::move(function), Qt::QueuedConnection);
    }

    void PostState(SocketState state)
    {
        Post([this, state] { owner.Enter(state); });
    }

    // Nothing can come of this connection any more: its descriptor is given back before anybody hears of it.
    void PostFailure()
    {
        Post([&socket = owner] {
            socket.Close();
            socket.Enter(SocketState::Error);
        });
    }

    void PostClosed()
    {
        if (!wasConnected)
            return;
        if (tcp.bytesAvailable() > 0)
            PostArrival();
        Post([this, &socket = owner] {
            // The handler may close the socket, and with it this object.
            const QPointer<Connection> self(this);
            socket.Enter(closedState);
            if (self)
                Raise(socket.Closed);
        });
    }

    Socket& owner;
    SocketState closedState = SocketState::Closing;
    bool wasConnected = false;
    bool arrivalPosted = false;
};

Socket::Socket() = default;
Socket::~Socket() = default;

int Socket::PortFrom(std::string_view text)
{
    const double port = Val(text);
    return port >= 1 && port <= 65535 && port == static_cast<int>(port) ? static_cast<int>(port) : 0;
}

void Socket::Connect(const std::string& host, int port)
{
    Close();
    connection = std::make_unique<Connection>(*this);
    connection->Open(host, port);
}

void Socket::Close()
{
    state = SocketState::Closed;
    connection.reset();
}

bool Socket::EndIsComing() const
{
    if (state != SocketState::Connected)
        return false;
    if (connection->tcp.state() != QAbstractSocket::ConnectedState)
        return true;
    char byte = 0;
    const auto descriptor = static_cast<int>(connection->tcp.socketDescriptor());
    const ssize_t count = recv(descriptor, &byte, 1, MSG_PEEK | MSG_DONTWAIT);
    return count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR);
}

void Socket::SendData(std::string_view bytes)
{
    if (state != SocketState::Connected)
        return;
    connection->tcp.write(bytes.data(), static_cast<qint64>(bytes.size()));
    connection->tcp.flush();
}

std::string Socket::GetData()
{
    std::string bytes;
    if (!connection)
        return bytes;
    QTcpSocket& tcp = connection->tcp;
    bytes.resize(static_cast<std::size_t>(tcp.bytesAvailable()));
    const qint64 count = tcp.read(bytes.data(), static_cast<qint64>(bytes.size()));
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    if (state == SocketState::Connected)
        connection->AcknowledgeAtOnce();
    return bytes;
}

void Socket::AnnounceWaiting()
{
    if (connection && connection->tcp.bytesAvailable() > 0)
        connection->PostArrival();
}

void Socket::Enter(SocketState newState)
{
    state = newState;
    Raise(StateChanged);
}
