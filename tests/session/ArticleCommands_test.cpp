#include "tests/session/ScriptedSession.h"

#include <QTest>

#include <regex>

using testing::ElementsAre;

TEST(ArticleCommandsTest, OneConversationInPiecesOfAnySize)
{
    const std::string script = R"(
        C: group alt.kites
        S: 211 42 7003 7055 alt.kites
        C: stat 7003
        S: 423 no such number
        C: stat 7004
        S: 430 no such article
        C: stat 7005
        S: 223 7005 <a@b>
        C: next
        S: 223 7007 <c@d> article retrieved
        C: head 7007
        S: 221 7007 <c@d>
        S: Path: lost with the first line
        S: Subject: red
        S: .
        C: body 7007
        S: 222 7007 <c@d>
        S: ..stuffed
        S:
        S~ .no end\n.\r\n\xe4\r\n.\r
        S~ \n
        C: list
        S: 215 groups follow
        S: alt.kites 7055 7001 y
        S: alt.none 0 1 n
        S: .
        C: head 7007
        S: 221 7007 <c@d>
        S: Path: kept
        S: .
        C: next
        S: 421 no next article
    )";
    for (const std::size_t piece : {0, 1, 2, 3}) {
        SCOPED_TRACE(piece);
        // In pieces, each status line comes whole; otherwise it shares its packet with the text.
        const std::string torn = std::regex_replace(std::regex_replace(script, std::regex("C:"), "X: pause whole\n$&"),
            std::regex("(S: 2.*)\n( *S:)"), "$1\nX: pause pieces\n$2");
        ScriptedSession client(piece == 0 ? script : torn);
        client.PieceSize = piece;
        NewsSession& session = client.Session;
        std::vector<std::string> groupLists;
        session.GroupListArrived = [&](const std::string& text) { groupLists.push_back(text); };

        ASSERT_TRUE(session.TcpConnect());
        EXPECT_EQ(client.Run("group alt.kites"), "true");
        EXPECT_EQ(session.FirstArticle, 7003);
        EXPECT_EQ(session.LastArticle, 7055);
        EXPECT_EQ(client.Run("stat 7003"), "true 7005");
        EXPECT_EQ(CaptionOf("frmTamarack"), "Setting group pointers: 7005");
        EXPECT_EQ(client.Run("next"), "true");
        EXPECT_EQ(session.CurrentArticle, 7007);
        EXPECT_EQ(client.Run("head 7007"), "Subject: red");
        EXPECT_EQ(client.Run("body 7007"), "\r\n..stuffed\r\n\r\n.no end\n.\r\n\xe4");
        EXPECT_EQ(client.Run("list"), "old\r\ntext");
        EXPECT_THAT(groupLists, ElementsAre("\r\nalt.kites 7055 7001 y\r\nalt.none 0 1 n"));
        EXPECT_EQ(session.PacketCount, piece == 0 ? 1 : 1 + (42 + piece - 1) / piece);
        const std::string packets = PanelText("StatusBar2", 4);
        EXPECT_EQ(packets, "Packets: " + std::to_string(session.PacketCount));
        EXPECT_EQ(client.Run("head 7007"), "Path: kept");
        EXPECT_EQ(client.Run("next"), "false");
        EXPECT_EQ(session.CurrentArticle, 7007);
        EXPECT_EQ(session.PacketCount, 0);
        EXPECT_EQ(PanelText("StatusBar2", 4), packets);
    }
}

namespace {

// `expected` is what Run() gives, "/", the outcome, and "!" if the user was told of a group that does not exist.
void Check(const std::string& line, const std::string& script, const std::string& expected, bool haveUserName = false)
{
    SCOPED_TRACE(line + "\n" + script);
    ScriptedSession client("C: " + line + "\n" + script);
    ASSERT_TRUE(client.Session.TcpConnect());
    client.MainForm.chkUserName.SetValue(haveUserName ? 1 : 0);
    std::string result = client.Run(line);
    result += "/" + client.Outcome();
    for (const TestDesktop::Box& box : client.Desktop.boxes) {
        result += "!";
        EXPECT_EQ(box.title, "Invalid News Group");
        EXPECT_EQ(box.text, "The group you selected does not exist.\r\nx");
    }
    EXPECT_EQ(Printable(result), Printable(expected));
    EXPECT_TRUE(client.Outcome() != "closed stop" || client.Session.RecvBuffer.Length() == 0);
    EXPECT_EQ(client.Session.CurrentArticle, 5);
}

}

TEST(ArticleCommandsTest, EveryClassOfReplyAndEveryStop)
{
    struct Row {
        const char* script;
        const char *group, *next, *stat, *head, *body;
    };
    // The last article is 12, so stat has no next number to try. Where the wait has no end of its own, nothing stands.
    const std::string old = "old\r\ntext/connected";
    const char *const ok = "true/connected", *const found = "true 12/connected", *const none = "false 13/connected",
                      *const cut = "text/connected", *const closed = "/closed stop";
    for (const Row& row :
        {Row{"S: 411", "false/connected!", ok, found, cut, old.c_str()},
            Row{"S: 412", "false/connected!", ok, found, cut, old.c_str()},
            Row{"S: 423", ok, "false/connected", none, nullptr, nullptr},
            Row{"S: 430", ok, "false/connected", none, nullptr, nullptr},
            Row{"S: 421", ok, "false/connected", found, cut, old.c_str()},
            Row{"S: 481", ok, "false/connected", found, cut, old.c_str()},
            Row{"S: 400", ok, ok, found, cut, old.c_str()},
            Row{"S: 502", "true/connected stop", "false/connected stop", "false 13/connected stop", closed, closed},
            Row{"X: pause stop", "true/closed stop", "false/connected stop", "false 13/connected stop", closed, closed},
            Row{"X: close\nX: pause stop when gone", "true/closed stop", "false/gone stop", "false 13/gone stop",
                nullptr, closed}}) {
        Check("group x", row.script, row.group);
        Check("next", row.script, row.next);
        Check("stat 12", row.script, row.stat);
        if (row.head)
            Check("head 7", row.script, row.head);
        if (row.body) {
            Check("body 7", row.script, row.body);
            Check("list", row.script, row.body);
        }
    }

    Check("group x", "S: 411\nS: a text ends it\nS: .", ok);
    Check("head 7", "S: 221\nS: a\nS: .\nS: b\nS: .\nS: c", "b/connected");
    Check("body 7", "S~ 222\\r\\n\\r\\n.\\r\\n.\\r\\na\\r\\n.\\r\\n", "\r\na/connected");
    Check("stat 11", "S: 502\nC: stat 12\nS: 223 12 <a@b>", found);
    Check("stat 11", "X: pause stop\nC: stat 12\nS: 223 12 <a@b>", found);
    Check("head 7", "S: 221\nS: the only line is kept\nS: .", "the only line is kept/connected");
    Check("head 7", "S: 221\nS: Subject: a\nX: pause stop", closed);
    Check("body 7", "S: 423\nX: pause stop", closed);
    Check("body 7", "S: 222\nS: .\nX: pause stop", closed);
    Check("body 7", "S: 222\nS: text\nX: close\nX: pause stop when gone", closed);
}

TEST(ArticleCommandsTest, AuthenticationInTheMiddleOfACommand)
{
    const std::string user = "C: authinfo user me\n", password = "C: authinfo pass secret\n";
    std::string endless; // a server that wants to be logged in to before its own login
    for (int login = 0; login < 8; ++login)
        endless += user + "S: 480\n";
    const auto check = [](const char* line, const std::string& script, const char* expected) {
        Check(line, "S: 480 who are you?\n" + script, expected, true);
    };
    check("next", user + "S: 381\n" + password + "S: 281", "true/connected");
    check("head 7", user + "S: 381\n" + password + "S: 281", "text/connected");
    check("body 7", user + "S: 281\n" + password + "S: 482", "old\r\ntext/connected");
    check("next", user + "S: 381\n" + password + "S: 502", "true/connected stop");
    check("group x", user + "X: pause stop", "true/closed stop");
    check("next", user + "S: 381\n" + password + "X: pause stop", "true/closed stop");
    check(
        "next", user + "S: 480\n" + user + "S: 381\n" + password + "S: 281\n" + password + "S: 281", "true/connected");
    check("next", endless, "true/closed");
    Check("head 7", "S: 480", "/closed");
    Check("next", "S: 381", "false/closed");
}

TEST(ArticleCommandsTest, NothingIsSentOutsideTheGroupOrTheConnection)
{
    for (const bool encrypted : {false, true}) {
        ScriptedSession client("C: next\nS: 421\nX: close");
        if (encrypted)
            client.Encrypt();
        NewsSession& session = client.Session;
        ASSERT_TRUE(session.TcpConnect());
        session.FirstArticle = 11;
        EXPECT_EQ(client.Run("stat 0"), "true 11");
        EXPECT_EQ(client.Run("stat 13"), "false 13");
        // What stands behind a line end would be a command of its own.
        session.StopFlag = true;
        for (const char* group : {"alt.kites\r\nquit", "alt.kites\nquit", "alt.kites\r", "\n"}) {
            ASSERT_EQ(client.Run(std::string("group ") + group), "false");
            session.CmdManual(group);
            EXPECT_FALSE(session.SendLine(group));
        }
        EXPECT_EQ(session.ReplyState, Reply::Finished);
        EXPECT_EQ(session.CommandKind, Command::Greeting);
        EXPECT_EQ(client.Outcome(), "connected stop");
        EXPECT_TRUE(client.Desktop.boxes.empty());

        EXPECT_EQ(client.Run("next"), "false");
        if (encrypted)
            std::this_thread::sleep_for(std::chrono::milliseconds(200)); // the end comes in a packet of its own
        EXPECT_EQ(client.Run("body 7"), ""); // the end of the connection is there already, and not yet told
        client.ExpectGone();
        session.ReplyState = Reply::NoSuchGroup;
        session.StopFlag = true;
        for (const char* line : {"group x", "next", "stat 11", "stat 0"})
            EXPECT_THAT(client.Run(line), testing::StartsWith("false")) << line;
        EXPECT_EQ(client.Run("head 7") + client.Run("body 7"), "");
        client.Run("list");
        EXPECT_EQ(session.ReplyState, Reply::NoSuchGroup);
        EXPECT_EQ(session.CommandKind, Command::Next);
        EXPECT_EQ(client.Outcome(), "gone stop");
    }
}

TEST(ArticleCommandsTest, WatchdogReconnectsAndGoesOnBehindTheArticle)
{
    const std::string login = "C: authinfo user me\nS: 381\nC: authinfo pass secret\nS: 281\n";
    const std::string again = "X: connect\nS: 200 again\nS: a second line\n" + login
        + "C: group alt.kites\nS: 211 9 2 9 alt.kites\nC: stat 5\nS: 423\nC: stat 6\nS: 223 6 <a@b>\n"
          "C: head 7\nS: 221\nS: Path: lost\nS: Subject: blue\nS: .\n";
    bool encrypted = true;
    for (const std::string standstill : {"", "S: 480\nC: authinfo user me\n",
             "S: 480\nC: authinfo user me\nS: 381\nC: authinfo pass secret\n", "S: 423 gone\n", "S: 221\nS: .\n",
             "S: 221\nS: Path: more than the tail that is searched\n", "X: close\n"}) {
        SCOPED_TRACE(standstill);
        encrypted = !encrypted;
        ScriptedSession client(login + "C: head 5\n" + standstill + "X: pause time is up\n"
            + (standstill == "X: close\n" ? "" : "X: wait-close\n") + again);
        if (encrypted)
            client.Encrypt();
        client.MainForm.chkUserName.SetValue(1);
        ASSERT_TRUE(client.Session.TcpConnect());
        EXPECT_EQ(client.Run("head 5"), "");
        EXPECT_EQ(client.MainForm.TCP1.Encrypted().has_value(), encrypted);
        EXPECT_EQ(client.Session.CurrentArticle, 6);
        EXPECT_EQ(client.Outcome(), "connected");
        client.MainForm.Timer1.SetInterval(std::chrono::seconds(15));
        EXPECT_EQ(client.Run("head 7"), "Subject: blue");
    }
}

TEST(ArticleCommandsTest, WatchdogSparesAHeadThatHasCome)
{
    ScriptedSession client("C: head 7\nS: 221\nS: lost\nS: Subject: a\nS: .\nX: pause in");
    ASSERT_TRUE(client.Session.TcpConnect());
    client.MainForm.Timer1.SetInterval(std::chrono::milliseconds(30));
    // A dialog that is up when the head comes holds its wait.
    QTimer::singleShot(0, [] { QTest::qWait(100); });
    EXPECT_EQ(client.Run("head 7"), "Subject: a");
    EXPECT_EQ(client.Outcome(), "connected");
}

TEST(ArticleCommandsTest, WatchdogThatCannotReconnect)
{
    const std::string group = "X: connect\nS: 200\nC: group alt.kites\n";
    for (const std::string& again : {std::string("X: connect\nX: pause stop"), std::string("X: connect\nS: 502"),
             group + "X: pause stop", group + "S: 502", std::string()}) {
        SCOPED_TRACE(again);
        ScriptedSession client("C: head 5\nX: pause time is up\nX: wait-close\n" + again);
        ASSERT_TRUE(client.Session.TcpConnect());
        // The article lies behind the group's last one, so that no stat is sent that would drop the stop.
        client.Session.LastArticle = 4;
        if (again.empty())
            client.Server.StopListening();
        EXPECT_EQ(client.Run("head 5"), "");
        EXPECT_EQ(client.Outcome(), again.empty() ? "gone" : "closed stop");
        EXPECT_EQ(client.Desktop.boxes.empty(), !again.empty());
    }
}
