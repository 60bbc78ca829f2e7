#include "tests/support/FaultProxy.h"

#include "demo/sample/Loopback.h"

#include <arpa/inet.h>
#include <array>
#include <chrono>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;

int ConnectTo(std::uint16_t port)
{
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return descriptor;
    close(descriptor);
    return -1;
}

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
    const int server = ConnectTo(serverPort);
    Fault now;
    {
        const std::lock_guard lock(mutex);
        now = fault;
    }
    passed = 0;
    std::array<char, 65536> bytes;
    bool open = server >= 0;
    while (open && !stopping) {
        std::array<pollfd, 2> ends{pollfd{client, POLLIN, 0}, pollfd{server, POLLIN, 0}};
        poll(ends.data(), ends.size(), 50);
        if (ends[0].revents != 0) {
            const ssize_t got = recv(client, bytes.data(), bytes.size(), 0);
            open = got > 0 && SendAll(server, {bytes.data(), static_cast<std::size_t>(got)});
        }
        if (open && ends[1].revents != 0) {
            const ssize_t got = recv(server, bytes.data(), bytes.size(), 0);
            open = got > 0 && PassOn(client, {bytes.data(), static_cast<std::size_t>(got)}, now);
        }
    }
    if (server >= 0)
        close(server);
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
