#include "demo/sample/SampleServer.h"

#include "demo/sample/Loopback.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <ctime>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace {

// RFC 3977 allows a command of 512 bytes; what is much longer is no command.
constexpr std::size_t longestCommand = 4096;

std::string WithoutBlanksAround(std::string_view text)
{
    static constexpr std::string_view blanks = " \t\r";
    const std::size_t first = std::min(text.find_first_not_of(blanks), text.size());
    return std::string(text.substr(first, text.find_last_not_of(blanks) + 1 - first));
}

struct Reply {
    std::string bytes; // the status line and, behind it, the text with its terminator
    bool hangUp = false;
};

using Articles = std::vector<SampleArticle>;

Articles::const_iterator FirstFrom(const Articles& articles, std::int64_t number)
{
    return std::lower_bound(articles.begin(), articles.end(), number,
        [](const SampleArticle& article, std::int64_t wanted) { return article.number < wanted; });
}

std::string LowerCase(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
        [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return lower;
}

std::string MessageId(const SampleArticle& article)
{
    static constexpr std::string_view field = "\r\nmessage-id:";
    const std::string head = "\r\n" + article.head;
    const std::size_t at = LowerCase(head).find(field);
    if (at == head.npos)
        return "<" + std::to_string(article.number) + "@sample.invalid>";
    const std::size_t begin = at + field.size();
    return WithoutBlanksAround(std::string_view(head).substr(begin, head.find("\r\n", begin) - begin));
}

Reply OneLine(std::string status)
{
    status += "\r\n";
    return {std::move(status)};
}

// The lines go over the wire with leading dots doubled and the last line ended.
Reply MultiLine(const std::string& status, std::string_view lines)
{
    std::string bytes;
    bytes.reserve(lines.size() + lines.size() / 32 + status.size() + 8);
    bytes += status + "\r\n";
    while (!lines.empty()) {
        if (lines.front() == '.')
            bytes += '.';
        // Only lines that begin with a dot need a look; everything up to the next of them goes over whole.
        const std::size_t lineBeforeDot = lines.find("\n.");
        const std::size_t length = lineBeforeDot == lines.npos ? lines.size() : lineBeforeDot + 1;
        bytes += lines.substr(0, length);
        lines.remove_prefix(length);
    }
    if (!bytes.ends_with("\r\n"))
        bytes += "\r\n";
    bytes += ".\r\n";
    return {std::move(bytes)};
}

Reply ShowArticle(const std::string& command, const SampleArticle& article, std::int32_t number)
{
    const std::string what = std::to_string(number) + " " + MessageId(article);
    if (command == "head")
        return MultiLine("221 " + what, article.head);
    if (command == "body")
        return MultiLine("222 " + what, article.body);
    return OneLine("223 " + what);
}

std::string UtcNow()
{
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&now, &utc);
    char text[32];
    std::strftime(text, sizeof text, "%Y%m%d%H%M%S", &utc);
    return text;
}

// One client's place on the sample server: takes its commands and makes the replies.
class SampleSession {
public:
    using LatestGroups = std::function<std::shared_ptr<const SampleGroups>()>;

    // Without a user nobody has to log in.
    SampleSession(std::string user, std::string password, LatestGroups latestGroups);

    // `command` is in lower case; `argument` has no blanks around it.
    Reply Answer(const std::string& command, const std::string& argument);

private:
    Reply LogIn(std::string_view argument);
    Reply SelectGroup(const std::string& name);
    Reply Show(const std::string& command, const std::string& which);
    Reply Next();
    Reply List() const;

    const std::string requiredUser;
    const std::string requiredPassword;
    const LatestGroups latestGroups;

    bool loggedIn;
    std::string user; // given by authinfo user, until the password is there
    std::shared_ptr<const SampleGroups> groups; // that `group` belongs to
    const SampleGroup* group = nullptr;
    std::int32_t currentArticle = 0; // 0 while it is invalid
};

SampleSession::SampleSession(std::string userName, std::string password, LatestGroups source)
    : requiredUser(std::move(userName))
    , requiredPassword(std::move(password))
    , latestGroups(std::move(source))
    , loggedIn(requiredUser.empty())
    , groups(latestGroups())
{
}

Reply SampleSession::Answer(const std::string& command, const std::string& argument)
{
    if (command == "quit")
        return {"205 bye\r\n", true};
    if (command == "help")
        return MultiLine("100 help follows", "authinfo body date group head help list next quit stat\r\n");
    if (command == "authinfo")
        return LogIn(argument);
    if (!loggedIn)
        return OneLine("480 authentication required");

    if (command == "date")
        return OneLine("111 " + UtcNow());
    if (command == "list")
        return List();
    if (command == "group")
        return SelectGroup(argument);
    if (command == "stat" || command == "head" || command == "body")
        return Show(command, argument);
    if (command == "next")
        return Next();
    return OneLine("500 unknown command");
}

// authinfo user alice   ->  381
// authinfo pass secret  ->  281 or 481
Reply SampleSession::LogIn(std::string_view argument)
{
    const std::size_t blank = std::min(argument.find(' '), argument.size());
    const std::string kind = LowerCase(argument.substr(0, blank));
    const std::string value = WithoutBlanksAround(argument.substr(blank));
    if (loggedIn)
        return OneLine("502 there is nothing to log in to");
    if (kind == "user") {
        user = value;
        return OneLine("381 password required");
    }
    if (kind != "pass")
        return OneLine("501 unknown kind of authentication");
    if (user.empty())
        return OneLine("482 the user comes first");
    loggedIn = user == requiredUser && value == requiredPassword;
    user.clear();
    return OneLine(loggedIn ? "281 welcome" : "481 unknown user or wrong password");
}

Reply SampleSession::SelectGroup(const std::string& name)
{
    if (name.empty())
        return OneLine("501 which group?");
    const std::shared_ptr<const SampleGroups> latest = latestGroups();
    const auto found
        = std::find_if(latest->begin(), latest->end(), [&](const SampleGroup& each) { return each.name == name; });
    if (found == latest->end())
        return OneLine("411 no such group");
    groups = latest;
    group = &*found;
    const Articles& articles = group->articles;
    currentArticle = articles.empty() ? 0 : articles.front().number;
    const std::int32_t last = articles.empty() ? 0 : articles.back().number;
    // 211 42 7001 7055 alt.kites   (code, count, first, last, name)
    return OneLine("211 " + std::to_string(articles.size()) + " " + std::to_string(currentArticle) + " "
        + std::to_string(last) + " " + name);
}

Reply SampleSession::Show(const std::string& command, const std::string& which)
{
    if (!group)
        return OneLine("412 no group selected");
    std::int64_t number = currentArticle;
    if (which.empty()) {
        if (currentArticle == 0)
            return OneLine("420 no current article");
    } else {
        const char* const last = which.data() + which.size();
        const auto [end, error] = std::from_chars(which.data(), last, number);
        if (error != std::errc() || end != last)
            return OneLine("501 that is no number");
    }
    const auto found = FirstFrom(group->articles, number);
    if (found == group->articles.end() || found->number != number)
        return OneLine("423 no such article in this group");
    currentArticle = found->number;
    return ShowArticle(command, *found, found->number);
}

Reply SampleSession::Next()
{
    if (!group)
        return OneLine("412 no group selected");
    if (currentArticle == 0)
        return OneLine("420 no current article");
    const auto found = FirstFrom(group->articles, std::int64_t{currentArticle} + 1);
    if (found == group->articles.end())
        return OneLine("421 no next article");
    currentArticle = found->number;
    return ShowArticle("stat", *found, found->number);
}

// alt.kites 7055 7001 y   (name, last, first, status)
Reply SampleSession::List() const
{
    std::string lines;
    for (const SampleGroup& each : *latestGroups()) {
        const bool empty = each.articles.empty();
        lines += each.name + " " + std::to_string(empty ? 0 : each.articles.back().number) + " "
            + std::to_string(empty ? 1 : each.articles.front().number) + " y\r\n";
    }
    return MultiLine("215 the groups follow", lines);
}

}

SampleServer::SampleServer(SampleGroups groups)
    : SampleServer(std::move(groups), Options())
{
}

SampleServer::SampleServer(SampleGroups groups, Options serverOptions)
    : options(std::move(serverOptions))
    , current(std::make_shared<const SampleGroups>(std::move(groups)))
{
    Open(plain, nullptr);
    if (options.identity)
        Open(secure, options.identity.get());
}

void SampleServer::Open(Door& door, const Identity* identity)
{
    door.listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    door.port = ListenOnLoopback(door.listener);
    if (door.port != 0)
        door.acceptor = std::thread([=, this, listener = door.listener] { Accept(listener, identity); });
}

SampleServer::~SampleServer()
{
    {
        const std::lock_guard lock(mutex);
        stopping = true;
        for (const int descriptor : descriptors) {
            if (descriptor >= 0)
                shutdown(descriptor, SHUT_RDWR);
        }
    }
    for (Door* door : {&plain, &secure}) {
        shutdown(door->listener, SHUT_RDWR);
        if (door->acceptor.joinable())
            door->acceptor.join();
        close(door->listener);
    }
    // Nobody adds a connection any more.
    for (std::thread& connection : connections)
        connection.join();
}

void SampleServer::Accept(int listener, const Identity* identity)
{
    for (;;) {
        const int descriptor = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        const std::lock_guard lock(mutex);
        if (descriptor < 0 || stopping) {
            if (descriptor >= 0)
                close(descriptor);
            return;
        }
        const std::size_t place = descriptors.size();
        descriptors.push_back(descriptor);
        connections.emplace_back([=, this] {
            Serve(descriptor, identity);
            const std::lock_guard closing(mutex);
            descriptors[place] = -1;
            close(descriptor);
        });
    }
}

void SampleServer::Serve(int descriptor, const Identity* identity)
{
    const int on = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    Channel channel(descriptor, identity, options.protocol);
    if (!channel.IsOpen() || !options.send(channel, "201 ready, posting is not allowed\r\n"))
        return;

    SampleSession session(options.user, options.password, [this] { return Groups(); });
    std::string input;
    char packet[4096];
    for (;;) {
        const std::size_t end = input.find('\n');
        if (end == input.npos) {
            const std::size_t received = channel.Read(packet, sizeof packet);
            if (received == 0 || input.size() > longestCommand)
                return;
            input.append(packet, received);
            continue;
        }
        const std::string line = WithoutBlanksAround(std::string_view(input).substr(0, end));
        input.erase(0, end + 1);
        const std::size_t blank = std::min(line.find(' '), line.size());
        const std::string name = LowerCase(line.substr(0, blank));
        const std::string argument = WithoutBlanksAround(std::string_view(line).substr(blank));

        Note({name, argument});
        const Reply reply = session.Answer(name, argument);
        if (name == "body")
            std::this_thread::sleep_for(options.bodyTime);
        if (!options.send(channel, reply.bytes) || reply.hangUp)
            return;
    }
}

std::shared_ptr<const SampleGroups> SampleServer::Groups() const
{
    const std::lock_guard lock(mutex);
    return current;
}

void SampleServer::SetGroups(SampleGroups groups)
{
    auto latest = std::make_shared<const SampleGroups>(std::move(groups));
    const std::lock_guard lock(mutex);
    current.swap(latest);
}

void SampleServer::Note(Command command)
{
    const std::lock_guard lock(mutex);
    log.push_back(std::move(command));
}

std::vector<SampleServer::Command> SampleServer::Log() const
{
    const std::lock_guard lock(mutex);
    return log;
}

std::size_t SampleServer::CommandCount(std::string_view name) const
{
    const std::lock_guard lock(mutex);
    const auto count
        = std::count_if(log.begin(), log.end(), [&](const Command& command) { return command.name == name; });
    return static_cast<std::size_t>(count);
}

void SampleServer::ClearLog()
{
    const std::lock_guard lock(mutex);
    log.clear();
}

std::size_t SampleServer::ConnectionCount() const
{
    const std::lock_guard lock(mutex);
    return descriptors.size();
}
