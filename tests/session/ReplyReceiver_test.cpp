#include "tests/session/ScriptedSession.h"

#include <QTest>

#include <malloc.h>
#include <random>

namespace {

using Kinds = std::vector<Command>;
using enum Command;

const Kinds all = {List, Group, Body, Head, Greeting, AuthUser, AuthPass, Next, Stat, Manual};

}

TEST(ReplyReceiverTest, StatusRowsAndNumbers)
{
    struct Row {
        std::string packets; // one of a status line and a text without end, or some as in a script
        Kinds kinds;
        Reply state = Reply::Finished;
        bool userName = false;
        const char* outcome = "connected";
        const char* status = "Status: Connected";
        std::int32_t first = 1, last = 12, current = 5;
        const char* buffer = "text";
    };
    for (const Row& row : {
             Row{"502 no", all, Reply::Refused, false, "connected stop"},
             Row{"423 gone", all, Reply::Taken},
             Row{"430 gone", all, Reply::Taken},
             Row{"480 who", all, Reply::Finished, true},
             Row{"480 who", all, Reply::Finished, false, "closed", "Status: Username Required"},
             Row{"411 no group", {Group}, Reply::NoSuchGroup},
             Row{"411 no group", {Head}},
             Row{"412 no group", {Group}, Reply::NoGroupSelected},
             Row{"412 no group", {Head}},
             Row{"481 no", {Next}, Reply::Taken},
             Row{"481 no", {Head}},
             Row{"421 no next", {Next}, Reply::Taken},
             Row{"421 no next", {Head}},
             Row{"400 later", all},
             Row{"381 more", all, Reply::Finished, true},
             Row{"381 more", all, Reply::Taken, false, "closed", "Status: Password Required"},
             Row{.packets = "211 9 2 10 x", .kinds = {Group}, .first = 2, .last = 10},
             Row{.packets = "223 7 <a@b>", .kinds = {Next}, .current = 7},
             Row{"223 7 <a@b>", {Greeting, AuthUser, AuthPass, Stat}, Reply::Finished, true},
             Row{"nonsense", {List, Body, Head, Manual}, Reply::Taken},
             Row{.packets = "211 3 2147483647 2147483648 x", .kinds = {Group}, .first = 2147483647},
             Row{.packets = "211 3 12ab -7 x", .kinds = {Group}, .first = 12, .last = 0},
             Row{.packets = "211 3 7 9", .kinds = {Group}, .first = 7, .last = 0},
             Row{.packets = "211 3  7 9 x", .kinds = {Group}, .first = 0, .last = 7},
             Row{.packets = "211", .kinds = {Group}, .first = 0, .last = 0},
             Row{.packets = "223 x8 <a@b>", .kinds = {Next}, .current = 0},
             // Of a status line in pieces the first alone is judged, and all of them pass for text.
             Row{.packets = "S~ 211 3 7 9\nS: 1 x",
             .kinds = {Group},
             .first = 7,
             .last = 0,
             .buffer = "211 3 7 91 x\r\n"},
             Row{.packets = "S~ 41\nS: 1 no", .kinds = {Group}, .buffer = "411 no\r\n"},
         }) {
        for (const Command kind : row.kinds) {
            SCOPED_TRACE(row.packets + " to " + std::to_string(static_cast<int>(kind)));
            const bool logsIn = row.userName && row.packets.starts_with("480");
            ScriptedSession client("C: command\n"
                + (row.packets.starts_with("S~") ? row.packets + "\n" : "S~ " + row.packets + "\\r\\ntext\n")
                + (logsIn ? "C: authinfo user me\nS: 381\nC: authinfo pass secret\nS: 281\n" : "") + "X: pause in");
            client.Judge(kind, row.userName);
            EXPECT_EQ(client.Session.ReplyState, row.state);
            EXPECT_EQ(client.Outcome(), row.outcome);
            EXPECT_EQ(client.Status(), row.status);
            EXPECT_EQ(client.Session.FirstArticle, row.first);
            EXPECT_EQ(client.Session.LastArticle, row.last);
            EXPECT_EQ(client.Session.CurrentArticle, row.current);
            EXPECT_EQ(client.Session.RecvBuffer.Text(), row.buffer);
            EXPECT_EQ(client.Session.CommandKind, logsIn ? AuthPass : kind);
        }
    }
}

TEST(ReplyReceiverTest, TerminatorsWhereverTheyLie)
{
    const std::string longLine(50, 'x');
    struct Row {
        Command kind;
        std::string packets; // "|" is the border of two
        Reply state;
        std::string lastBody;
        std::string buffer;
        std::size_t searchPos = 1;
    };
    std::vector<Row> rows = {{Body, ".\r\n", Reply::Taken, "", ".\r\n"}, {Body, "\r\n.\r\n", Reply::Taken, "", "\r\n"},
        {Body, "\r\n.\r\n.\r\na\r\n.\r\n", Reply::Finished, "\r\na", "\r\n"},
        {Head, "a\r\n.\r\nb\r\n.\r\nc", Reply::Finished, "\r\nb", "\r\nc"},
        {Head, "a\r\n..\r\n.b\n.\n", Reply::Taken, "", "a\r\n..\r\n.b\n.\n", 2},
        {Manual, "a\r\n.\r\n", Reply::Finished, "", "\r\n"}, {Group, "a\r\n.\r\n", Reply::Finished, "a", "\r\n"},
        {Body, longLine + "|\r\n.\r\nb\r\n.\r\n", Reply::Finished, "\r\nb", "\r\n"},
        {Body, longLine + "|" + longLine, Reply::Taken, "", longLine + longLine, 90}};
    const std::string end = "\r\n.\r\n";
    for (std::size_t at = 1; at < end.size(); ++at)
        rows.push_back({Body, longLine + end.substr(0, at) + "|" + end.substr(at), Reply::Finished, longLine, "\r\n"});
    for (const Row& row : rows) {
        std::string script = "C: command\nS~ 222\\r\\n" + Printable(row.packets) + "\nX: pause in";
        if (const std::size_t border = script.find('|'); border != script.npos)
            script.replace(border, 1, "\nS~ ");
        SCOPED_TRACE(script);
        ScriptedSession client(script);
        client.Judge(row.kind);
        EXPECT_EQ(client.Session.ReplyState, row.state);
        EXPECT_EQ(client.Session.LastBody, row.lastBody);
        EXPECT_EQ(client.Session.RecvBuffer.Text(), row.buffer);
        EXPECT_EQ(client.Session.SearchPos, row.searchPos);
    }
}

TEST(ReplyReceiverTest, NothingOvertakesWhatIsBeingLoggedOrHandedOver)
{
    ScriptedSession client(R"(
        C: body 7
        S: 222
        S: one
        X: packet
        S: two
        S: .
        C: list
        S: 215
        S: a 1 1 y
        S: .
        X: packet
        S: b 1 1 y
        S: .
        C: body 8
        S: 502 no
    )");
    const auto letEventsThrough = [] { QTest::qWait(20); };
    client.Session.DebugLog = [&](const std::string&) { letEventsThrough(); };
    client.Session.DebugOn = true;
    std::vector<std::string> lists;
    client.Session.GroupListArrived = [&](const std::string& text) {
        // The next one is there before this one has been taken.
        EXPECT_TRUE(Until([&] { return client.Session.RecvBuffer.Length() > 2; }));
        lists.push_back(text);
    };
    ASSERT_TRUE(client.Session.TcpConnect());
    EXPECT_EQ(client.Run("body 7"), "one\r\ntwo");
    client.Session.DebugOn = false; // the log would let both lists wait
    EXPECT_EQ(client.Run("list"), "old\r\ntext");
    client.Session.DebugOn = true;
    EXPECT_THAT(lists, testing::ElementsAre("\r\na 1 1 y"));
    EXPECT_EQ(client.Session.RecvBuffer.Text(), "\r\n");
    EXPECT_EQ(client.Run("body 8"), "");
    EXPECT_EQ(client.Outcome(), "closed stop");
}

TEST(ReplyReceiverTest, AReplyThatIsTooLongEndsTheSession)
{
    ScriptedSession client("C: body 7\nS: 222\nS: some text\nX: packet\nS: and more of it");
    client.Session.LongestReply = 20;
    ASSERT_TRUE(client.Session.TcpConnect());
    EXPECT_EQ(client.Run("body 7"), "");
    EXPECT_EQ(client.Outcome(), "closed stop");
    EXPECT_EQ(client.Status(), "Status: Reply Too Long");
    EXPECT_EQ(client.Session.RecvBuffer.Length(), 0U);
}

// The memory of a large text goes with it, whatever comes next.
TEST(ReplyReceiverTest, NoTextKeepsTheMemoryOfALargeOne)
{
    constexpr std::size_t large = 8 << 20;
    constexpr std::size_t small = 1 << 20;
    const std::string script = "C: body 7\nS: 222\nS: " + std::string(large, 'x') + "\nS: .\n";
    for (const char* next : {"C: head 8\nS: 221\nS: a\nS: .", "C: head 8\nS: 221\nS: a header that needs room\nS: .",
             "C: head 8\nX: pause stop"}) {
        SCOPED_TRACE(next);
        ScriptedSession client(script + next);
        NewsSession& session = client.Session;
        ASSERT_TRUE(session.TcpConnect());
        EXPECT_EQ(session.CmdBody(7).size(), large);
        (void)session.CmdHead(8);
        EXPECT_LT(session.LastBody.capacity() + session.ReplyText.capacity(), small);
        EXPECT_EQ(client.Server.FirstProblem(), "");
    }
}

TEST(ReceiveBufferTest, GivesItsMemoryBack)
{
    const auto inUse = [] {
        const auto memory = mallinfo2();
        return memory.uordblks + memory.hblkhd;
    };
    const std::string text(10 << 20, 'x');
    for (const std::vector<std::size_t>& sizes :
        {std::vector<std::size_t>{text.size()}, {10, text.size()}, std::vector<std::size_t>(10, text.size() / 10)}) {
        SCOPED_TRACE(sizes.size());
        const std::size_t before = inUse();
        ReceiveBuffer buffer;
        // The first text comes in one packet with the start of the next.
        for (const std::size_t size : sizes)
            buffer.Append(std::string_view(text).substr(0, size / 2));
        std::string last;
        for (const std::size_t size : sizes)
            last = buffer.Take(size / 2, 0);
        GiveBack(last);
        EXPECT_LT(inUse() - before, 2U << 20);
    }
}

// The buffer against a plain string, over a few thousand steps of any size.
TEST(ReceiveBufferTest, KeepsWhatHasNotBeenTaken)
{
    std::mt19937 random(1);
    const auto upTo
        = [&random](std::size_t most) { return std::uniform_int_distribution<std::size_t>(0, most)(random); };
    ReceiveBuffer buffer;
    std::string model;
    for (int step = 0; step < 5000; ++step) {
        const std::string bytes(upTo(step % 7 == 0 ? 500 : 5), static_cast<char>('a' + step % 26));
        buffer.Append(bytes);
        model += bytes;
        const std::size_t count = upTo(model.size());
        const std::size_t dropped = upTo(std::min<std::size_t>(model.size() - count, 3));
        if (step % 3 != 0) {
            ASSERT_EQ(buffer.Take(count, dropped), model.substr(0, count));
            model.erase(0, count + dropped);
        }
        ASSERT_EQ(buffer.Text(), model);
        const std::size_t from = upTo(model.size() + 3) + 1;
        ASSERT_EQ(buffer.Find("zz", from), from > model.size() ? 0 : model.find("zz", from - 1) + 1);
    }
}
