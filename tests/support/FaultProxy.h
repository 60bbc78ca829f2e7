#pragma once

#include "demo/sample/Channel.h"

#include <atomic>
#include <mutex>
#include <string>
#include <thread>

// Stands between a client and a server on 127.0.0.1, in a thread of its own, and takes one connection at a time: with
// an identity to encrypt the client's side, without to spoil what it need not understand.
class FaultProxy {
public:
    // What happens once so many bytes have come from the server.
    struct Fault {
        enum class Kind {
            None,
            Split, // the rest of what has come so far follows a moment later
            Close,
            Reset,
            Stall, // nothing comes any more, and the connection stays open
            Insert, // these bytes come in between, `times` over; then as Stall if `thenStall`
        };

        Kind kind = Kind::None;
        std::uint64_t at = 0;
        std::string bytes = "garbage";
        std::size_t times = 1;
        bool thenStall = false;
    };

    explicit FaultProxy(std::uint16_t serverPort, const Identity* identity = nullptr);
    ~FaultProxy();

    // Of four digits, for the program's port field.
    std::uint16_t Port() const { return port; }

    // For the connections from now on.
    void SetFault(const Fault& fault);

    bool HasStruck() const { return struck; } // since SetFault
    std::uint64_t BytesPassed() const { return passed; } // from the server, on the last connection

private:
    void Run();
    void Serve(int client);
    bool PassOn(Channel& client, std::string_view bytes, const Fault& now);

    const std::uint16_t serverPort;
    const Identity* const identity;
    int listener;
    std::uint16_t port;
    std::mutex mutex;
    Fault fault;
    std::atomic<bool> struck = false;
    std::atomic<std::uint64_t> passed = 0;
    std::atomic<bool> stopping = false;
    std::thread thread;
};
