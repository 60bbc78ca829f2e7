#pragma once

#include "demo/sample/Channel.h"
#include "demo/sample/SampleGroups.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

// A small news server on 127.0.0.1 that answers from threads of its own, so that it goes on while the program's only
// thread sleeps. It speaks what a reader needs of RFC 3977 (group, stat, head, body, next, list, help, date,
// quit) and the user name and password of RFC 4643. Any number of clients may be
// connected.
class SampleServer {
public:
    struct Options {
        // With a user, what a client may do before it has logged in is little; the rest is answered with 480.
        std::string user = {};
        std::string password = {};
        // What a body takes, as on a slow line.
        std::chrono::milliseconds bodyTime{0};
        // Takes the greeting and each reply to the client, in the thread of the connection, which ends on false.
        std::function<bool(Channel& channel, std::string_view bytes)> send = &Channel::Send;
        // With one, there is a second port, for encrypted connections; `protocol` as for Channel.
        std::shared_ptr<const Identity> identity = nullptr;
        int protocol = 0;
    };

    struct Command {
        std::string name; // in lower case
        std::string argument; // what stands behind it, without blanks around it
    };

    // Listens on a free port of four digits, or two.
    explicit SampleServer(SampleGroups groups);
    SampleServer(SampleGroups groups, Options options);
    ~SampleServer();
    SampleServer(const SampleServer&) = delete;
    SampleServer& operator=(const SampleServer&) = delete;

    // 0 if there was no port to listen on.
    std::uint16_t Port() const { return plain.port; }

    // 0 if there is none.
    std::uint16_t SecurePort() const { return secure.port; }

    // Replaces what there is to read. A client sees it from its next group or list command on.
    void SetGroups(SampleGroups groups);

    // The commands of all clients since the start or ClearLog(), in the order of their coming.
    std::vector<Command> Log() const;
    std::size_t CommandCount(std::string_view name) const;
    void ClearLog();

    std::size_t ConnectionCount() const; // since the start

private:
    struct Door {
        int listener = -1;
        std::uint16_t port = 0;
        std::thread acceptor;
    };

    void Open(Door& door, const Identity* identity);
    void Accept(int listener, const Identity* identity);
    void Serve(int descriptor, const Identity* identity);
    std::shared_ptr<const SampleGroups> Groups() const;
    void Note(Command command);

    const Options options;
    mutable std::mutex mutex; // for all below
    std::shared_ptr<const SampleGroups> current;
    std::vector<Command> log;
    std::vector<int> descriptors; // of the connections, those that are closed as -1
    std::vector<std::thread> connections;
    bool stopping = false;

    Door plain;
    Door secure;
};
