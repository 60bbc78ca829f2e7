#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// Stands between a client and a news server, both on 127.0.0.1, in a thread of its own: passes every byte on as it is
// and keeps what was asked and how it was answered, over all connections.
class CommandLog {
public:
    struct Exchange {
        std::string command; // empty for a greeting
        std::string status; // the first line of the reply; empty until it came
    };

    explicit CommandLog(int serverPort);
    ~CommandLog();
    CommandLog(const CommandLog&) = delete;
    CommandLog& operator=(const CommandLog&) = delete;

    // Where the client is to connect to: four digits, or 0 if no port was to be had.
    int Port() const { return port; }

    std::vector<Exchange> Exchanges() const;

private:
    struct Connection;
    void Serve();
    bool PassOn(Connection& connection, bool fromClient);

    const int serverPort;
    int port = 0;
    int listener = -1;
    int stopping[2] = {-1, -1}; // a pipe; the thread ends when its writing end is closed
    mutable std::mutex guard;
    std::vector<Exchange> exchanges;
    std::thread thread;
};
