#include "demo/sample/Loopback.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <random>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// `call` is bind() or connect().
template <class Call> bool At(std::uint16_t port, Call call, int descriptor)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return call(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

}

std::uint16_t ListenOnLoopback(int descriptor)
{
    // The ports that a system chooses by itself have five digits. From a random one on, so that tests may run at the
    // same time.
    constexpr unsigned first = 2000;
    constexpr unsigned count = 8000;
    constexpr int waitingConnections = 16;
    const unsigned start = std::random_device{}() % count;
    for (unsigned tried = 0; tried < count; ++tried) {
        const auto port = static_cast<std::uint16_t>(first + (start + tried) % count);
        if (At(port, bind, descriptor) && listen(descriptor, waitingConnections) == 0)
            return port;
    }
    return 0;
}

int ConnectToLoopback(std::uint16_t port)
{
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (At(port, connect, descriptor))
        return descriptor;
    close(descriptor);
    return -1;
}

bool SendAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t sent = send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}
