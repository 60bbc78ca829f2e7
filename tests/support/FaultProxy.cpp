#include "tests/support/FaultProxy.h"

#include "demo/sample/Loopback.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace {

using namespace std::chrono_literals;

bool IsReadable(int descriptor, std::chrono::milliseconds wait)
{
    pollfd waiting{descriptor, POLLIN, 0};
    return poll(&waiting, 1, static_cast<int>(wait.count())) > 0;
}

}

FaultProxy::FaultProxy(std::uint16_t port_)
    : serverPort(port_)
    , listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    , port(ListenOnLoopback(listener))
    , thread([this] { Run(); })
{
}

FaultProxy::~FaultProxy()
{
    stopping = true;
    shutdown(listener, SHUT_RDWR);
    thread.join();
    close(listener);
}

void FaultProxy::SetFault(const Fault& newFault)
{
    const std::lock_guard lock(mutex);
    fault = newFault;
    struck = false;
}

void FaultProxy::Run()
{
    while (!stopping) {
        const int client = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (client < 0)
            continue;
        const int on = 1;
        setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        Serve(client);
        close(client);
    }
}

void FaultProxy::Serve(int client)
{
    const int server = ConnectToLoopback(serverPort);
    Fault now;
    {
        const std::lock_guard lock(mutex);
        now = fault;
        exchanges.emplace_back();
        line.clear();
        statusOpen = true;
    }
    passed = 0;
    std::array<char, 65536> bytes;
    bool open = server >= 0;
    while (open && !stopping) {
        std::array<pollfd, 2> ends{pollfd{client, POLLIN, 0}, pollfd{server, POLLIN, 0}};
        poll(ends.data(), ends.size(), 50);
        for (const pollfd& from : ends) {
            if (!open || from.revents == 0)
                continue;
            // A server may wait for the acknowledgement of a status line before it sends the text.
            const int on = 1;
            setsockopt(from.fd, IPPROTO_TCP, TCP_QUICKACK, &on, sizeof on);
            const ssize_t got = recv(from.fd, bytes.data(), bytes.size(), 0);
            const std::string_view piece(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
            Note(piece, from.fd == client);
            open = got > 0 && (from.fd == client ? SendAll(server, piece) : PassOn(client, piece, now));
        }
    }
    if (server >= 0)
        close(server);
}

std::vector<FaultProxy::Exchange> FaultProxy::Exchanges() const
{
    const std::lock_guard lock(mutex);
    return exchanges;
}

void FaultProxy::Note(std::string_view bytes, bool fromClient)
{
    const std::lock_guard lock(mutex);
    while (!bytes.empty() && (fromClient || statusOpen)) {
        const std::size_t end = bytes.find('\n');
        line += bytes.substr(0, end);
        if (end == bytes.npos)
            return;
        bytes.remove_prefix(end + 1);
        line.erase(line.find_last_not_of('\r') + 1);
        if (fromClient)
            exchanges.push_back({std::exchange(line, {}), {}});
        else
            exchanges.back().status = std::exchange(line, {});
        statusOpen = fromClient;
    }
}

// False when the connection is over.
bool FaultProxy::PassOn(int client, std::string_view bytes, const Fault& now)
{
    const std::uint64_t before = passed;
    if (now.kind == Fault::Kind::None) {
        // The server sends each reply in one go.
        if (before == 0)
            replyEnds.clear();
        replyEnds.push_back(before + bytes.size());
        inStatusLine.resize(before + bytes.size());
        for (std::size_t index = 1; index <= bytes.find('\n') && index < bytes.size(); ++index)
            inStatusLine[before + index] = true;
    }
    passed += bytes.size();
    // The end may come right behind a whole reply.
    const bool isEnd = now.kind == Fault::Kind::Close || now.kind == Fault::Kind::Reset;
    if (now.kind == Fault::Kind::None || now.at < before || now.at >= passed + (isEnd ? 1 : 0))
        return SendAll(client, bytes);
    const std::size_t first = static_cast<std::size_t>(now.at - before);
    struck = now.kind == Fault::Kind::Split; // the first part may be all that the client waits for
    const std::string_view firstBytes = bytes.substr(0, first);
    // In one segment with the last bytes, so that both are there when the client looks.
    const bool together = now.kind == Fault::Kind::Close && now.after == 0ms;
    if (together ? send(client, firstBytes.data(), first, MSG_NOSIGNAL | MSG_MORE) < 0 : !SendAll(client, firstBytes))
        return false;
    bool goOn = true;
    switch (now.kind) {
    case Fault::Kind::Close:
    case Fault::Kind::Reset:
        std::this_thread::sleep_for(now.after);
        if (now.kind == Fault::Kind::Reset) {
            const linger none{1, 0};
            setsockopt(client, SOL_SOCKET, SO_LINGER, &none, sizeof none);
        }
        goOn = false;
        break;
    case Fault::Kind::Split:
        std::this_thread::sleep_for(1ms);
        break;
    case Fault::Kind::Insert:
        for (std::size_t time = 0; goOn && time < now.times; ++time)
            goOn = SendAll(client, now.bytes);
        break;
    default:
        break;
    }
    struck = true;
    if (goOn && (now.kind == Fault::Kind::Stall || now.thenStall)) {
        while (!stopping && !IsReadable(client, 20ms)) { }
        return false;
    }
    return goOn && SendAll(client, bytes.substr(first));
}
