#include "demo/sample/SampleSession.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <ctime>
#include <utility>
#include <vector>

namespace {

using Articles = std::vector<SampleArticle>;
using Reply = SampleSession::Reply;

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

std::string_view Trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(' ');
    if (first == text.npos)
        return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string MessageId(const SampleArticle& article)
{
    static constexpr std::string_view field = "\r\nmessage-id:";
    const std::string head = "\r\n" + article.head;
    const std::size_t at = LowerCase(head).find(field);
    if (at == head.npos)
        return "<" + std::to_string(article.number) + "@sample.invalid>";
    const std::size_t begin = at + field.size();
    return std::string(Trimmed(std::string_view(head).substr(begin, head.find("\r\n", begin) - begin)));
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
    if (command == "article")
        return MultiLine("220 " + what, article.head + "\r\n" + article.body);
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

}

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
    if (command == "capabilities")
        return MultiLine("101 capabilities", "VERSION 2\r\nREADER\r\nLIST ACTIVE\r\nAUTHINFO USER\r\n");
    if (command == "help")
        return MultiLine("100 help follows",
            "article authinfo body capabilities date group head help last list mode next quit stat\r\n");
    if (command == "authinfo")
        return LogIn(argument);
    if (command == "mode")
        return OneLine(LowerCase(argument) == "reader" ? "201 posting is not allowed" : "501 unknown mode");
    if (!loggedIn)
        return OneLine("480 authentication required");

    if (command == "date")
        return OneLine("111 " + UtcNow());
    if (command == "list")
        return List(argument);
    if (command == "group")
        return SelectGroup(argument);
    if (command == "stat" || command == "head" || command == "body" || command == "article")
        return Show(command, argument);
    if (command == "next" || command == "last")
        return Move(command == "next");
    return OneLine("500 unknown command");
}

// authinfo user alice   ->  381
// authinfo pass secret  ->  281 or 481
Reply SampleSession::LogIn(std::string_view argument)
{
    const std::size_t blank = std::min(argument.find(' '), argument.size());
    const std::string kind = LowerCase(argument.substr(0, blank));
    const std::string_view value = Trimmed(argument.substr(blank));
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
    if (which.starts_with('<')) {
        for (const SampleGroup& each : *groups) {
            for (const SampleArticle& article : each.articles) {
                if (MessageId(article) == which)
                    return ShowArticle(command, article, 0);
            }
        }
        return OneLine("430 no such article");
    }
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

Reply SampleSession::Move(bool forward)
{
    if (!group)
        return OneLine("412 no group selected");
    if (currentArticle == 0)
        return OneLine("420 no current article");
    auto found = FirstFrom(group->articles, std::int64_t{currentArticle} + (forward ? 1 : 0));
    if (found == (forward ? group->articles.end() : group->articles.begin()))
        return OneLine(forward ? "421 no next article" : "422 no previous article");
    if (!forward)
        --found;
    currentArticle = found->number;
    return ShowArticle("stat", *found, found->number);
}

// alt.kites 7055 7001 y   (name, last, first, status)
Reply SampleSession::List(const std::string& argument) const
{
    if (!argument.empty() && LowerCase(argument) != "active")
        return OneLine("503 only the active groups can be listed");
    std::string lines;
    for (const SampleGroup& each : *latestGroups()) {
        const bool empty = each.articles.empty();
        lines += each.name + " " + std::to_string(empty ? 0 : each.articles.back().number) + " "
            + std::to_string(empty ? 1 : each.articles.front().number) + " y\r\n";
    }
    return MultiLine("215 the groups follow", lines);
}
