#pragma once

#include <string>
#include <string_view>

// The least that a news client can be: a blocking socket on 127.0.0.1 that acknowledges at once what it reads.
class BareClient {
public:
    // Connects and reads the greeting.
    explicit BareClient(int port);
    ~BareClient();
    BareClient(const BareClient&) = delete;
    BareClient& operator=(const BareClient&) = delete;

    // Sends a line and reads the status line that answers it. Like Text(), it gives what stays valid until the next
    // command, and nothing once the connection is lost.
    std::string_view Command(std::string_view line);

    // Sends a line and reads the multi-line reply: what stands between the status line and the terminator.
    std::string_view Text(std::string_view line);

    // Reads once, to the end of what waits or of the memory; the number of bytes, or nothing at the end.
    std::size_t Read(char* memory, std::size_t size);

    bool Send(std::string_view line);

private:
    bool ReadUntil(std::string_view end);

    int descriptor;
    std::string received;
};
