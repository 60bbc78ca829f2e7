#include "tests/real-server/CommandLog.h"

#include "demo/sample/Loopback.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <list>
#include <string_view>

namespace {

sockaddr_in Loopback(int port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    return address;
}

int NewSocket() { return socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0); }

void Set(int descriptor, int option)
{
    const int on = 1;
    (void)setsockopt(descriptor, IPPROTO_TCP, option, &on, sizeof on);
}

// Appends the bytes up to the first line end to `line`; true when that end was among them.
bool TakeLine(std::string_view& bytes, std::string& line)
{
    const std::size_t end = bytes.find('\n');
    line += bytes.substr(0, end);
    bytes.remove_prefix(end == bytes.npos ? bytes.size() : end + 1);
    if (end != bytes.npos && line.ends_with('\r'))
        line.pop_back();
    return end != bytes.npos;
}

}

// One connection through here. A client that waits for each reply before its next command is taken for granted.
struct CommandLog::Connection {
    int client = -1;
    int server = -1;
    std::string command; // as far as it has come
    std::string status;
    std::size_t awaited; // the exchange that the next status line belongs to
    bool statusOpen = true; // still to come; the rest of a reply is text
};

CommandLog::CommandLog(int newsPort)
    : serverPort(newsPort)
{
    listener = NewSocket();
    port = ListenOnLoopback(listener);
    if (port != 0 && pipe2(stopping, O_CLOEXEC) == 0)
        thread = std::thread([this] { Serve(); });
}

CommandLog::~CommandLog()
{
    close(stopping[1]);
    if (thread.joinable())
        thread.join();
    close(stopping[0]);
    close(listener);
}

std::vector<CommandLog::Exchange> CommandLog::Exchanges() const
{
    const std::lock_guard lock(guard);
    return exchanges;
}

void CommandLog::Serve()
{
    std::list<Connection> connections;
    for (;;) {
        std::vector<pollfd> polled{{stopping[0], POLLIN, 0}, {listener, POLLIN, 0}};
        for (const Connection& connection : connections) {
            polled.push_back({connection.client, POLLIN, 0});
            polled.push_back({connection.server, POLLIN, 0});
        }
        (void)poll(polled.data(), polled.size(), -1);
        if (polled[0].revents)
            break;
        std::size_t index = 2;
        connections.remove_if([&](Connection& connection) {
            const bool fromClient = polled[index].revents != 0;
            const bool fromServer = polled[index + 1].revents != 0;
            index += 2;
            if ((!fromServer || PassOn(connection, false)) && (!fromClient || PassOn(connection, true)))
                return false;
            close(connection.client);
            close(connection.server);
            return true;
        });
        if (polled[1].revents) {
            Connection connection;
            connection.client = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
            connection.server = NewSocket();
            const sockaddr_in address = Loopback(serverPort);
            (void)connect(connection.server, reinterpret_cast<const sockaddr*>(&address), sizeof address);
            Set(connection.client, TCP_NODELAY);
            Set(connection.server, TCP_NODELAY);
            const std::lock_guard lock(guard);
            connection.awaited = exchanges.size();
            exchanges.push_back({});
            connections.push_back(std::move(connection));
        }
    }
    for (const Connection& connection : connections) {
        close(connection.client);
        close(connection.server);
    }
}

// False when the connection is at its end.
bool CommandLog::PassOn(Connection& connection, bool fromClient)
{
    const int from = fromClient ? connection.client : connection.server;
    // The server waits for the acknowledgement of a status line before it sends the text; do not let it be delayed.
    Set(from, TCP_QUICKACK);
    char piece[65536];
    const ssize_t length = recv(from, piece, sizeof piece, 0);
    if (length <= 0)
        return false;
    const std::string_view bytes(piece, static_cast<std::size_t>(length));
    std::string_view rest = bytes;
    {
        const std::lock_guard lock(guard);
        while (fromClient && TakeLine(rest, connection.command)) {
            connection.awaited = exchanges.size();
            connection.statusOpen = true;
            exchanges.push_back({std::move(connection.command), {}});
            connection.command.clear();
        }
        if (!fromClient && connection.statusOpen && TakeLine(rest, connection.status)) {
            exchanges[connection.awaited].status = std::move(connection.status);
            connection.status.clear();
            connection.statusOpen = false;
        }
    }
    return SendAll(fromClient ? connection.server : connection.client, bytes);
}
