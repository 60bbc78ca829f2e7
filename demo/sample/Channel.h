#pragma once

#include "demo/sample/Identity.h"

#include <cstddef>
#include <memory>
#include <string_view>

struct ssl_st;

enum class Wire { Plain, Encrypted };

// What goes over a connected, blocking TCP socket, which it does not own, plain or encrypted by OpenSSL.
class Channel {
public:
    // Of a client, which takes whatever certificate it is shown.
    explicit Channel(int descriptor, Wire wire = Wire::Plain);

    // Of a server: plain without an identity. `protocol` is the newest that is spoken, as OpenSSL names it, or 0.
    Channel(int descriptor, const Identity* identity, int protocol = 0);

    Channel(Channel&&) = default;
    ~Channel();

    int Descriptor() const { return descriptor; }

    // False if the handshake has failed.
    bool IsOpen() const { return open; }

    // Reads once, to the end of what waits or of the memory; the number of bytes, 0 at the end. Acknowledges at once.
    std::size_t Read(char* memory, std::size_t size);

    // Whether bytes wait that have left the socket already.
    bool HasPending() const;

    // False if the other side is gone.
    bool Send(std::string_view bytes);

    // Agrees on new keys in the middle of a connection: a key update, or in TLS 1.2 a renegotiation.
    void RenewKeys();

private:
    struct Free {
        void operator()(ssl_st* pointer) const;
    };

    void AcknowledgeAtOnce() const;

    const int descriptor;
    std::unique_ptr<ssl_st, Free> tls; // null if it is plain
    bool open = true;
};
