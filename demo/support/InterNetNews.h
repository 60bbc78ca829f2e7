#pragma once

#include "demo/sample/Identity.h"
#include "demo/sample/NewsClient.h"
#include "demo/support/TemporaryFolder.h"

#include <QProcess>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A private InterNetNews on 127.0.0.1 (tools/news-server): a news server as they stand on the net, for one test or
// benchmark. It goes with the object.
class InterNetNews {
public:
    struct Account {
        std::string name;
        std::string password;
    };

    // Why this user cannot run the server on this machine; empty if he can.
    static std::string Obstacle();

    InterNetNews() = default;
    ~InterNetNews();
    InterNetNews(const InterNetNews&) = delete;
    InterNetNews& operator=(const InterNetNews&) = delete;

    // Starts it with these groups, all empty. With an account, it answers 480 to everything until a client has given
    // that name and password. The result tells what went wrong; it is empty when the server is ready.
    [[nodiscard]] std::string Start(const std::vector<std::string>& groups, const std::optional<Account>& account = {});

    // It has four digits, so that it fits the program's port field.
    std::uint16_t Port() const { return port; }

    // Takes encrypted connections as well, once it has started, on a port of their own with four digits. The result is
    // as for Start().
    [[nodiscard]] std::string StartEncrypted();
    std::uint16_t SecurePort() const { return securePort; }

    // Posts an article, whose body consists of CR LF lines. The articles of a group get the numbers 1, 2, 3 and so on.
    // The result is the server's status line, "240 ..." when it has taken the article.
    [[nodiscard]] std::string Post(std::string_view group, std::string_view subject, std::string_view body);

    // Takes an article out of a group as time does: its number stays free. False if there is no such article.
    [[nodiscard]] bool DeleteArticle(std::string_view group, int number);

private:
    TemporaryFolder root;
    const Identity identity;
    QProcess server;
    QProcess encryptedServer;
    std::uint16_t port = 0;
    std::uint16_t securePort = 0;
    std::optional<NewsClient> poster;
};
