#include "tests/real-server/NewsClient.h"

#include "demo/sample/Loopback.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdint>

namespace {

void Set(int descriptor, int level, int option)
{
    const int on = 1;
    (void)setsockopt(descriptor, level, option, &on, sizeof on);
}

}

NewsClient::~NewsClient() { Disconnect(); }

std::string NewsClient::Connect(int port)
{
    Disconnect();
    descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const timeval patience{30, 0};
    (void)setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    Set(descriptor, IPPROTO_TCP, TCP_NODELAY);

    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        Disconnect();
        return {};
    }
    return ReadLine();
}

void NewsClient::Disconnect()
{
    if (descriptor >= 0)
        close(descriptor);
    descriptor = -1;
    received.clear();
}

std::string NewsClient::Command(std::string_view line)
{
    return SendAll(descriptor, std::string(line) + "\r\n") ? ReadLine() : std::string();
}

std::string NewsClient::Text()
{
    std::string text;
    while (descriptor >= 0) {
        const std::string line = ReadLine();
        if (line == ".")
            break;
        text.append(line, line.starts_with('.') ? 1 : 0).append("\r\n");
    }
    return text;
}

std::string NewsClient::SendText(std::string_view text)
{
    std::string wire;
    while (!text.empty()) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        if (line.starts_with('.'))
            wire += '.';
        wire.append(line).append("\r\n");
    }
    return Command(wire + ".");
}

std::string NewsClient::ReadLine()
{
    std::size_t end = received.find('\n');
    while (end == received.npos) {
        char piece[16384];
        // A server that writes a reply in two goes waits in between for the acknowledgement, which would be delayed.
        Set(descriptor, IPPROTO_TCP, TCP_QUICKACK);
        const ssize_t length = recv(descriptor, piece, sizeof piece, 0);
        if (length <= 0) {
            Disconnect();
            return {};
        }
        const std::size_t before = received.size();
        received.append(piece, static_cast<std::size_t>(length));
        end = received.find('\n', before);
    }
    std::string line = received.substr(0, end);
    received.erase(0, end + 1);
    if (line.ends_with('\r'))
        line.pop_back();
    return line;
}
