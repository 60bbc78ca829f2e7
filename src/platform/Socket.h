#pragma once

#include "platform/Certificate.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

enum class SocketState {
    Closed = 0,
    ResolvingHost = 4,
    HostResolved = 5,
    Connecting = 6,
    Connected = 7,
    Closing = 8,
    Error = 9,
};

// How a connection is encrypted.
struct Encryption {
    std::string protocol; // "TLS 1.3"
    std::string cipher; // as the library names it
    Certificate certificate;
};

// One TCP connection at a time. The port decides whether it is encrypted (TLS 1.2 or newer, from its first byte on):
// then "connected" means that the handshake is done and the certificate accepted, and nothing is sent before. Beyond a
// QTcpSocket or QSslSocket:
// - events are posted, never raised from inside a signal or a call, so that a handler may wait for further events, and
//   one DataArrival hands over all bytes that wait;
// - `State` moves with the events, so that nobody sees a state whose event is still to come;
// - after Close() no event of that connection arrives any more, not even of bytes that were received before, and all
//   that it held is given back, even if one of its handlers is still running;
// - no more than `mostWaiting` bytes are held for a handler that lets them wait; the rest stays at the other side;
// - acknowledgements go out at once: a server that writes its status line and its text separately would otherwise wait
//   40 milliseconds for each.
class Socket {
public:
    Socket();
    ~Socket();

    static constexpr std::size_t mostWaiting = std::size_t{16} << 20;

    // The port of a text field: a whole number from 1 to 65535, else 0.
    static int PortFrom(std::string_view text);

    // The ports whose connections are encrypted.
    std::vector<int> SecurePorts{443, 563};
    // Certificates of authorities in a file (PEM), trusted beside those of the system; none if it is empty.
    std::string AuthoritiesFile;

    // Closes what is open and begins to connect. A port outside 1 to 65535 or an empty host leads to the error state.
    void Connect(const std::string& host, int port);

    // Ends the connection from this side; raises nothing.
    void Close();

    SocketState State() const { return state; }

    // How the connection is encrypted; nothing unless it is connected and encrypted.
    const std::optional<Encryption>& Encrypted() const { return encryption; }

    // Why the last attempt to connect has failed, in words; empty if it has not.
    const std::string& FailureReason() const { return failureReason; }

    // Whether a connected socket's other side has ended the connection, as far as this machine has heard; nobody has
    // been told yet, and bytes may still wait to be handed over.
    bool EndIsComing() const;

    // Sends the bytes, or nothing if the socket is not connected.
    void SendData(std::string_view bytes);

    // All bytes that wait.
    std::string GetData();

    // Raises DataArrival once more if bytes wait, for a handler that let them wait.
    void AnnounceWaiting();

    // Raised at every change of `State`.
    std::function<void()> StateChanged;
    // The other side has closed the connection. What it had sent before has been handed over.
    std::function<void()> Closed;
    // Bytes wait.
    std::function<void()> DataArrival;
    // Says whether a certificate that the system does not trust is accepted; without a handler none is. It may let
    // events through. As soon as `isWanted` is false, the connection is gone and the answer counts for nothing.
    std::function<bool(const Certificate&, const std::function<bool()>& isWanted)> AcceptCertificate;

private:
    class Connection;

    void Enter(SocketState newState);
    void Fail(const std::string& reason);

    std::unique_ptr<Connection> connection;
    SocketState state = SocketState::Closed;
    std::optional<Encryption> encryption;
    std::string failureReason;
};
