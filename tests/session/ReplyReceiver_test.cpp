#include "tests/session/ScriptedSession.h"

#include <QTest>

#include <malloc.h>
#include <random>

using enum Command;

TEST(ReplyReceiverTest, StatusLines)
{
    using Kinds = std::vector<Command>;
    const Kinds all = {List, Group, Body, Head, Greeting, AuthUser, AuthPass, Next, Stat, Manual};
    struct Row {
        std::string status;
        Kinds kinds;
        Reply state;
        const char* outcome = "connected";
        bool userName = false;
    };
    for (const Row& row : {
             Row{"502 no", all, Reply::Refused, "connected stop"},
             Row{"423 gone", all, Reply::Taken},
             Row{"430 gone", all, Reply::Taken},
             Row{"480 who", all, Reply::Finished, "connected", true},
             Row{"480 who", all, Reply::Finished, "closed"},
             Row{"411 no group", {Group}, Reply::NoSuchGroup},
             Row{"412 no group", {Group}, Reply::NoGroupSelected},
             Row{"481 no", {Next}, Reply::Taken},
             Row{"421 no next", {Next}, Reply::Taken},
             Row{"411 no", {Head}, Reply::Finished},
             Row{"412 no", {Head}, Reply::Finished},
             Row{"481 no", {Head}, Reply::Finished},
             Row{"400 later", all, Reply::Finished},
             Row{"381 more", all, Reply::Finished, "connected", true},
             Row{"381 more", all, Reply::Taken, "closed"},
             Row{"223 7 <a@b>", {Greeting, AuthUser, AuthPass, Stat}, Reply::Finished, "connected", true},
             Row{"nonsense", {List, Body, Head, Manual}, Reply::Taken},
         }) {
        for (const Command kind : row.kinds) {
            SCOPED_TRACE(row.status + " to " + std::to_string(static_cast<int>(kind)));
            const bool logsIn = row.userName && row.status.starts_with("480");
            ScriptedSession client("C: command\nS~ " + row.status + "\\r\\ntext\n"
                + (logsIn ? "C: authinfo user me\nS: 381\nC: authinfo pass secret\nS: 281\n" : "") + "X: pause in");
            client.Judge(kind, row.userName);
            EXPECT_EQ(client.Session.ReplyState, row.state);
            EXPECT_EQ(client.Outcome(), row.outcome);
            EXPECT_EQ(client.Session.RecvBuffer.Text(), "text");
            EXPECT_EQ(client.Session.CommandKind, logsIn ? AuthPass : kind);
        }
    }
}

TEST(ReplyReceiverTest, Numbers)
{
    struct Row {
        Command kind;
        const char* reply;
        std::int32_t first, last, current;
        const char* buffer = "";
    };
    for (const Row& row : {
             Row{Group, "S: 211 9 2 10 x", 2, 10, 5},
             Row{Group, "S: 211 3 2147483647 2147483648 x", 2147483647, 12, 5},
             Row{Group, "S: 211 3 12ab -7 x", 12, 0, 5},
             Row{Group, "S: 211 3 7 9", 7, 0, 5},
             Row{Group, "S: 211 3  7 9 x", 0, 7, 5},
             Row{Group, "S: 211", 0, 0, 5},
             Row{Next, "S: 223 7 <a@b>", 1, 12, 7},
             Row{Next, "S: 223 x8 <a@b>", 1, 12, 0},
             // Of a status line in pieces the first alone is judged, and all of them pass for text.
             Row{Group, "S~ 211 3 7 9\nS: 1 x", 7, 0, 5, "211 3 7 91 x\r\n"},
             Row{Group, "S~ 41\nS: 1 no", 1, 12, 5, "411 no\r\n"},
         }) {
        SCOPED_TRACE(row.reply);
        ScriptedSession client(std::string("C: command\n") + row.reply + "\nX: pause in");
        client.Judge(row.kind);
        EXPECT_EQ(client.Session.ReplyState, Reply::Finished);
        EXPECT_EQ(client.Session.FirstArticle, row.first);
        EXPECT_EQ(client.Session.LastArticle, row.last);
        EXPECT_EQ(client.Session.CurrentArticle, row.current);
        EXPECT_EQ(client.Session.RecvBuffer.Text(), row.buffer);
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
    ScriptedSession client("C: body 7\nS: 222\nS: one\nX: packet\nS: two\nS: .\nC: list\nS: 215\nS: a 1 1 y\nS: .\n"
                           "X: packet\nS: b 1 1 y\nS: .\nC: body 8\nS: 502 no\n");
    client.Session.DebugLog = [](const std::string&) { QTest::qWait(20); };
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
    const std::string script = "C: body 7\nS: 222\nS: " + std::string(large, 'x') + "\nS: .\n";
    for (const char* next : {"C: head 8\nS: 221\nS: a header that needs room\nS: .", "C: head 8\nX: pause stop"}) {
        SCOPED_TRACE(next);
        ScriptedSession client(script + next);
        NewsSession& session = client.Session;
        ASSERT_TRUE(session.TcpConnect());
        EXPECT_EQ(session.CmdBody(7).size(), large);
        (void)session.CmdHead(8);
        EXPECT_LT(session.LastBody.capacity() + session.ReplyText.capacity(), large / 8);
    }
}

TEST(ReceiveBufferTest, GivesItsMemoryBack)
{
    const auto inUse = [] { return mallinfo2().uordblks + mallinfo2().hblkhd; };
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
    const auto upTo = [&random](std::size_t most) { return random() % (most + 1); };
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
