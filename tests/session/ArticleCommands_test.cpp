#include "tests/session/ScriptedSession.h"

#include <QTest>

#include <regex>

using testing::ElementsAre;

TEST(ArticleCommandsTest, OneConversationInPiecesOfAnySize)
{
    const std::string script = R"(
        C: group alt.kites
        S: 211 42 7003 7055 alt.kites
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
    // Each status line comes whole.
    const std::string torn = std::regex_replace(std::regex_replace(script, std::regex("C:"), "X: pause whole\n$&"),
        std::regex("(S: 2.*)\n( *S:)"), "$1\nX: pause pieces\n$2");
    for (const std::size_t piece : {1, 2, 3, 1000}) {
        SCOPED_TRACE(piece);
        ScriptedSession client(torn);
        client.PieceSize = piece;
        std::vector<std::string> groupLists;
        client.Session.GroupListArrived = [&](const std::string& text) { groupLists.push_back(text); };
        ASSERT_TRUE(client.Session.TcpConnect());
        for (const auto& [line, result] :
            {std::pair("group alt.kites", "true"), {"stat 7004", "true 7005"}, {"next", "true"},
                {"head 7007", "Subject: red"}, {"body 7007", "\r\n..stuffed\r\n\r\n.no end\n.\r\n\xe4"},
                {"list", "old\r\ntext"}, {"head 7007", "Path: kept"}, {"next", "false"}})
            EXPECT_EQ(client.Run(line), result) << line;
        EXPECT_EQ(CaptionOf("frmTamarack"), "Setting group pointers: 7005");
        EXPECT_EQ(client.Session.CurrentArticle, 7007);
        EXPECT_THAT(groupLists, ElementsAre("\r\nalt.kites 7055 7001 y\r\nalt.none 0 1 n"));
        EXPECT_EQ(PanelText("StatusBar2", 4), "Packets: " + std::to_string(1 + (42 + piece - 1) / piece));
        EXPECT_EQ(client.Session.PacketCount, 0);
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
    std::string result = client.Run(line) + "/";
    result += client.Outcome() + std::string(client.Desktop.boxes.size(), '!');
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
    Check(
        "body 7", "S~ 222\\r\\n" + std::string(50, 'x') + "\nS~ \\r\\n.\\r\\n.\\r\\na\\r\\n.\\r\\n", "\r\na/connected");
    Check("stat 1", "S: 223", "true 1/connected");
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
    const std::string user = "C: authinfo user me\n", password = "C: authinfo pass secret\n",
                      demand = "S: 480\n" + user;
    const std::string asked = demand + "S: 381\n" + password;
    Check("next", asked + "S: 281", "true/connected", true);
    Check("head 7", asked + "S: 281", "text/connected", true);
    Check("body 7", demand + "S: 281\n" + password + "S: 482", "old\r\ntext/connected", true);
    Check("next", asked + "S: 502", "true/connected stop", true);
    Check("group x", demand + "X: pause stop", "true/closed stop", true);
    Check("next", asked + "X: pause stop", "true/closed stop", true);
    Check("next", demand + asked + "S: 281\n" + password + "S: 281", "true/connected", true);
    // A server that wants to be logged in to before its own login.
    Check(
        "next", demand + demand + demand + demand + demand + demand + demand + demand + "S: 480", "true/closed", true);
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
        for (const char* group : {"alt.kites\r\nquit", "alt.kites\nquit", "alt.kites\r"})
            EXPECT_EQ(client.Run(std::string("group ") + group), "false");
        EXPECT_EQ(session.ReplyState, Reply::Finished);
        EXPECT_EQ(session.CommandKind, Command::Greeting);
        EXPECT_EQ(client.Outcome(), "connected stop");
        EXPECT_EQ(client.Run("next"), "false");
        if (encrypted)
            std::this_thread::sleep_for(std::chrono::milliseconds(200)); // the end comes in a packet of its own
        EXPECT_EQ(client.Run("body 7"), ""); // the end of the connection is there already, and not yet told
        client.ExpectGone();
        session.StopFlag = true;
        EXPECT_EQ(client.Run("group x") + client.Run("next") + client.Run("stat 11"), "falsefalsefalse 11");
        EXPECT_EQ(client.Run("stat 0") + client.Run("head 7") + client.Run("body 7"), "false 0");
        EXPECT_EQ(session.CommandKind, Command::Next);
        EXPECT_EQ(client.Outcome(), "gone stop");
    }
}

TEST(ArticleCommandsTest, WatchdogReconnectsAndGoesOnBehindTheArticle)
{
    const std::string login = "C: authinfo user me\nS: 381\nC: authinfo pass secret\nS: 281\n";
    const std::string group = "X: connect\nS: 200 again\nS: a second line\n" + login + "C: group alt.kites\n";
    const std::string again = group
        + "S: 211 9 2 9 alt.kites\nC: stat 5\nS: 423\nC: stat 6\nS: 223 6 <a@b>\n"
          "C: head 7\nS: 221\nS: Path: lost\nS: Subject: blue\nS: .\n";
    struct Row {
        std::string standstill, again;
        const char* outcome = "connected";
    };
    bool encrypted = true;
    for (const Row& row : {Row{"", again}, {"S: 480\nC: authinfo user me\n", again},
             {"S: 480\nC: authinfo user me\nS: 381\nC: authinfo pass secret\n", again}, {"S: 423 gone\n", again},
             {"S: 221\nS: .\n", again}, {"S: 221\nS: Path: more than the tail that is searched\n", again},
             {"X: close\n", again}, {"", "X: connect\nX: pause stop", "closed stop"},
             {"", "X: connect\nS: 502", "closed stop"}, {"", group + "X: pause stop", "closed stop"},
             {"", group + "S: 502", "closed stop"}, {"", "", "gone"}}) {
        SCOPED_TRACE(row.standstill + row.again);
        const bool succeeds = row.again == again;
        encrypted = succeeds && !encrypted;
        ScriptedSession client(login + "C: head 5\n" + row.standstill + "X: pause time is up\n"
            + (row.standstill == "X: close\n" ? "" : "X: wait-close\n") + row.again);
        if (encrypted)
            client.Encrypt();
        client.MainForm.chkUserName.SetValue(1);
        ASSERT_TRUE(client.Session.TcpConnect());
        if (row.again.empty())
            client.Server.StopListening();
        if (!succeeds)
            client.Session.LastArticle = 4; // so that no stat is sent that would drop the stop
        EXPECT_EQ(client.Run("head 5"), "");
        EXPECT_EQ(client.Outcome(), row.outcome);
        EXPECT_EQ(client.Desktop.boxes.empty(), !row.again.empty());
        if (succeeds) {
            EXPECT_EQ(client.MainForm.TCP1.Encrypted().has_value(), encrypted);
            EXPECT_EQ(client.Session.CurrentArticle, 6);
            client.MainForm.Timer1.SetInterval(std::chrono::seconds(15));
            EXPECT_EQ(client.Run("head 7"), "Subject: blue");
        }
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
