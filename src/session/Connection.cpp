#include "platform/Events.h"
#include "session/NewsSession.h"

#include <utility>

using namespace std::chrono_literals;

NewsSession::NewsSession(frmTamarack& mainForm, Desktop& newDesktop)
    : MainForm(mainForm)
    , desktop(newDesktop)
{
    MainForm.TCP1.StateChanged = [this] { tcp1_StateChanged(); };
    MainForm.TCP1.Closed = [this] { tcp1_Closed(); };
    MainForm.TCP1.DataArrival = [this] { tcp1_DataArrival(); };
    MainForm.Timer1.Tick = [this] { Timer1_Timer(); };
}

bool NewsSession::TcpConnect()
{
    Socket& TCP1 = MainForm.TCP1;
    // The rest of a text that nobody waits for would be read as the replies to what is sent next.
    if (TCP1.State() == SocketState::Connected && !manualTextIsComing) {
        MainForm.SetMousePointer(MousePointer::Default);
        return true;
    }
    LogStep("starting connection routine");
    MainForm.SetMousePointer(MousePointer::ArrowHourglass);
    if (MainForm.cboNewsServer.Text().empty()) {
        desktop.MsgBox("You need to select your ISP first\r\nDo so on the 'Server Setup' tab", "No ISP Selected");
        MainForm.SetMousePointer(MousePointer::Default);
        return false;
    }
    // The greeting is a reply like any other: it must meet a waiting receiver.
    CommandKind = Command::Greeting;
    ReplyState = Reply::Awaiting;
    // Nothing survives from the last connection, such as a farewell that nobody waited for.
    TcpDisconnect();
    manualTextIsComing = false;
    ++connectionNumber;
    ShowStatus("Connecting");
    TCP1.Connect(MainForm.cboNewsServer.Text(), Socket::PortFrom(MainForm.txtPort.Text()));
    LogStep("waiting for connection");
    // A server may have hung up again by the time that anybody looks.
    while (TCP1.State() != SocketState::Connected && TCP1.State() != SocketState::Closing) {
        WaitForEvents();
        if (TCP1.State() == SocketState::Error || StopFlag)
            return ConnectionFailed();
    }
    LogStep("connected");
    // A copy: the log may let events through, and with them the end of the connection.
    if (const std::optional<Encryption> encryption = TCP1.Encrypted()) {
        LogStep(encryption->protocol + ", " + encryption->cipher);
        LogStep("certificate SHA-256 " + encryption->certificate.Fingerprint());
    }
    if (TCP1.State() == SocketState::Connected) {
        StopFlag = false;
        LogStep("waiting for socket state");
        while (ReplyState != Reply::Finished && !StopFlag)
            WaitForEvents();
        LogStep("have socket state");
        if (StopFlag) {
            CloseSocket();
        } else if (MainForm.chkUserName.Value() == 1) {
            LogStep("authenticating user");
            if (!CmdAuthUser())
                return AuthenticationFailed("Username Failed");
            if (!CmdAuthPass())
                return AuthenticationFailed("Password Failed");
        }
    }
    LogStep("ending connection routine");
    MainForm.SetMousePointer(MousePointer::Default);
    return true;
}

bool NewsSession::ConnectionFailed()
{
    ShowStatus("Error");
    desktop.MsgBox(
        "Could not connect to server\r\nPlease make sure the server name\r\nis correct.", "Connection Error");
    MainForm.SetMousePointer(MousePointer::Default);
    return false;
}

bool NewsSession::AuthenticationFailed(std::string_view status)
{
    ShowStatus(status);
    CloseSocket();
    MainForm.SetMousePointer(MousePointer::Default);
    desktop.Sleep(2000ms);
    return false;
}

void NewsSession::TcpDisconnect()
{
    CloseSocket();
    GiveBack(LastBody);
    RecvBuffer.Clear();
}

bool NewsSession::CmdAuthUser()
{
    return Authenticate(Command::AuthUser, "authinfo user " + MainForm.txtUserName.Text());
}

bool NewsSession::CmdAuthPass()
{
    return Authenticate(Command::AuthPass, "authinfo pass " + MainForm.txtPassword.Text());
}

bool NewsSession::Authenticate(Command kind, const std::string& line)
{
    if (!Send(kind, line))
        return false;
    const int sentOn = connectionNumber;
    while (ReplyState == Reply::Awaiting) {
        if (StopFlag) {
            TcpDisconnect();
            return false;
        }
        WaitForEvents();
        // The watchdog has given up this connection, and what it did on the new one is not this login's.
        if (connectionNumber != sentOn)
            return false;
    }
    return ReplyState != Reply::Refused;
}

// The watchdog of the head command. All of it runs inside the wait of CmdHead, which goes on when it is done.
void NewsSession::Timer1_Timer()
{
    // A connection is not exchanged under a receiver that is still busy with the last one; the next tick comes. Nor
    // when the wait of the head is over and has only not gone on yet, as while a dialog is up over it.
    if (logging || StopFlag || ReplyState == Reply::Finished)
        return;
    MainForm.Timer1.SetEnabled(false);
    HeadTimedOut = true;
    TcpDisconnect();
    (void)TcpConnect();
    // What the server said behind its greeting.
    RecvBuffer.Clear();
    // Back on the group and on the article that stalled, so that the next one is the one behind it.
    (void)CmdGroup(CurrentGroup);
    (void)CmdStat(CurrentArticle);
}

void NewsSession::tcp1_StateChanged()
{
    ShowSecurity();
    using enum SocketState;
    constexpr std::pair<SocketState, std::string_view> texts[] = {{ResolvingHost, "Resolving Host"},
        {HostResolved, "Host Resolved"}, {Connecting, "Connecting"}, {Connected, "Connected"}, {Closing, "Closing"}};
    for (const auto& [state, text] : texts) {
        if (state == MainForm.TCP1.State())
            ShowStatus(text);
    }
}

// It ends no wait: a command that was in flight goes on waiting until the user stops it.
void NewsSession::tcp1_Closed() { ShowStatus("Disconnected"); }

void NewsSession::CloseSocket()
{
    MainForm.TCP1.Close();
    ShowSecurity();
}

void NewsSession::ShowSecurity()
{
    const Socket& TCP1 = MainForm.TCP1;
    const std::optional<Encryption>& encryption = TCP1.Encrypted();
    StatusPanel& panel = MainForm.StatusBar1.Panels(1);
    panel.SetPadlock(encryption.has_value());
    panel.SetToolTip(encryption
            ? "Encrypted with " + encryption->protocol + ", certificate of " + encryption->certificate.Subject()
            : TCP1.State() == SocketState::Connected ? "Not encrypted"
            : TCP1.FailureReason().empty()           ? std::string(frmTamarack::connectionToolTip)
                                                     : TCP1.FailureReason());
}

void NewsSession::ShowStatus(std::string_view status)
{
    MainForm.StatusBar1.Panels(1).SetText(std::string("Status: ").append(status));
}

void NewsSession::Log(const std::string& text)
{
    if (!DebugOn)
        return;
    logging = true;
    Raise(DebugLog, text);
    logging = false;
    MainForm.TCP1.AnnounceWaiting();
}

void NewsSession::LogStep(std::string_view step) { Log(std::string("@").append(step).append("\r\n")); }

SessionUse::SessionUse(NewsSession& session)
    : Session(session)
    , begun(!session.inUse)
{
    if (begun)
        SetInUse(true);
}

SessionUse::~SessionUse()
{
    if (begun)
        SetInUse(false);
}

void SessionUse::SetInUse(bool inUse)
{
    Session.inUse = inUse;
    frmTamarack& MainForm = Session.MainForm;
    MainForm.cmdRefresh.SetEnabled(!inUse);
    MainForm.cmdRefreshDisk.SetEnabled(!inUse);
    MainForm.cmdFindNow.SetEnabled(!inUse);
    MainForm.mnuFindNow.SetEnabled(!inUse);
    MainForm.SSFrame2.SetEnabled(!inUse);
    Raise(Session.UseChanged, inUse);
}
