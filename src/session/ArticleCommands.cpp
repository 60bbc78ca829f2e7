#include "base/Text.h"
#include "platform/Events.h"
#include "session/NewsSession.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

// Keywords are separated by blanks or tabs, and their case does not matter (RFC 3977, section 3.1).
bool NamesListGroup(std::string_view line)
{
    constexpr std::string_view keyword = "listgroup";
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    const std::string_view word = line.substr(0, line.find_first_of(" \t"));
    return word.size() == keyword.size() && FindIgnoringCase(word, keyword) == 0;
}

}

bool NewsSession::SendLine(std::string_view text)
{
    if (text.find_first_of("\r\n") != std::string_view::npos)
        return false;
    std::string line(text);
    line += "\r\n";
    MainForm.TCP1.SendData(line);
    Log("#" + line);
    return true;
}

bool NewsSession::Send(Command kind, const std::string& line)
{
    // To a server that is known to be gone there is nothing to say: its reply would be waited for in vain.
    if (MainForm.TCP1.State() != SocketState::Connected || MainForm.TCP1.EndIsComing())
        return false;
    const Reply stateBefore = std::exchange(ReplyState, Reply::Awaiting);
    const Command kindBefore = std::exchange(CommandKind, kind);
    if (!SendLine(line)) {
        ReplyState = stateBefore;
        CommandKind = kindBefore;
        return false;
    }
    // A stop that was asked for before the command is dropped here.
    StopFlag = false;
    return true;
}

bool NewsSession::CmdGroup(const std::string& name)
{
    if (!Send(Command::Group, "group " + name))
        return false;
    WaitWhile([this] { return ReplyState == Reply::Awaiting; });
    if (ReplyState == Reply::NoSuchGroup || ReplyState == Reply::NoGroupSelected) {
        desktop.MsgBox("The group you selected does not exist.\r\n" + name, "Invalid News Group");
        return false;
    }
    return true;
}

bool NewsSession::CmdNext()
{
    if (!Send(Command::Next, "next"))
        return false;
    while (ReplyState == Reply::Awaiting && !StopFlag)
        WaitForEvents();
    return ReplyState == Reply::Finished;
}

bool NewsSession::CmdStat(std::int32_t& number)
{
    for (;; ++number) {
        MainForm.SetCaption("Setting group pointers: " + std::to_string(number));
        DoEvents();
        if (MainForm.TCP1.State() != SocketState::Connected)
            return false;
        if (number < FirstArticle) {
            // The group command has left the server there already.
            number = FirstArticle;
            return true;
        }
        if (number > LastArticle || !Send(Command::Stat, "stat " + std::to_string(number)))
            return false;
        while (ReplyState == Reply::Awaiting && !StopFlag)
            WaitForEvents();
        if (ReplyState == Reply::Finished)
            return true;
        // Whatever else ended the wait, the next number is tried.
        if (number == std::numeric_limits<std::int32_t>::max())
            return false;
    }
}

std::string NewsSession::CmdHead(std::int32_t number)
{
    if (!Send(Command::Head, "head " + std::to_string(number)))
        return {};
    MainForm.Timer1.SetEnabled(true);
    while (ReplyState != Reply::Finished) {
        // A stop or a refusal in the middle of the watchdog's reconnect closes the new connection too.
        if (StopFlag) {
            TcpDisconnect();
            break;
        }
        if (HeadTimedOut)
            break;
        WaitForEvents();
    }
    if (HeadTimedOut) {
        HeadTimedOut = false;
        return {};
    }
    MainForm.Timer1.SetEnabled(false);
    // The line end that the last reply left behind stands before the first header.
    const std::size_t firstLineEnd = LastBody.find("\r\n");
    return firstLineEnd == std::string::npos ? LastBody : LastBody.substr(firstLineEnd + 2);
}

std::string NewsSession::CmdBody(std::int32_t number)
{
    if (!Send(Command::Body, "body " + std::to_string(number)))
        return {};
    WaitWhile([this] { return ReplyState != Reply::Finished; });
    return LastBody;
}

void NewsSession::CmdList()
{
    if (Send(Command::List, "list"))
        WaitWhile([this] { return ReplyState != Reply::Finished; });
}

void NewsSession::WaitWhile(const std::function<bool()>& isOpen)
{
    while (isOpen()) {
        if (StopFlag) {
            TcpDisconnect();
            return;
        }
        WaitForEvents();
    }
}

void NewsSession::CmdManual(const std::string& line)
{
    manualIsListGroup = NamesListGroup(line);
    if (!Send(Command::Manual, line))
        return;
    WaitWhile([this] { return ReplyState == Reply::Awaiting; });
}
