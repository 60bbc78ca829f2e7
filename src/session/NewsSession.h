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

// The session with one news server: NNTP (RFC 3977, with authentication by RFC 4643) over one TCP connection, one
// command at a time. A command sends one line and waits in a loop that lets all events through, until the reply
// receiver, which runs inside that wait, has moved ReplyState. Whoever runs there may set StopFlag, but must not send a
// command: what sends any holds a SessionUse. Inside a command, only the login that a server demands and the watchdog
// of the head send others.
//
// Connecting and authenticating are in Connection.cpp, the reading of what the server sends in ReplyReceiver.cpp, the
// commands in ArticleCommands.cpp.
class NewsSession {
public:
    NewsSession(frmTamarack& mainForm, Desktop& desktop);
    NewsSession(const NewsSession&) = delete;
    NewsSession& operator=(const NewsSession&) = delete;

    // Opens the connection and authenticates, or keeps an open one. True when it came to its end, which does not prove
    // a usable session: a server may have refused it with its greeting. On false the user has been told why.
    bool TcpConnect();

    // Closes the connection, at any time.
    void TcpDisconnect();

    // Sends a command without its line end. The socket must be connected. False, and nothing is sent, if the text holds
    // CR or LF, which would make a command of what stands behind it.
    [[nodiscard]] bool SendLine(std::string_view text);

    // True if the group may be scanned; FirstArticle and LastArticle are then set. A group that does not exist is told
    // to the user. True comes back after a class 5 reply and after a stop as well: look at StopFlag.
    bool CmdGroup(const std::string& name);

    // True if the server has moved on to a next article; CurrentArticle is then its number.
    bool CmdNext();

    // Places the server on the first existing article at or behind `number`, which becomes that article's number. A
    // number below the group's range becomes its first, and nothing is sent. False if the numbers have run out.
    bool CmdStat(std::int32_t& number);

    // The article's header lines; empty on a stop or when the server stalls.
    std::string CmdHead(std::int32_t number);

    // The article's body as it came, usually behind an empty line; empty on a stop.
    std::string CmdBody(std::int32_t number);

    // Whether something uses the session just now; see SessionUse.
    bool InUse() const { return inUse; }

    // The group list arrives through GroupListArrived.
    void CmdList();

    // Sends a line as the user typed it, if there is a connection. The reply is not looked at; it shows where all
    // traffic shows.
    void CmdManual(const std::string& line);

    // The list of groups that CmdList waits for has come in whole; it is the multi-line text as it was sent.
    std::function<void(const std::string& text)> GroupListArrived;

    // A use of the session begins or ends; see SessionUse.
    std::function<void(bool inUse)> UseChanged;

    // Every line that is sent, every packet and each step of connecting, with its line end; called while DebugOn is
    // set.
    std::function<void(const std::string& text)> DebugLog;

    Reply ReplyState = Reply::Finished;
    Command CommandKind = Command::None;
    bool StopFlag = false; // ends the current wait and, seen by a long operation, all of it
    std::string ReplyText; // one finished multi-line reply; empty outside the receiver
    std::string LastBody; // the last head or body; not cleared when a command is sent
    ReceiveBuffer RecvBuffer;
    std::size_t LongestReply = ReceiveBuffer::longest; // a server that sends more is left, as if by a stop
    std::size_t SearchPos = 1; // where in RecvBuffer the search for the terminator goes on
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
    const std::string& WaitForText();

    bool ConnectionFailed();
    bool AuthenticationFailed(std::string_view status);
    void ShowStatus(std::string_view status);
    void Log(const std::string& text);
    void LogStep(std::string_view step);

    void tcp1_StateChanged();
    void tcp1_Closed();
    void tcp1_DataArrival();
    void Timer1_Timer();

    // The receiver's two jobs.
    void JudgeStatusLine(std::string& packet);
    void ReadGroupNumbers(std::string_view packet);
    void ReadArticleNumber(std::string_view packet);
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
