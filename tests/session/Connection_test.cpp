#include "tests/session/ScriptedSession.h"

using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

constexpr const char* errorText = "Could not connect to server\r\nPlease make sure the server name\r\nis correct.";

Qt::CursorShape Pointer() { return WindowNamed("frmTamarack")->cursor().shape(); }

}

TEST(ConnectionTest, GreetingAndAuthentication)
{
    struct Row {
        const char* script;
        bool userName;
        bool result;
        const char* outcome;
        const char* status;
        std::size_t sleeps = 0;
    };
    for (const Row& row :
        {
            Row{"S: 200", false, true, "connected", "Status: Connected"},
            Row{"S: 502 no", true, true, "closed stop", "Status: Connected"},
            Row{"X: pause stop", false, true, "closed stop", "Status: Connected"},
            Row{"X: pause in\nX: close\nX: pause stop when gone", false, true, "closed stop", "Status: Disconnected"},
            Row{"S: 200\nC: authinfo user me\nS: 381\nC: authinfo pass secret\nS: 281", true, true, "connected",
                "Status: Connected"},
            Row{"S: 200\nC: authinfo user me\nS: 423\nC: authinfo pass secret\nS: 482", true, true, "connected",
                "Status: Connected"},
            Row{"S: 200\nC: authinfo user me\nS: 502", true, false, "closed stop", "Status: Username Failed", 1},
            Row{"S: 200\nC: authinfo user me\nX: pause stop", true, false, "closed stop", "Status: Username Failed", 1},
            Row{"S: 200\nC: authinfo user me\nS: 381\nC: authinfo pass secret\nS: 502", true, false, "closed stop",
                "Status: Password Failed", 1},
            Row{"S: 200\nC: authinfo user me\nS: 381\nC: authinfo pass secret\nX: pause stop", true, false,
                "closed stop", "Status: Password Failed", 1},
            Row{"S: 480", false, true, "closed", "Status: Username Required"},
            Row{"S: 381\nX: pause stop", false, true, "closed stop", "Status: Password Required"},
        }) {
        SCOPED_TRACE(row.script);
        ScriptedSession client(row.script, "");
        client.MainForm.chkUserName.SetValue(row.userName ? 1 : 0);
        std::vector<Qt::CursorShape> pointers;
        client.MainForm.TCP1.StateChanged = [&, shown = client.MainForm.TCP1.StateChanged] {
            pointers.push_back(Pointer());
            shown();
        };
        client.Desktop.whileAsleep = [&](std::chrono::milliseconds duration) {
            EXPECT_EQ(duration, 2000ms);
            EXPECT_EQ(client.Status(), row.status);
            EXPECT_EQ(client.Outcome(), row.outcome);
            EXPECT_EQ(Pointer(), Qt::ArrowCursor);
        };
        EXPECT_EQ(client.Session.TcpConnect(), row.result);
        EXPECT_EQ(client.Outcome(), row.outcome);
        EXPECT_EQ(client.Status(), row.status);
        EXPECT_EQ(client.Desktop.sleeps.size(), row.sleeps);
        EXPECT_THAT(pointers, testing::Each(Qt::BusyCursor));
        EXPECT_EQ(Pointer(), Qt::ArrowCursor);
        EXPECT_THAT(client.Desktop.boxes, testing::IsEmpty());
        EXPECT_EQ(client.Server.FirstProblem(), "");
        // A connection that stands is kept, without a word to the server.
        EXPECT_TRUE(client.MainForm.TCP1.State() != SocketState::Connected || client.Session.TcpConnect());
    }
}

TEST(ConnectionTest, FailuresBeforeTheGreeting)
{
    const auto fails = [](const char* what, auto prepare) {
        SCOPED_TRACE(what);
        ScriptedSession client("", "");
        prepare(client);
        EXPECT_FALSE(client.Session.TcpConnect());
        EXPECT_EQ(client.Status(), "Status: Error");
        ASSERT_THAT(client.Desktop.BoxTitles(), ElementsAre("Connection Error"));
        EXPECT_EQ(client.Desktop.boxes[0].text, errorText);
        EXPECT_EQ(client.Session.CommandKind, Command::Greeting);
        EXPECT_NE(client.MainForm.TCP1.State(), SocketState::Closed);
        EXPECT_EQ(Pointer(), Qt::ArrowCursor);
    };
    fails("no port", [](ScriptedSession& client) { client.MainForm.txtPort.SetText("abc"); });
    fails("nobody listens", [](ScriptedSession& client) { client.Server.StopListening(); });
    fails("stop", [](ScriptedSession& client) { client.Session.StopFlag = true; });
    fails("a refusal in the very pass that connects", [](ScriptedSession& client) {
        client.Server.Play("S: 502 no");
        client.MainForm.TCP1.StateChanged = [&client] {
            while (client.MainForm.TCP1.State() == SocketState::Connected && !client.Session.StopFlag)
                DoEvents();
            EXPECT_EQ(client.Session.ReplyState == Reply::Refused, client.Session.StopFlag);
        };
    });

    ScriptedSession client("", "");
    client.MainForm.cboNewsServer.RemoveItem(0);
    EXPECT_FALSE(client.Session.TcpConnect());
    ASSERT_THAT(client.Desktop.BoxTitles(), ElementsAre("No ISP Selected"));
    EXPECT_EQ(client.Desktop.boxes[0].text, "You need to select your ISP first\r\nDo so on the 'Server Setup' tab");
    EXPECT_EQ(client.Session.CommandKind, Command::None);
    EXPECT_EQ(Pointer(), Qt::ArrowCursor);
}

TEST(ConnectionTest, StatusFollowsTheSocketAndTheLogTellsAll)
{
    ScriptedSession client("C: authinfo user me\nS: 381 more\nC: authinfo pass \nS: 281 in\nC: next\nS: 421\nX: close");
    client.MainForm.chkUserName.SetValue(1);
    client.MainForm.txtPassword.SetText("");
    std::vector<std::string> statuses, log;
    client.MainForm.TCP1.StateChanged = [&, shown = client.MainForm.TCP1.StateChanged] {
        shown();
        statuses.push_back(client.Status());
    };
    client.Session.DebugLog = [&](const std::string& text) { log.push_back(text); };
    client.Session.DebugOn = true;
    EXPECT_TRUE(client.Session.TcpConnect());
    EXPECT_THAT(log,
        ElementsAre("@starting connection routine\r\n", "@waiting for connection\r\n", "@connected\r\n",
            "@waiting for socket state\r\n", "200 hello\r\n", "@have socket state\r\n", "@authenticating user\r\n",
            "#authinfo user me\r\n", "381 more\r\n", "#authinfo pass \r\n", "281 in\r\n",
            "@ending connection routine\r\n"));
    client.Session.DebugOn = false;
    client.Run("next");
    EXPECT_EQ(log.size(), 12u);
    while (client.Status() != "Status: Disconnected")
        WaitForEvents();
    EXPECT_THAT(statuses,
        ElementsAre("Status: Resolving Host", "Status: Host Resolved", "Status: Connecting", "Status: Connected",
            "Status: Closing"));
}
