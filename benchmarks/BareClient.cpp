#include "benchmarks/BareClient.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

BareClient::BareClient(int port)
    : descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    const int on = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        (void)ReadUntil("\r\n"); // what is lost shows with the first command
}

BareClient::~BareClient() { close(descriptor); }

std::string_view BareClient::Command(std::string_view line)
{
    if (!Send(line) || !ReadUntil("\r\n"))
        return {};
    return received;
}

std::string_view BareClient::Text(std::string_view line)
{
    constexpr std::string_view terminator = "\r\n.\r\n";
    if (!Send(line) || !ReadUntil(terminator))
        return {};
    std::string_view text = received;
    text.remove_prefix(text.find('\n') + 1);
    text.remove_suffix(terminator.size());
    return text;
}

std::size_t BareClient::Read(char* memory, std::size_t size)
{
    const ssize_t count = recv(descriptor, memory, size, 0);
    const int on = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_QUICKACK, &on, sizeof on);
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

bool BareClient::Send(std::string_view line)
{
    const std::string bytes = std::string(line) + "\r\n";
    return send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
}

// Nothing comes behind a reply until the next command, so its end is the end of what has come.
bool BareClient::ReadUntil(std::string_view end)
{
    received.clear();
    char packet[64 * 1024];
    while (!received.ends_with(end)) {
        const std::size_t count = Read(packet, sizeof packet);
        if (count == 0)
            return false;
        received.append(packet, count);
    }
    return true;
}
