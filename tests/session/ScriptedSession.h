#pragma once

#include "demo/support/Screen.h"
#include "platform/Events.h"
#include "session/NewsSession.h"
#include "tests/support/FaultProxy.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TestDesktop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

// The real session behind the real main form, and a server that greets it and then plays a script, to whose end it must
// come. The script's pauses act on the client just there:
//
//   stop              the client is stopped
//   stop when gone    the same, once it knows that the connection is no more
//   pieces, whole     what follows comes in pieces of PieceSize bytes, or packet by packet again
//   time is up        the watchdog of the head command strikes
struct ScriptedSession {
    explicit ScriptedSession(const std::string& script, const std::string& welcome = "S: 200 hello\n")
    {
        Server.OnPause = [this](const std::string& name) { Pause(name); };
        MainForm.cboNewsServer.AddItem("127.0.0.1");
        MainForm.cboNewsServer.SetListIndex(0);
        MainForm.txtPort.SetText(std::to_string(Server.Port()));
        MainForm.txtUserName.SetText("me");
        MainForm.txtPassword.SetText("secret");
        // As earlier replies might have left it.
        Session.CurrentGroup = "alt.kites";
        Session.FirstArticle = 1;
        Session.LastArticle = 12;
        Session.CurrentArticle = 5;
        Server.Play(welcome + script);
    }

    ~ScriptedSession()
    {
        EXPECT_EQ(Server.FirstProblem(), "");
        EXPECT_FALSE(MainForm.Timer1.Enabled());
    }

    // From now on what the client says is encrypted, up to just before the server.
    const Identity& Encrypt()
    {
        encryption.emplace(Server.Port(), &identity.emplace());
        MainForm.txtPort.SetText(std::to_string(encryption->Port()));
        MainForm.TCP1.SecurePorts = {encryption->Port()};
        MainForm.TCP1.AcceptCertificate = [](const Certificate&, const auto&) { return true; };
        return *identity;
    }

    // Runs the command of a script line ("stat 7"). Gives its text, or "true" or "false", with the number that stat has
    // found.
    std::string Run(const std::string& line)
    {
        const std::string argument = line.substr(std::min(line.find(' ') + 1, line.size()));
        std::int32_t number = std::atoi(argument.c_str());
        Session.LastBody = "old\r\ntext";
        if (line.starts_with("head"))
            return Session.CmdHead(number);
        if (line.starts_with("body"))
            return Session.CmdBody(number);
        if (line.starts_with("list")) {
            Session.CmdList();
            return Session.LastBody;
        }
        const bool isStat = line.starts_with("stat");
        const bool result = isStat      ? Session.CmdStat(number)
            : line.starts_with("group") ? Session.CmdGroup(argument)
                                        : Session.CmdNext();
        return (result ? "true" : "false") + (isStat ? " " + std::to_string(number) : "");
    }

    static std::string Status() { return PanelText("StatusBar1", 1); }

    // "connected", "closed" by the client or "gone", and " stop" while StopFlag is set.
    std::string Outcome()
    {
        const SocketState state = MainForm.TCP1.State();
        const std::string outcome = state == SocketState::Connected ? "connected" : "gone";
        return (state == SocketState::Closed ? "closed" : outcome) + (Session.StopFlag ? " stop" : "");
    }

    void ExpectGone()
    {
        EXPECT_TRUE(Until([] { return Status() == "Status: Disconnected"; }));
    }

    TestDesktop Desktop;
    frmTamarack MainForm;
    NewsSession Session{MainForm, Desktop};
    ScriptedServer Server;
    std::size_t PieceSize = 0;

private:
    void Pause(const std::string& name)
    {
        if (name == "time is up")
            MainForm.Timer1.SetInterval(std::chrono::milliseconds(1));
        else if (name == "pieces" || name == "whole")
            Server.SetPieceSize(name == "pieces" ? PieceSize : 0);
        if (name == "stop when gone")
            Until([this] { return MainForm.TCP1.State() != SocketState::Connected; });
        if (name.starts_with("stop")) // some passes later, so that a wait that ends by itself is found out
            QTimer::singleShot(5, &context, [this] { Session.StopFlag = true; });
    }

    std::optional<Identity> identity;
    std::optional<FaultProxy> encryption;
    QObject context; // of what a pause begins
};
