#include "demo/sample/Loopback.h"

#include "demo/sample/ShortPort.h"

#include <netinet/in.h>
#include <sys/socket.h>

std::uint16_t ListenOnLoopback(int descriptor)
{
    constexpr int waitingConnections = 16;
    return ListenOnShortPort([descriptor](std::uint16_t port) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(port);
        return bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0
            && listen(descriptor, waitingConnections) == 0;
    });
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
