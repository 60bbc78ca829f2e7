#pragma once

#include "tests/real-server/NewsClient.h"

#include "demo/support/TemporaryFolder.h"

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A private InterNetNews (Debian's package inn2) on loopback: a news server as they stand on the net, for one test or
// benchmark. All that it keeps lies in a temporary directory of its own and goes with the object; a news server that
// the machine may have for itself is not touched.
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
    int Port() const { return port; }

    // Posts an article to one group, or several with commas between them. `headers` has the lines besides Newsgroups
    // and Message-ID, From and Subject among them; it and `body` consist of LF or CR LF lines. The articles of a group
    // get the numbers 1, 2, 3 and so on. The result is the server's status line, "240 ..." when it has taken the
    // article.
    [[nodiscard]] std::string Post(
        std::string_view groups, std::string_view messageId, std::string_view headers, std::string_view body);

    // Takes an article out of a group as time does: its number stays free. False if there is no such article.
    [[nodiscard]] bool DeleteArticle(std::string_view group, int number);

private:
    std::string Prepare(const std::vector<std::string>& groups);
    bool Launch();
    bool Answers();
    void Stop();
    pid_t Spawn(const std::vector<std::string>& command) const;

    TemporaryFolder root;
    std::optional<Account> login;
    int port = 0;
    pid_t server = -1;
    NewsClient poster;
};
