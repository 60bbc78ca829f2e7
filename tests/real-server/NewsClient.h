#pragma once

#include <string>
#include <string_view>

// A blocking connection to a news server on 127.0.0.1, with which a test posts articles and looks at what a server
// says.
class NewsClient {
public:
    NewsClient() = default;
    ~NewsClient();
    NewsClient(const NewsClient&) = delete;
    NewsClient& operator=(const NewsClient&) = delete;

    // Replaces the connection by a new one. The result is the greeting, empty when nobody answers.
    std::string Connect(int port);
    void Disconnect();

    // Sends a line and gives the status line of the reply, without its end; empty when the connection is lost, or when
    // nothing comes for 30 seconds.
    std::string Command(std::string_view line);

    // The text that follows some status lines: its lines with CR LF, without the closing dot, dot-stuffing undone.
    std::string Text();

    // Sends a text of LF or CR LF lines dot-stuffed and with the closing dot. The result is the status line.
    std::string SendText(std::string_view text);

private:
    std::string ReadLine();

    int descriptor = -1;
    std::string received;
};
