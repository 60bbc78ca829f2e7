#pragma once

#include <cstdint>

// The other end of a connection on loopback, when it lies in this same process: it tells whether the client has taken
// what was sent to it. With that a server can send its next piece at the right moment instead of after some time.
class ClientSide {
public:
    // `clientPort` and `serverPort` are the ports of the two ends.
    void Attach(std::uint16_t clientPort, std::uint16_t serverPort);

    // True when all of the `sent` bytes of this connection have arrived and have been read out of the client's socket,
    // and also when no such socket is found in this process (any more).
    bool HasRead(std::uint64_t sent);

private:
    // The client's socket in this process, or -1.
    int Descriptor();

    std::uint16_t clientPort = 0;
    std::uint16_t serverPort = 0;
    int descriptor = -1;
};
