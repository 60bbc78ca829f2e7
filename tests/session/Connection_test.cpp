#include "tests/session/ScriptedSession.h"

using namespace std::chrono_literals;

static Qt::CursorShape Pointer() { return WindowNamed("frmTamarack")->cursor().shape(); }

TEST(ConnectionTest, GreetingAndAuthentication)
{
    const std::string user = "S: 200\nC: authinfo user me\n", password = user + "S: 381\nC: authinfo pass secret\n";
    struct Row {
        std::string script;
        const char* outcome;
        const char* status = "Connected";
    };
    for (const Row& row :
        {Row{"S: 200", "connected"}, Row{"S: 502 no", "closed stop"}, Row{"X: pause stop", "closed stop"},
            Row{"X: pause in\nX: close\nX: pause stop when gone", "closed stop", "Disconnected"},
            Row{password + "S: 281", "connected"}, Row{user + "S: 423\nC: authinfo pass secret\nS: 482", "connected"},
            Row{user + "S: 502", "closed stop", "Username Failed"},
            Row{user + "X: pause stop", "closed stop", "Username Failed"},
            Row{password + "S: 502", "closed stop", "Password Failed"},
            Row{password + "X: pause stop", "closed stop", "Password Failed"},
            Row{"S: 480", "closed", "Username Required"},
            Row{"S: 381\nX: pause stop", "closed stop", "Password Required"}}) {
        SCOPED_TRACE(row.script);
        ScriptedSession client(row.script, "");
        client.MainForm.chkUserName.SetValue(row.script.starts_with(user) || row.script == "S: 502 no" ? 1 : 0);
        const auto expectResult = [&] {
            EXPECT_EQ(client.Outcome(), row.outcome);
            EXPECT_EQ(client.Status(), std::string("Status: ") + row.status);
            EXPECT_EQ(Pointer(), Qt::ArrowCursor);
        };
        client.Desktop.whileAsleep = [&](std::chrono::milliseconds) { expectResult(); };
        const bool failed = std::string_view(row.status).ends_with("Failed");
        EXPECT_EQ(client.Session.TcpConnect(), !failed);
        expectResult();
        EXPECT_EQ(client.Desktop.sleeps, std::vector(failed ? 1 : 0, 2000ms));
        EXPECT_THAT(client.Desktop.boxes, testing::IsEmpty());
        // A connection that stands is kept, without a word to the server.
        EXPECT_TRUE(client.MainForm.TCP1.State() != SocketState::Connected || client.Session.TcpConnect());
    }
}

TEST(ConnectionTest, TheLogTellsAllAndHowAConnectionIsEncrypted)
{
    ScriptedSession client("C: authinfo user me\nS: 381 more\nC: authinfo pass \nS: 281 in\nC: next\nS: 421\nX: close");
    const std::string fingerprint = client.Encrypt().Fingerprint();
    client.MainForm.chkUserName.SetValue(1);
    client.MainForm.txtPassword.SetText("");
    std::string statuses, log;
    client.MainForm.TCP1.StateChanged = [&, shown = client.MainForm.TCP1.StateChanged] {
        shown();
        statuses += client.Status().substr(7);
        EXPECT_EQ(Pointer(), client.Status() == "Status: Closing" ? Qt::ArrowCursor : Qt::BusyCursor);
    };
    client.Session.DebugLog = [&](const std::string& text) { log += text; };
    client.Session.DebugOn = true;
    EXPECT_TRUE(client.Session.TcpConnect());
    client.Session.DebugOn = false;
    client.Run("next");
    EXPECT_EQ(log,
        "@starting connection routine\r\n@waiting for connection\r\n@connected\r\n@TLS 1.3, TLS_AES_256_GCM_SHA384\r\n"
        "@certificate SHA-256 "
            + fingerprint
            + "\r\n@waiting for socket state\r\n200 hello\r\n@have socket state\r\n@authenticating user\r\n"
              "#authinfo user me\r\n381 more\r\n#authinfo pass \r\n281 in\r\n@ending connection routine\r\n");
    client.ExpectGone();
    EXPECT_EQ(statuses, " Resolving Host Host Resolved Connecting Connected Closing");
}
