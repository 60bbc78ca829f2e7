#pragma once

#include "platform/Desktop.h"

#include <chrono>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

// Stands for the user and the desktop in a test: answers message boxes at once, lets blocking sleeps pass in no
// time, opens nothing and ends nothing, and keeps a record of all of it.
class TestDesktop : public Desktop {
public:
    struct Box {
        std::string text;
        std::string title;
        MessageButtons buttons;
    };

    std::vector<Box> boxes;
    std::deque<MessageAnswer> answers; // one for each box to come; when they are used up, the box's first button
    std::vector<std::chrono::milliseconds> sleeps;
    std::vector<std::string> opened; // addresses handed to ShellOpen
    bool showsQuestions = false; // Ask() shows its box, for a test that works it
    bool hasOpener = true; // without one, nothing can be opened
    int programEnds = 0; // calls of EndProgram

    // Called while a box is up and while a sleep would last, for a test that looks at the screen just then.
    std::function<void(const Box&)> whileBoxIsUp;
    std::function<void(std::chrono::milliseconds)> whileAsleep;

    // Called by EndProgram, which in a test comes back to its caller.
    std::function<void()> atEndProgram;

    MessageAnswer MsgBox(
        std::string_view text, std::string_view title, MessageButtons buttons = MessageButtons::Ok) override
    {
        boxes.push_back({std::string(text), std::string(title), buttons});
        if (whileBoxIsUp)
            whileBoxIsUp(Box(boxes.back()));
        MessageAnswer answer = buttons == MessageButtons::YesNo ? MessageAnswer::Yes : MessageAnswer::Ok;
        if (!answers.empty()) {
            answer = answers.front();
            answers.pop_front();
        }
        return answer;
    }

    // Unless it is shown, as a box of Yes and No; when the answers are used up, its default.
    bool Ask(std::string_view text, std::string_view title, const std::function<bool()>& isWanted) override
    {
        if (showsQuestions)
            return Desktop::Ask(text, title, isWanted);
        if (!isWanted())
            return false;
        if (answers.empty())
            answers.push_back(MessageAnswer::No);
        return MsgBox(text, title, MessageButtons::YesNo) == MessageAnswer::Yes && isWanted();
    }

    void Sleep(std::chrono::milliseconds duration) override
    {
        sleeps.push_back(duration);
        if (whileAsleep)
            whileAsleep(duration);
    }

    bool ShellOpen(const std::string& address) override
    {
        opened.push_back(address);
        return hasOpener;
    }

    void EndProgram() override
    {
        ++programEnds;
        if (atEndProgram)
            atEndProgram();
    }

    // The titles of the boxes so far, for a comparison in one line.
    std::vector<std::string> BoxTitles() const
    {
        std::vector<std::string> titles;
        for (const Box& box : boxes)
            titles.push_back(box.title);
        return titles;
    }
};
