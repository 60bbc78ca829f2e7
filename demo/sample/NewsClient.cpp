#include "demo/sample/NewsClient.h"

#include "demo/sample/Loopback.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

NewsClient::NewsClient(std::uint16_t port, Wire wire)
    : descriptor(ConnectToLoopback(port))
    , channel(descriptor, wire)
    , connected(descriptor >= 0 && channel.IsOpen())
{
    const timeval patience{30, 0};
    setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    (void)ReadUntil("\r\n");
}

NewsClient::~NewsClient()
{
    if (descriptor >= 0)
        close(descriptor);
}

std::string_view NewsClient::Command(std::string_view line)
{
    if (!Send(line) || !ReadUntil("\r\n"))
        return {};
    return received;
}

std::string_view NewsClient::Text(std::string_view line)
{
    constexpr std::string_view terminator = "\r\n.\r\n";
    if (!Send(line) || !ReadUntil(terminator))
        return {};
    std::string_view text = received;
    text.remove_prefix(text.find('\n') + 1);
    text.remove_suffix(terminator.size());
    return text;
}

std::size_t NewsClient::Read(char* memory, std::size_t size)
{
    const std::size_t count = channel.Read(memory, size);
    connected = count > 0;
    return count;
}

bool NewsClient::Send(std::string_view line) { return channel.Send(std::string(line) + "\r\n"); }

// Nothing comes behind a reply until the next command, so its end is the end of what has come.
bool NewsClient::ReadUntil(std::string_view end)
{
    received.clear();
    char packet[64 * 1024];
    while (connected && !received.ends_with(end))
        received.append(packet, Read(packet, sizeof packet));
    return connected;
}
