#include "demo/support/UnattendedDesktop.h"

#include <cstdio>

MessageAnswer UnattendedDesktop::MsgBox(std::string_view text, std::string_view title, MessageButtons buttons)
{
    ++boxes;
    std::printf("message box \"%.*s\": %.*s\n", static_cast<int>(title.size()), title.data(),
        static_cast<int>(text.size()), text.data());
    return buttons == MessageButtons::YesNo ? MessageAnswer::Yes : MessageAnswer::Ok;
}

bool UnattendedDesktop::Ask(std::string_view text, std::string_view title, const std::function<bool()>& isWanted)
{
    if (whileAsked) {
        whileAsked();
        return Desktop::Ask(text, title, isWanted);
    }
    return MsgBox(text, title, MessageButtons::YesNo) == MessageAnswer::Yes;
}

void UnattendedDesktop::Sleep(std::chrono::milliseconds)
{
    Desktop::Sleep(std::chrono::milliseconds::zero()); // brings the windows up to date
    if (whileHeld)
        whileHeld();
}

bool UnattendedDesktop::ShellOpen(const std::string& address)
{
    std::printf("would open %s\n", address.c_str());
    return true;
}
