#pragma once

#include "demo/sample/Channel.h"

#include <cstdint>
#include <string>
#include <string_view>

// The least that a news client can be: a blocking socket on 127.0.0.1 that acknowledges at once what it reads.
class NewsClient {
public:
    // Connects and reads the greeting.
    explicit NewsClient(std::uint16_t port, Wire wire = Wire::Plain);
    ~NewsClient();
    NewsClient(const NewsClient&) = delete;
    NewsClient& operator=(const NewsClient&) = delete;

    // False once the connection is lost, or when a server has said nothing for 30 seconds.
    bool IsConnected() const { return connected; }

    // Sends a line and reads the status line that answers it. Like Text(), it gives what stays valid until the next
    // command, and nothing when the connection is lost.
    std::string_view Command(std::string_view line);

    // Sends a line and reads the multi-line reply: what stands between the status line and the terminator.
    std::string_view Text(std::string_view line);

    // Reads once, to the end of what waits or of the memory; the number of bytes, or nothing at the end.
    std::size_t Read(char* memory, std::size_t size);

    bool Send(std::string_view line);

private:
    bool ReadUntil(std::string_view end);

    const int descriptor;
    Channel channel;
    bool connected;
    std::string received;
};
