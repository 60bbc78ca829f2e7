#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// What goes wrong on the way from the server to the client, and at which byte of what the server sends.
struct Fault {
    enum class Kind {
        None,
        Split, // the rest of what has come so far follows a moment later
        Close, // together with the bytes before it, or `after` a while
        Reset,
        Stall, // nothing comes any more, and the connection stays open
        Insert, // these bytes come in between, `times` over; then as Stall if `thenStall`
    };

    Kind kind = Kind::None;
    std::uint64_t at = 0;
    std::string bytes = {};
    std::size_t times = 1;
    bool thenStall = false;
    std::chrono::milliseconds after{0};
};

// Stands between a client and a server on 127.0.0.1 and lets each connection go through with one fault. It runs in a
// thread of its own, takes one connection at a time, and keeps account of what passes.
class FaultProxy {
public:
    explicit FaultProxy(std::uint16_t serverPort);
    ~FaultProxy();
    FaultProxy(const FaultProxy&) = delete;
    FaultProxy& operator=(const FaultProxy&) = delete;

    // Of four digits, for the program's port field.
    std::uint16_t Port() const { return port; }

    // For the connections from now on.
    void SetFault(const Fault& fault);

    bool HasStruck() const { return struck; } // since SetFault
    std::uint64_t BytesPassed() const { return passed; } // from the server, on the last connection

    // Where the replies of the connection without a fault ended: the greeting, and that to each command.
    const std::vector<std::uint64_t>& ReplyEnds() const { return replyEnds; }

    struct Exchange {
        std::string command; // empty for a greeting
        std::string status; // the first line of the reply; empty until it came
    };

    // What was asked and how it was answered, over all connections. A client that waits for each reply before its next
    // command is taken for granted.
    std::vector<Exchange> Exchanges() const;

    // True if the connection without a fault had that byte in a status line, but not as its first.
    bool IsInStatusLine(std::uint64_t at) const { return inStatusLine.at(at); }

private:
    void Run();
    void Serve(int client);
    bool PassOn(int client, std::string_view bytes, const Fault& now);
    void Note(std::string_view bytes, bool fromClient);

    const std::uint16_t serverPort;
    int listener;
    std::uint16_t port;
    mutable std::mutex mutex;
    Fault fault;
    std::vector<Exchange> exchanges;
    std::string line; // as far as it has come, of the side that speaks
    bool statusOpen = true; // still to come; the rest of a reply is text
    std::atomic<bool> struck = false;
    std::atomic<std::uint64_t> passed = 0;
    std::vector<std::uint64_t> replyEnds; // written while no fault is set, and read while one is
    std::vector<bool> inStatusLine; // written while no fault is set, and read while one is
    std::atomic<bool> stopping = false;
    std::thread thread;
};
