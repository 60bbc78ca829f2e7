#include "session/NewsSession.h"

#include <charconv>

// What the server sends arrives in packets of any size. On each packet two jobs are done, in this order: the status
// line of the command in flight is judged, which is taken to begin the packet, and what is left is collected until the
// terminator of a multi-line reply has come in.
//
//   222 7002 <a@b> body follows CR LF
//   text CR LF
//   . CR LF
//
// Of the terminator the last CR LF stays behind, so that every multi-line reply but the first of a connection begins
// with an empty line.

namespace {

constexpr std::string_view terminator = "\r\n.\r\n";

// A server that goes on demanding a login in the middle of this many is one that cannot be logged in to.
constexpr int mostOpenLogins = 8;

// What stands behind the first blank; all of it if there is none.
std::string_view BehindBlank(std::string_view text)
{
    const std::size_t blank = text.find(' ');
    return blank == std::string_view::npos ? text : text.substr(blank + 1);
}

// The number before the next blank. A number that does not fit leaves the variable as it was.
void ReadNumber(std::string_view text, std::int32_t& number)
{
    const std::size_t blank = text.find(' ');
    const std::string_view field = blank == std::string_view::npos ? std::string_view() : text.substr(0, blank);
    if (field.empty() || field.front() < '0' || field.front() > '9') {
        number = 0;
        return;
    }
    std::int32_t value = 0;
    if (std::from_chars(field.data(), field.data() + field.size(), value).ec == std::errc())
        number = value;
}

// The status lines behind which a text follows (RFC 3977, appendix C). 211 is one of them to "listgroup" only.
bool AnnouncesText(std::string_view statusLine, bool toListGroup)
{
    constexpr std::string_view codes = "100 101 215 220 221 222 224 225 230 231";
    const std::string_view code = statusLine.substr(0, 3);
    return code.size() == 3 && (codes.find(code) != std::string_view::npos || (toListGroup && code == "211"));
}

}

void NewsSession::tcp1_DataArrival()
{
    // Packets keep their order: what comes in while one is written to the log waits until that is done.
    if (logging)
        return;
    std::string packet = MainForm.TCP1.GetData();
    Log(packet);
    const int arrivedOn = connectionNumber;
    if (ReplyState == Reply::Awaiting)
        JudgeStatusLine(packet);
    // A login in there may have been given up for a new connection, to which nothing of this one belongs.
    if (connectionNumber != arrivedOn)
        return;
    if (packet.size() > LongestReply - RecvBuffer.Length()) {
        TcpDisconnect();
        StopFlag = true;
        ShowStatus("Reply Too Long");
        return;
    }
    RecvBuffer.Append(packet);
    // A list that is being handed over lets events through. The run that hands it over takes what they bring, so that a
    // server without end cannot pile up one run on another.
    if (!delivering)
        TakeFinishedReplies();
    GiveBack(ReplyText);
}

void NewsSession::JudgeStatusLine(std::string& packet)
{
    const auto begins = [&packet](std::string_view code) { return packet.starts_with(code); };
    const auto inFlight = [this](Command kind) { return CommandKind == kind; };
    const bool haveUserName = MainForm.chkUserName.Value() == 1;

    if (begins("5")) {
        ReplyState = Reply::Refused;
        StopFlag = true;
    } else if (begins("423") || begins("430")) {
        ReplyState = Reply::Taken;
    } else if (begins("480") && haveUserName && openLogins < mostOpenLogins) {
        // Both wait in turn, and this receiver runs again inside their waits. A server may answer 480 to them too.
        const int demandedOn = connectionNumber;
        ++openLogins;
        (void)CmdAuthUser();
        if (connectionNumber == demandedOn)
            (void)CmdAuthPass();
        --openLogins;
        if (connectionNumber != demandedOn)
            return;
        ReplyState = Reply::Finished;
    } else if (begins("480")) {
        ReplyState = Reply::Finished;
        TcpDisconnect();
        ShowStatus("Username Required");
    } else if (begins("411") && inFlight(Command::Group)) {
        ReplyState = Reply::NoSuchGroup;
    } else if (begins("412") && inFlight(Command::Group)) {
        ReplyState = Reply::NoGroupSelected;
    } else if ((begins("481") || begins("421")) && inFlight(Command::Next)) {
        ReplyState = Reply::Taken;
    } else if (begins("4") || (begins("381") && haveUserName)) {
        ReplyState = Reply::Finished;
    } else if (begins("381")) {
        ReplyState = Reply::Taken;
        TcpDisconnect();
        ShowStatus("Password Required");
    } else if (inFlight(Command::Group)) {
        // 211 42 7001 7055 alt.kites   (code, count, first, last, name)
        ReplyState = Reply::Finished;
        const std::string_view first = BehindBlank(BehindBlank(packet));
        ReadNumber(first, FirstArticle);
        ReadNumber(BehindBlank(first), LastArticle);
    } else if (inFlight(Command::Next)) {
        // 223 7002 <a@b> article selected   (code, number, message id)
        ReplyState = Reply::Finished;
        ReadNumber(BehindBlank(packet), CurrentArticle);
    } else if (inFlight(Command::Greeting) || inFlight(Command::AuthUser) || inFlight(Command::AuthPass)
        || inFlight(Command::Stat)) {
        ReplyState = Reply::Finished;
    } else {
        ReplyState = Reply::Taken;
        manualTextIsComing = inFlight(Command::Manual) && AnnouncesText(packet, manualIsListGroup);
    }

    // A piece of a status line without its end stays whole.
    if (const std::size_t lineEnd = packet.find('\n'); lineEnd != std::string::npos)
        packet.erase(0, lineEnd + 1);
}

void NewsSession::TakeFinishedReplies()
{
    // A text without a line, of which only the terminator's second half stands behind the status line.
    if (manualTextIsComing && RecvBuffer.Text().starts_with(".\r\n")) {
        (void)RecvBuffer.Take(0, 3);
        Deliver();
    }
    while (const std::optional<std::size_t> found = RecvBuffer.Find(terminator)) {
        RecvBuffer.Take(*found, 3).swap(ReplyText);
        if (!ReplyText.empty() || manualTextIsComing)
            Deliver();
    }
    if (CommandKind == Command::List) {
        ++PacketCount;
        MainForm.StatusBar2.Panels(4).SetText("Packets: " + std::to_string(PacketCount));
    } else {
        PacketCount = 0;
    }
}

void NewsSession::Deliver()
{
    // One list for each command: what a server sends behind it, or to nobody's question, is none.
    if (CommandKind == Command::List && ReplyState == Reply::Taken)
        HandOverList();
    else if (CommandKind == Command::Group || CommandKind == Command::Body || CommandKind == Command::Head)
        LastBody.swap(ReplyText);
    ReplyState = Reply::Finished;
    manualTextIsComing = false;
}

void NewsSession::HandOverList()
{
    // Filling the list lets events through, and with them this receiver, which empties ReplyText.
    const std::string groupText = std::move(ReplyText);
    delivering = true;
    Raise(GroupListArrived, groupText);
    delivering = false;
}
