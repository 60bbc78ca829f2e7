#include "tests/support/TestDesktop.h"

MessageAnswer TestDesktop::MsgBox(std::string_view text, std::string_view title, MessageButtons buttons)
{
    const Box box{std::string(text), std::string(title), buttons};
    boxes.push_back(box);
    if (whileBoxIsUp)
        whileBoxIsUp(box);
    if (answers.empty())
        return buttons == MessageButtons::YesNo ? MessageAnswer::Yes : MessageAnswer::Ok;
    const MessageAnswer answer = answers.front();
    answers.pop_front();
    return answer;
}

void TestDesktop::Sleep(std::chrono::milliseconds duration)
{
    sleeps.push_back(duration);
    if (whileAsleep)
        whileAsleep(duration);
}

bool TestDesktop::ShellOpen(const std::string& address)
{
    opened.push_back(address);
    return hasOpener;
}

void TestDesktop::EndProgram()
{
    ++programEnds;
    if (atEndProgram)
        atEndProgram();
}

std::vector<std::string> TestDesktop::BoxTitles() const
{
    std::vector<std::string> titles;
    for (const Box& box : boxes)
        titles.push_back(box.title);
    return titles;
}
