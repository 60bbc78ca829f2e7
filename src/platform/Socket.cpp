#include "platform/Socket.h"

#include "base/Text.h"
#include "platform/Control.h"
#include "platform/DisplayText.h"

#include <QNetworkProxy>
#include <QPointer>
#include <QSslCipher>
#include <QSslConfiguration>
#include <QSslSocket>
#include <algorithm>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

namespace {

std::string ProtocolName(QSsl::SslProtocol protocol)
{
    return protocol == QSsl::TlsV1_3 ? "TLS 1.3" : protocol == QSsl::TlsV1_2 ? "TLS 1.2" : "TLS";
}

}

// One connection. What it has to tell is posted, so that no handler ever runs inside a signal, and it can be deleted at
// any time, by a handler of its own events too: what is posted to it goes with it.
//
// An encrypted one lets its handshake come to an end whatever the certificate is, so that the certificate is judged,
// and the user perhaps asked, outside any signal. Until then the connection is not established: whatever comes waits,
// and SendData() sends nothing.
class Socket::Connection : public QObject {
public:
    Connection(Socket& ownerSocket, bool encrypted)
        : owner(ownerSocket)
        , tls(encrypted ? new QSslSocket : nullptr)
        , tcp(encrypted ? tls : new QTcpSocket)
    {
        tcp->setProxy(QNetworkProxy::NoProxy);
        // An encrypted one holds that much three times: as it came, on its way through the library, and as it is read.
        tcp->setReadBufferSize(encrypted ? mostWaiting / 4 : mostWaiting);
        connect(tcp.get(), &QTcpSocket::stateChanged, this, [this](auto state) { Follow(state); });
        connect(tcp.get(), &QTcpSocket::readyRead, this, [this] { PostArrival(); });
        connect(tcp.get(), &QTcpSocket::disconnected, this, [this] { PostClosed(); });
        connect(tcp.get(), &QTcpSocket::errorOccurred, this, [this](QAbstractSocket::SocketError error) {
            hasEnded = true;
            if (!established && !handshaken) {
                PostFailure(tcp->errorString().toStdString());
            } else if (error != QAbstractSocket::RemoteHostClosedError) {
                closedState = SocketState::Error;
                // What cannot be decrypted is an end, too, but the library leaves the connection open behind it.
                if (tls != nullptr)
                    Post([this] { tcp->disconnectFromHost(); });
            }
        });
        if (encrypted)
            connect(tls, &QSslSocket::encrypted, this, [this] {
                // What there is to know of it goes with the connection.
                handshaken = Encryption{ProtocolName(tls->sessionProtocol()), tls->sessionCipher().name().toStdString(),
                    Certificate(*tls, host)};
                Post([this] { Judge(); });
            });
    }

    // The end of the socket itself raises signals, which must not meet what is already half gone.
    ~Connection() override { tcp->disconnect(this); }

    void Open(const std::string& newHost, int port)
    {
        host = newHost;
        if (port < 1 || port > 65535 || host.empty())
            PostFailure("There is no such server or port.");
        else if (tls == nullptr)
            tcp->connectToHost(ToDisplay(host), static_cast<quint16>(port));
        else
            OpenEncrypted(port);
    }

    void AcknowledgeAtOnce()
    {
        const int on = 1;
        setsockopt(Descriptor(), IPPROTO_TCP, TCP_QUICKACK, &on, sizeof on);
    }

    void PostArrival()
    {
        if (arrivalPosted || !established)
            return;
        arrivalPosted = true;
        Post([this] {
            arrivalPosted = false;
            if (tcp->bytesAvailable() > 0)
                Raise(owner.DataArrival);
        });
    }

    bool EndIsComing() const
    {
        if (tcp->state() != QAbstractSocket::ConnectedState)
            return true;
        if (tls != nullptr) {
            // What waits may be a farewell, a ticket for later or text, and only its reading would tell; but the end
            // behind it can be seen.
            pollfd end{Descriptor(), POLLRDHUP, 0};
            return poll(&end, 1, 0) > 0;
        }
        char byte = 0;
        const ssize_t count = recv(Descriptor(), &byte, 1, MSG_PEEK | MSG_DONTWAIT);
        return count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR);
    }

    QTcpSocket& Tcp() { return *tcp; }

private:
    int Descriptor() const { return static_cast<int>(tcp->socketDescriptor()); }

    void OpenEncrypted(int port)
    {
        QSslConfiguration configuration = tls->sslConfiguration();
        configuration.setProtocol(QSsl::TlsV1_2OrLater);
        configuration.setPeerVerifyMode(QSslSocket::QueryPeer);
        // In addition to those of the system.
        if (!owner.AuthoritiesFile.empty())
            configuration.addCaCertificates(ToDisplay(owner.AuthoritiesFile));
        tls->setSslConfiguration(configuration);
        tls->connectToHostEncrypted(ToDisplay(host), static_cast<quint16>(port));
    }

    void Follow(QAbstractSocket::SocketState state)
    {
        if (state == QAbstractSocket::HostLookupState) {
            PostState(SocketState::ResolvingHost);
        } else if (state == QAbstractSocket::ConnectingState) {
            PostState(SocketState::HostResolved);
            PostState(SocketState::Connecting);
        } else if (state == QAbstractSocket::ConnectedState) {
            tcp->setSocketOption(QAbstractSocket::LowDelayOption, 1);
            AcknowledgeAtOnce();
            if (tls != nullptr)
                return;
            established = true;
            PostState(SocketState::Connected);
        }
    }

    void Judge()
    {
        const bool hadEnded = hasEnded;
        // A copy: the connection may go while the user is asked.
        const Certificate certificate = handshaken->certificate;
        if (!certificate.IsTrusted()) {
            // An answer takes longer than many a server waits; what becomes of the connection meanwhile is told then.
            const QPointer<Connection> self(this);
            const auto accept = owner.AcceptCertificate;
            const bool accepted = !certificate.Fingerprint().empty() && accept
                && accept(certificate, [self] { return !self.isNull(); });
            if (!self)
                return;
            if (!accepted) {
                owner.Fail("The certificate was not accepted.");
                return;
            }
        }
        // A server that is too busy may say so and hang up at once; one that hung up while the user was asked has gone.
        if (hasEnded && (!hadEnded || tcp->bytesAvailable() == 0)) {
            owner.Fail(tcp->errorString().toStdString());
            return;
        }
        established = true;
        if (tcp->bytesAvailable() > 0)
            PostArrival();
        owner.encryption = handshaken;
        if (tcp->state() == QAbstractSocket::UnconnectedState)
            PostClosed();
        owner.Enter(SocketState::Connected);
    }

    template <class Function> void Post(Function function)
    {
        QMetaObject::invokeMethod(this, std::move(function), Qt::QueuedConnection);
    }

    void PostState(SocketState state)
    {
        Post([this, state] { owner.Enter(state); });
    }

    void PostFailure(const std::string& reason)
    {
        Post([&socket = owner, reason] { socket.Fail(reason); });
    }

    void PostClosed()
    {
        if (!established)
            return;
        if (tcp->bytesAvailable() > 0)
            PostArrival();
        Post([this, &socket = owner] {
            // The handler may close the socket, and with it this object.
            const QPointer<Connection> self(this);
            socket.encryption.reset();
            socket.Enter(closedState);
            if (self)
                Raise(socket.Closed);
        });
    }

    Socket& owner;
    QSslSocket* const tls; // the same as `tcp` if the connection is encrypted, else null
    const std::unique_ptr<QTcpSocket> tcp;
    std::string host;
    SocketState closedState = SocketState::Closing;
    std::optional<Encryption> handshaken; // from the end of the handshake on
    bool hasEnded = false; // with an error, as which the toolkit counts the other side's end
    bool established = false;
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
    failureReason.clear();
    const bool encrypted = std::find(SecurePorts.begin(), SecurePorts.end(), port) != SecurePorts.end();
    connection = std::make_unique<Connection>(*this, encrypted);
    connection->Open(host, port);
}

void Socket::Close()
{
    state = SocketState::Closed;
    encryption.reset();
    connection.reset();
}

bool Socket::EndIsComing() const { return state == SocketState::Connected && connection->EndIsComing(); }

void Socket::SendData(std::string_view bytes)
{
    if (state != SocketState::Connected)
        return;
    connection->Tcp().write(bytes.data(), static_cast<qint64>(bytes.size()));
    connection->Tcp().flush();
}

std::string Socket::GetData()
{
    std::string bytes;
    if (!connection)
        return bytes;
    QTcpSocket& tcp = connection->Tcp();
    bytes.resize(static_cast<std::size_t>(tcp.bytesAvailable()));
    const qint64 count = tcp.read(bytes.data(), static_cast<qint64>(bytes.size()));
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    if (state == SocketState::Connected)
        connection->AcknowledgeAtOnce();
    return bytes;
}

void Socket::AnnounceWaiting()
{
    if (connection && connection->Tcp().bytesAvailable() > 0)
        connection->PostArrival();
}

void Socket::Enter(SocketState newState)
{
    state = newState;
    Raise(StateChanged);
}

// Nothing can come of the connection any more: its descriptor is given back before anybody hears of it.
void Socket::Fail(const std::string& reason)
{
    Close();
    failureReason = reason;
    Enter(SocketState::Error);
}
