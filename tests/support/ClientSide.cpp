#include "tests/support/ClientSide.h"

#include <arpa/inet.h>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace {

std::uint16_t PortOf(int descriptor, int (*name)(int, sockaddr*, socklen_t*))
{
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    if (name(descriptor, reinterpret_cast<sockaddr*>(&address), &length) != 0)
        return 0;
    if (address.ss_family == AF_INET)
        return ntohs(reinterpret_cast<const sockaddr_in&>(address).sin_port);
    if (address.ss_family == AF_INET6)
        return ntohs(reinterpret_cast<const sockaddr_in6&>(address).sin6_port);
    return 0;
}

}

void ClientSide::Attach(std::uint16_t client, std::uint16_t server)
{
    clientPort = client;
    serverPort = server;
    descriptor = -1;
}

int ClientSide::Descriptor()
{
    constexpr int highest = 4096;
    const auto isClient = [this](int candidate) {
        return PortOf(candidate, getsockname) == clientPort && PortOf(candidate, getpeername) == serverPort;
    };
    // The number may by now belong to another file, so it is looked at anew each time.
    if (descriptor >= 0 && isClient(descriptor))
        return descriptor;
    for (descriptor = 0; descriptor < highest; ++descriptor) {
        if (isClient(descriptor))
            return descriptor;
    }
    return descriptor = -1;
}

bool ClientSide::HasRead(std::uint64_t sent)
{
    const int client = Descriptor();
    if (client < 0)
        return true;
    tcp_info info{};
    socklen_t length = sizeof info;
    int waiting = 0;
    if (getsockopt(client, IPPROTO_TCP, TCP_INFO, &info, &length) != 0 || ioctl(client, FIONREAD, &waiting) != 0)
        return true;
    return info.tcpi_bytes_received >= sent && waiting == 0;
}
