#pragma once

#include "forms/frmTamarack.h"
#include "platform/Desktop.h"
#include "session/ReceiveBuffer.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

// Where the reply to the command in flight stands.
enum class Reply {
    Refused = -1, // a class 5 reply; StopFlag is set as well
    Finished = 0, // nothing is awaited
    Awaiting = 1, // a status line is awaited
    Taken = 2, // the status line is in; a text is on its way, or (next, stat, 423, 430) there is nothing to be had
    NoSuchGroup = 3, // 411 to group
    NoGroupSelected = 4, // 412 to group
};

// Which command is in flight. The receiver reads every reply by it.
enum class Command {
    None = 0,
    List = 1,
    Group = 5,
    Body = 6,
    Head = 7,
    Greeting = 8, // nothing is sent
    AuthUser = 10,
    AuthPass = 11,
    Next = 12,
    Stat = 13,
    Manual = 14,
};

// The session with one news server: NNTP (RFC 3977, with authentication by RFC 4643) over one TCP connection. The
// server's name, its port, the user name and the password are read from the main form when they are needed, and what
// becomes of the connection is shown in its status bar.
//
// There is one command at a time: whoever sends any holds a SessionUse from the first to the last. TcpConnect and all
// that begins with Cmd let events through until the reply is in, and CmdStat before that too; the reply receiver runs
// in there and moves ReplyState. Whatever else runs there may set StopFlag, but must not send a command: only the login
// that a server demands and the watchdog of the head do. No wait has a time limit, but for that of CmdHead, 15 seconds,
// behind which it has reconnected; a server that hangs up or falls silent is waited for until the user stops it. A
// command clears StopFlag once it is sent, so that a stop from before is dropped. If the socket is not connected by
// then, or the other side has hung up, a command sends nothing, changes nothing and gives false or an empty text.
//
// Connecting and authenticating are in Connection.cpp, the reading of what the server sends in ReplyReceiver.cpp, the
// commands in ArticleCommands.cpp.
class NewsSession {
public:
    NewsSession(frmTamarack& mainForm, Desktop& desktop);
    NewsSession(const NewsSession&) = delete;

    // Opens the connection and authenticates, or keeps an open one. True when it came to its end, which does not prove
    // a usable session: a server may have refused it with its greeting, or the user stopped it there. On false the user
    // has been told why, in a message box or, after a refused login, in the status bar and with a blocking pause of two
    // seconds.
    bool TcpConnect();

    // Closes the connection, at any time, and drops LastBody and what has been received. It ends no wait.
    void TcpDisconnect();

    // Sends a command without its line end. The socket must be connected. False, and nothing is sent, if the text holds
    // CR or LF, which would make a command of what stands behind it.
    [[nodiscard]] bool SendLine(std::string_view text);

    // True if the group may be scanned; FirstArticle and LastArticle are then set. A group that does not exist is told
    // to the user, in a message box. True comes back after a class 5 reply and after a stop as well: look at StopFlag.
    // A stop closes the connection.
    bool CmdGroup(const std::string& name);

    // True if the server has moved on to a next article. CurrentArticle is then its number, if the reply names one; it
    // stays as it was after a class 4 reply that counts as a success. False also after a stop, which leaves the
    // connection open.
    bool CmdNext();

    // Places the server on the first existing article at or behind `number`, which becomes that article's number. A
    // number below the group's range becomes its first, and nothing is sent. False if the numbers have run out. The
    // caption of the main form shows each number that is tried. A stop ends no more than the try at one number.
    bool CmdStat(std::int32_t& number);

    // The article's header lines, without the first of what the server sent, which is the line end that an earlier
    // text has left behind. Empty on a stop, which closes the connection, and when the server stalls. After a class 4
    // reply that is no refusal of the article, the last text that came.
    std::string CmdHead(std::int32_t number);

    // The article's body as it came, with doubled dots and usually behind an empty line. Empty on a stop, which closes
    // the connection; after a class 4 reply as for CmdHead.
    std::string CmdBody(std::int32_t number);

    // The list of groups arrives through GroupListArrived, before this returns. A stop closes the connection.
    void CmdList();

    // Sends a line as the user typed it, and waits for its status line only; it shows where all traffic shows. A stop
    // closes the connection.
    void CmdManual(const std::string& line);

    // Whether something uses the session just now; see SessionUse.
    bool InUse() const { return inUse; }

    // Shows in the main form's status bar how the connection fares, behind "Status: ".
    void ShowStatus(std::string_view status);

    // The list of groups that CmdList waits for has come in whole; it is the multi-line text as it was sent. Called
    // once for each CmdList; what it lets through of events is received, but looked at when it returns.
    std::function<void(const std::string& text)> GroupListArrived;

    // A use of the session begins or ends; see SessionUse.
    std::function<void(bool inUse)> UseChanged;

    // Every line that is sent, every packet and each step of connecting, with its line end; called while DebugOn is
    // set. What arrives while it lets events through waits.
    std::function<void(const std::string& text)> DebugLog;

    Reply ReplyState = Reply::Finished;
    Command CommandKind = Command::None;
    bool StopFlag = false; // ends the current wait and, seen by a long operation, all of it
    std::string ReplyText; // one finished multi-line reply; empty outside the receiver
    // The last head or body, or text behind a reply to "group". It stays until the next one or the end of the
    // connection, whatever is sent meanwhile.
    std::string LastBody;
    ReceiveBuffer RecvBuffer;
    std::size_t LongestReply = ReceiveBuffer::longest; // a server that sends more is left, as if by a stop
    std::int32_t PacketCount = 0; // packets of a group list
    bool HeadTimedOut = false;
    std::string CurrentGroup; // the group that is being scanned
    std::int32_t StartArticle = 0; // where the scan of the group starts
    std::int32_t FirstArticle = 0;
    std::int32_t LastArticle = 0;
    std::int32_t CurrentArticle = 0; // from the last reply to next
    std::string AppDir; // the program's directory, with a separator at its end
    bool DebugOn = false;

private:
    friend class SessionUse;

    bool CmdAuthUser();
    bool CmdAuthPass();
    bool Authenticate(Command kind, const std::string& line);

    // The steps that every command begins with: false, and nothing is sent or changed, unless the socket is connected
    // and the line can be sent.
    bool Send(Command kind, const std::string& line);
    // Waits as long as the reply is open. A stop closes the connection.
    void WaitWhile(const std::function<bool()>& isOpen);

    bool ConnectionFailed();
    bool AuthenticationFailed(std::string_view status);
    void Log(const std::string& text);
    void LogStep(std::string_view step);

    // Closes the socket and shows that nothing is encrypted any more.
    void CloseSocket();
    // Shows, beside the status, whether the connection is encrypted, or why there is none.
    void ShowSecurity();

    void tcp1_StateChanged();
    void tcp1_Closed();
    void tcp1_DataArrival();
    void Timer1_Timer();

    // The receiver's two jobs.
    void JudgeStatusLine(std::string& packet);
    void TakeFinishedReplies();
    void Deliver();
    void HandOverList();

    frmTamarack& MainForm;
    Desktop& desktop;
    bool logging = false; // which may take a message box to an end
    bool delivering = false; // a group list
    bool manualIsListGroup = false; // the last command by hand
    bool manualTextIsComing = false; // behind the status line that a command by hand had waited for
    int openLogins = 0; // demanded by the server and still under way
    int connectionNumber = 0; // counts, so that what waits on one connection notices that there is another
    bool inUse = false;
};

// A use of the session from its first step to its last: a search, a refresh of the list of groups, a command by hand.
// There is one at a time, since a reply is read by what the session knows of the one command in flight. As long as it
// lasts, the controls that would begin another one are disabled, and with them those that choose the server.
class SessionUse {
public:
    explicit SessionUse(NewsSession& session);
    ~SessionUse();
    SessionUse(const SessionUse&) = delete;

    // False if another use was going on already: its end is then the other one's, and no command may be sent.
    explicit operator bool() const { return begun; }

private:
    void SetInUse(bool inUse);

    NewsSession& Session;
    const bool begun;
};
