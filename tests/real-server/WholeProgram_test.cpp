#include "demo/sample/Encoders.h"
#include "demo/support/InterNetNews.h"
#include "tests/shell/ProgramTest.h"
#include "tests/support/RandomBytes.h"

#include <QTest>
#include <QTimer>

#include <algorithm>
#include <filesystem>
#include <set>
#include <sstream>

namespace fs = std::filesystem;

using testing::ElementsAre;

namespace {

using namespace std::chrono_literals;

// Article numbers, by group.
using Articles = std::map<std::string, std::set<int>>;

// One posted article. Every fifth has no attachment, and every tenth is not even wanted.
struct Posting {
    Posting(const std::string& group, int number)
    {
        if (number % 5 == 0) {
            wanted = number % 10 == 0;
            subject = wanted ? "Re: lost.jpg (1/1)" : "Wind, and much of it";
            body = "They say:\r\n\r\n.\r\n..\r\nbegin with a kite\r\nend\r\n.\r\n";
            return;
        }
        // Sizes around the lines of uuencode: a last line of 14 bytes begins with a dot.
        const int size = number % 120 * 311;
        attachment = RandomBytes(static_cast<std::size_t>(number % 3 == 0 ? size + 45 - size % 45 + 14 : size),
            static_cast<unsigned>(number) + static_cast<unsigned>(group.back()) * 1000);
        name = group + "-" + std::to_string(number) + ".jpg";
        subject = name + " (1/1)";
        body = "See below.\r\n\r\n" + (number % 4 == 1 ? Yencode(attachment, name) : Uuencode(attachment, name))
            + "\r\n-- \r\n.ann\r\n";
    }

    std::string name; // of the attachment; empty if there is none
    std::string attachment;
    bool wanted = true;
    std::string subject;
    std::string body;
};

// The program as it is started by its user, with everything it keeps in one folder, beside a real news server. The
// tests are passed over for a user who cannot have one.
class WholeProgramTest : public ProgramTest {
protected:
    void SetUp() override
    {
        if (const std::string obstacle = InterNetNews::Obstacle(); !obstacle.empty())
            GTEST_SKIP() << "The real news server is passed over: " << obstacle;
        MakeFile(destination + "here before", "kept");
    }

    void Serve(const std::vector<std::string>& groups, int articles, const std::set<int>& gaps,
        const std::optional<InterNetNews::Account>& account = {})
    {
        ASSERT_EQ(server.Start(groups, account), "");
        std::string selected;
        for (const std::string& group : groups) {
            selected += group + "\r\n";
            for (int number = 1; number <= articles; ++number) {
                const Posting posting(group, number);
                ASSERT_THAT(server.Post(group, posting.subject, posting.body), testing::StartsWith("240"));
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
                    attachments[group + "/" + posting.name] = {group, number};
            }
        }
        MakeFile(SelectedFile(), selected);
    }

    void StartProgram()
    {
        EXPECT_TRUE(desktop.boxes.empty());
        Start();
        TypeInto("txtPort", std::to_string(server.Port()));
        ChooseMenu("mnuSizeableViewer");
        QTest::mouseClick(&Find<QWidget>("frmShowPicture/SSPanel1"), Qt::RightButton, Qt::ControlModifier);
        ChooseMenu("mnuSizeableViewer");
    }

    // Presses Find Now and comes back when the search is over. The user stops it once it has so many items, and presses
    // again if that was lost; one that goes round for ever is ended, and fails.
    static void SearchPatiently(int stopAt = 1'000'000)
    {
        QTimer user;
        QElapsedTimer time;
        QObject::connect(&user, &QTimer::timeout, [&] {
            const bool endless = time.elapsed() > 120'000;
            EXPECT_FALSE(endless) << "the search does not end";
            if (endless || std::stoi(PanelText("StatusBar1", 2).substr(7)) >= stopAt)
                Click("cmdStop");
        });
        time.start();
        user.start(2ms);
        Click("cmdFindNow");
        EXPECT_TRUE(IsEnabled("cmdFindNow"));
    }

    // The last group that has a pointer, counted from 1, and its pointer.
    std::pair<std::size_t, int> Reached() const
    {
        const std::string records = ContentOf(PointerFile());
        if (records.empty())
            return {0, 0};
        const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(records[records.size() - 84 + at]); };
        return {records.size() / 84, byte(0) | byte(1) << 8};
    }

    std::string Log() const { return ContentOf(ProgramFile("debug.log")); }

    // What the program sent, each line behind "#" in the log. A line of a body that begins so has no small letters.
    static std::vector<std::string> Commands(const std::string& log)
    {
        std::istringstream lines(log);
        std::vector<std::string> commands;
        for (std::string line; std::getline(lines, line);) {
            if (line.size() > 2 && line[0] == '#' && line[1] >= 'a' && line[1] <= 'z')
                commands.push_back(line.substr(1, line.size() - 2));
        }
        return commands;
    }

    // The articles that were asked for by "head" or "body", each once at most.
    Articles AskedFor(const std::string& name) const
    {
        Articles articles;
        std::string group;
        for (const std::string& command : Commands(Log())) {
            const std::string argument = command.substr(std::min(command.find(' ') + 1, command.size()));
            if (command.starts_with("group ")) {
                group = argument;
            } else if (command.starts_with(name + " ")) {
                EXPECT_TRUE(articles[group].insert(std::stoi(argument)).second) << group << ": twice " << command;
            }
        }
        return articles;
    }

    // How many of the attachments are in the destination; that nothing else is there, and that each is what was posted.
    std::size_t StoredWhole() const
    {
        std::size_t count = 0;
        for (const std::string& file : FilesBelow(destination)) {
            const auto posted = attachments.find(file);
            const bool isPosted = posted != attachments.end();
            const std::string content
                = isPosted ? Posting(posted->second.first, posted->second.second).attachment : "kept";
            EXPECT_TRUE(ContentOf(destination + file) == content) << file << " is not what was posted";
            count += isPosted;
        }
        return count;
    }

    void ExpectAllFetched() const
    {
        EXPECT_EQ(AskedFor("head"), visited);
        EXPECT_EQ(AskedFor("body"), wanted);
        EXPECT_GT(attachments.size(), 0U);
        EXPECT_EQ(StoredWhole(), attachments.size());
        EXPECT_EQ(ContentOf(destination + "here before"), "kept");
        EXPECT_TRUE(desktop.boxes.empty());
    }

    InterNetNews server;
    Articles visited; // what a search goes over,
    Articles wanted; // fetches,
    std::map<std::string, std::pair<std::string, int>> attachments; // and stores: path below the destination, article
};

}

TEST_F(WholeProgramTest, StopInTheMiddleAndSearchOn)
{
    const std::string first = "alt.kites", second = "alt.harbour.lights";
    const int articles = 110;
    Serve({first, second}, articles, {5, 31, 32, 33, 34, 70, articles});
    if (HasFatalFailure())
        return;

    StartProgram();
    SearchPatiently(30);
    const auto [group, stoppedAt] = Reached();
    EXPECT_EQ(ContentOf(PointerFile()), PointerRecord(stoppedAt, first));
    EXPECT_LT(stoppedAt, articles - 1);
    const std::size_t storedFirst = StoredWhole();
    EXPECT_GE(storedFirst, 30U);

    SearchPatiently();
    EXPECT_EQ(PanelText("StatusBar1", 2), "Items: " + std::to_string(StoredWhole() - storedFirst));
    // Both groups end with a gap.
    EXPECT_EQ(ContentOf(PointerFile()), PointerRecord(articles - 1, first) + PointerRecord(articles - 1, second));
    // The article that the stop broke off counts as read, and may or may not have been fetched by then.
    if (!AskedFor("body")[first].contains(stoppedAt))
        wanted[first].erase(stoppedAt);
    const std::string brokenOff = first + "/" + Posting(first, stoppedAt).name;
    if (!fs::exists(destination + brokenOff))
        attachments.erase(brokenOff);
    ExpectAllFetched();
    Click("frmTamarack/Command1");
    EXPECT_EQ(desktop.programEnds, 1);
    program.reset();

    // The next start knows how far the search came.
    const std::size_t before = Log().size();
    StartProgram();
    SearchPatiently();
    const std::string last = "stat " + std::to_string(articles - 1);
    EXPECT_THAT(
        Commands(Log().substr(before)), ElementsAre("group " + first, last, "next", "group " + second, last, "next"));
    EXPECT_TRUE(desktop.boxes.empty());
}

// The second search knows the password, and its user trusts the certificate.
TEST_F(WholeProgramTest, PasswordDemandedAndEncrypted)
{
    Serve({"alt.kites"}, 12, {3}, InterNetNews::Account{"ann", "upwind"});
    if (HasFatalFailure())
        return;
    StartProgram();
    SearchPatiently();
    EXPECT_EQ(PanelText("StatusBar1", 1), "Status: Username Required");
    EXPECT_THAT(Log(), testing::ContainsRegex("\r\n480 [^\n]*\n$"));
    EXPECT_EQ(StoredWhole(), 0U);
    program.reset();

    ASSERT_EQ(server.StartEncrypted(), "");
    for (const auto& [key, value] : {std::pair{"", "Authenticate"}, {".user", "ann"}, {".pass", "upwind"}})
        settings.SaveSetting("Servers2", serverName + key, value);
    StartProgram();
    TypeInto("txtPort", std::to_string(server.SecurePort()));
    program->MainWindow().TCP1.SecurePorts = {server.SecurePort()};
    desktop.answers = {MessageAnswer::Yes};
    SearchPatiently();
    EXPECT_THAT(desktop.BoxTitles(), ElementsAre("Connection Security"));
    desktop.boxes.clear();
    EXPECT_EQ(PanelText("StatusBar1", 1), "Status: Connected");
    EXPECT_TRUE(program->MainWindow().TCP1.Encrypted().has_value());
    EXPECT_THAT(Log(), testing::ContainsRegex("#authinfo user ann\r\n381 [^\n]*\n#authinfo pass upwind\r\n281 "));
    ExpectAllFetched();

    Click("cmdRefresh");
    EXPECT_EQ(PanelText("StatusBar2", 1), "Total: 4"); // three of them the server's own
    EXPECT_THAT(RowsOf("lstAllGroups"), testing::Contains("alt.kites"));
}
