#include "demo/sample/Encoders.h"
#include "tests/real-server/RealServerTest.h"
#include "tests/support/FaultProxy.h"

#include <QTimer>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <set>

namespace {

using namespace std::chrono_literals;

// Article numbers, by group.
using Articles = std::map<std::string, std::set<int>>;

// One posted article. Every fifth has no attachment, and every tenth is not even wanted.
struct Posting {
    std::string name; // of the attachment; empty if there is none
    std::string attachment;
    bool wanted = false;
    std::string subject;
    std::string body;
};

Posting MakePosting(const std::string& group, int number)
{
    Posting posting;
    const std::string label = group + "-" + std::to_string(number);
    if (number % 5 == 0) {
        posting.wanted = number % 10 == 0;
        posting.subject = posting.wanted ? "Re: lost.jpg (1/1)" : "Wind, and much of it";
        posting.body = "They say:\r\n\r\n.\r\n..\r\nbegin with a kite\r\nend\r\n.\r\n";
        return posting;
    }
    // Sizes around the lines of uuencode: a last line of 14 bytes begins with a dot.
    std::mt19937 random(static_cast<unsigned>(number) + (group.ends_with('s') ? 1000U : 0U));
    const std::size_t size
        = static_cast<std::size_t>(number) * 311 + (number % 3 == 0 ? 45 - number * 311 % 45 + 14 : 0);
    posting.attachment.resize(size);
    std::generate(posting.attachment.begin(), posting.attachment.end(), [&] { return static_cast<char>(random()); });
    posting.name = label + ".jpg";
    posting.wanted = true;
    posting.subject = posting.name + " (1/1)";
    posting.body = "See below.\r\n\r\n" + Uuencode(posting.attachment, posting.name) + "\r\n-- \r\n.ann\r\n";
    return posting;
}

int Code(const FaultProxy::Exchange& exchange) { return std::atoi(exchange.status.c_str()); }

// The program as it is started by its user, with everything it keeps in one folder, on a server that is watched.
class WholeProgramTest : public RealServerTest {
protected:
    WholeProgramTest() { MakeFile(destination + "here before", "kept"); }

    void Serve(const std::vector<std::string>& groups, int articles, const std::set<int>& gaps,
        const std::optional<InterNetNews::Account>& account = {}, const std::vector<std::string>& emptyGroups = {})
    {
        std::vector<std::string> allGroups = groups;
        allGroups.insert(allGroups.end(), emptyGroups.begin(), emptyGroups.end());
        ASSERT_EQ(server.Start(allGroups, account), "");
        std::string selected;
        for (const std::string& group : groups) {
            selected += group + "\r\n";
            for (int number = 1; number <= articles; ++number) {
                const Posting posting = MakePosting(group, number);
                Post(group, posting.subject, posting.body);
                if (HasFatalFailure())
                    return;
                // A search of a new group begins behind its first article.
                if (number == 1)
                    continue;
                if (gaps.contains(number)) {
                    EXPECT_TRUE(server.DeleteArticle(group, number));
                    continue;
                }
                visited[group].insert(number);
                if (posting.wanted)
                    wanted[group].insert(number);
                if (!posting.name.empty())
                    attachments[group + "/" + posting.name] = posting.attachment;
            }
        }
        MakeFile(SelectedFile(), selected);
        log.emplace(server.Port());
        ASSERT_NE(log->Port(), 0);
    }

    void StartProgram()
    {
        EXPECT_TRUE(desktop.boxes.empty());
        Start();
        TypeInto("txtPort", std::to_string(log->Port()));
    }

    // Presses Find Now and comes back when the search is over. One that goes round for ever is ended, and fails.
    static void SearchPatiently()
    {
        QTimer patience;
        QObject::connect(&patience, &QTimer::timeout, [&patience] {
            if (patience.interval() > 10)
                ADD_FAILURE() << "the search does not end";
            patience.setInterval(10);
            Click("cmdStop");
        });
        patience.start(120s);
        Click("cmdFindNow");
    }

    // The articles that were asked for by "head" or "body", each once at most.
    Articles AskedFor(std::string_view command) const
    {
        Articles articles;
        std::string group;
        for (const FaultProxy::Exchange& exchange : log->Exchanges()) {
            if (exchange.command.starts_with("group "))
                group = exchange.command.substr(6);
            if (exchange.command.starts_with(std::string(command) + " ")) {
                const int number = std::stoi(exchange.command.substr(command.size() + 1));
                EXPECT_TRUE(articles[group].insert(number).second) << group << ": twice " << exchange.command;
            }
        }
        return articles;
    }

    // How many of the attachments are in the destination; that nothing else is there, and that each is what was posted.
    std::size_t StoredWhole() const
    {
        std::size_t count = 0;
        for (const std::string& file : FilesBelow(destination)) {
            const std::string content = ContentOf(destination + file);
            const auto posted = attachments.find(file);
            if (posted == attachments.end())
                EXPECT_EQ(content, "kept") << file;
            else
                EXPECT_TRUE(content == posted->second) << file << " is not what was posted";
            count += posted != attachments.end();
        }
        return count;
    }

    std::optional<FaultProxy> log;
    Articles visited; // what a search goes over,
    Articles wanted; // fetches,
    std::map<std::string, std::string> attachments; // and stores: path below the destination, and content
};

}

TEST_F(WholeProgramTest, StopInTheMiddleAndSearchOn)
{
    const std::string first = "alt.kites";
    const std::string second = "alt.harbour.lights";
    const int articles = 110;
    Serve({first, second}, articles, {5, 31, 32, 33, 34, 70, articles});
    if (HasFatalFailure())
        return;

    StartProgram();
    // A press can come at a moment at which it is lost; a user who sees the search go on presses again.
    QTimer user;
    QObject::connect(&user, &QTimer::timeout, [] {
        if (std::stoi(PanelText("StatusBar1", 2).substr(7)) >= 30)
            Click("cmdStop");
    });
    user.start(1ms);
    SearchPatiently();
    user.stop();
    const std::string pointers = ContentOf(PointerFile());
    ASSERT_EQ(pointers.size(), 84U);
    const int stoppedAt = static_cast<unsigned char>(pointers[0]);
    EXPECT_EQ(pointers, PointerRecord(stoppedAt, first));
    EXPECT_LT(stoppedAt, articles - 1);
    const std::size_t storedFirst = StoredWhole();
    EXPECT_GE(storedFirst, 30U);
    EXPECT_TRUE(IsEnabled("cmdFindNow"));

    SearchPatiently();
    EXPECT_EQ(PanelText("StatusBar1", 2), "Items: " + std::to_string(StoredWhole() - storedFirst));
    // Both groups end with a gap.
    EXPECT_EQ(ContentOf(PointerFile()), PointerRecord(articles - 1, first) + PointerRecord(articles - 1, second));

    // The article that the stop broke off counts as read, and may or may not have been fetched by then.
    Articles bodies = AskedFor("body");
    const std::string brokenOff = first + "/" + MakePosting(first, stoppedAt).name;
    if (!bodies[first].contains(stoppedAt))
        wanted[first].erase(stoppedAt);
    if (!std::filesystem::exists(destination + brokenOff))
        attachments.erase(brokenOff);
    EXPECT_EQ(bodies, wanted);
    EXPECT_EQ(AskedFor("head"), visited);
    EXPECT_EQ(StoredWhole(), attachments.size());
    EXPECT_EQ(ContentOf(destination + "here before"), "kept");

    Click("Command1");
    EXPECT_EQ(desktop.programEnds, 1);
    program.reset();

    // The next start knows how far the search came.
    const std::size_t before = log->Exchanges().size();
    StartProgram();
    SearchPatiently();
    std::vector<std::string> commands;
    for (const FaultProxy::Exchange& exchange : log->Exchanges())
        commands.push_back(exchange.command);
    commands.erase(commands.begin(), commands.begin() + static_cast<std::ptrdiff_t>(before));
    const std::string last = "stat " + std::to_string(articles - 1);
    EXPECT_EQ(
        commands, (std::vector<std::string>{"", "group " + first, last, "next", "group " + second, last, "next"}));
    EXPECT_TRUE(desktop.boxes.empty());
}

TEST_F(WholeProgramTest, PasswordDemanded)
{
    Serve({"alt.kites"}, 12, {3}, InterNetNews::Account{"ann", "upwind"});
    if (HasFatalFailure())
        return;

    StartProgram();
    SearchPatiently();
    EXPECT_EQ(PanelText("StatusBar1", 1), "Status: Username Required");
    EXPECT_EQ(Code(log->Exchanges().back()), 480);
    EXPECT_EQ(StoredWhole(), 0U);
    program.reset();

    settings.SaveSetting("Servers2", serverName, "Authenticate");
    settings.SaveSetting("Servers2", serverName + ".user", "ann");
    settings.SaveSetting("Servers2", serverName + ".pass", "upwind");
    const std::size_t before = log->Exchanges().size();
    StartProgram();
    EXPECT_TRUE(IsChecked("chkUserName"));
    EXPECT_EQ(TextOf("txtUserName"), "ann");
    SearchPatiently();
    EXPECT_EQ(PanelText("StatusBar1", 1), "Status: Connected");
    const std::vector<FaultProxy::Exchange> exchanges = log->Exchanges();
    ASSERT_GT(exchanges.size(), before + 3);
    EXPECT_EQ(exchanges[before + 1].command, "authinfo user ann");
    EXPECT_EQ(Code(exchanges[before + 1]), 381);
    EXPECT_EQ(exchanges[before + 2].command, "authinfo pass upwind");
    EXPECT_EQ(Code(exchanges[before + 2]), 281);
    EXPECT_EQ(AskedFor("head"), visited);
    EXPECT_EQ(AskedFor("body"), wanted);
    EXPECT_EQ(StoredWhole(), attachments.size());
    EXPECT_TRUE(desktop.boxes.empty());
}

TEST_F(WholeProgramTest, GroupsFetchedFilteredPickedAndSearched)
{
    const std::vector<std::string> groups = {"alt.kites", "alt.kites.high"};
    std::vector<std::string> emptyGroups;
    for (int number = 1; number <= 1998; ++number)
        emptyGroups.push_back("rec.kites.no" + std::to_string(number));
    Serve(groups, 12, {3, 7}, {}, emptyGroups);
    if (HasFatalFailure())
        return;

    StartProgram();
    Click("cmdClearAll");
    Click("cmdRefresh");
    // The server has three groups for itself.
    EXPECT_EQ(PanelText("StatusBar2", 1), "Total: 2003");
    const std::vector<std::string> fetched = RowsOf("lstAllGroups");
    EXPECT_EQ(fetched.size(), 2003U);
    EXPECT_NE(ContentOf(ProgramFile("!@#!." + serverName)).find("\nalt.kites 0000000012 "), std::string::npos);
    Click("cmdRefreshDisk");
    EXPECT_EQ(RowsOf("lstAllGroups"), fetched);

    TypeInto("txtNewsGroups", "kites; alt");
    Click("cmdAndFilter");
    EXPECT_TRUE(Until([&] { return RowsOf("lstFilteredGroups") == groups; }));
    DoubleClickRow("lstFilteredGroups", 0);
    ClickRow("lstFilteredGroups", 0);
    Click("cmdSavePicks");
    EXPECT_EQ(RowsOf("lstSelectedGroups"), groups);

    SearchPatiently();
    EXPECT_EQ(AskedFor("head"), visited);
    EXPECT_EQ(AskedFor("body"), wanted);
    EXPECT_GT(attachments.size(), 0U);
    EXPECT_EQ(StoredWhole(), attachments.size());
    EXPECT_TRUE(desktop.boxes.empty());
}
