#pragma once

#include "platform/Desktop.h"

#include <functional>

// The desktop of a search that nobody watches. A message box would wait for ever, and there should be none: it is told
// on the output and answered with its first button. The holds between two groups take no time.
class UnattendedDesktop : public Desktop {
public:
    int boxes = 0; // message boxes so far

    // Called instead of a hold.
    std::function<void()> whileHeld;

    // Called before a question of safety, which then comes up as it does for a user; this has to see to its end.
    std::function<void()> whileAsked;

    MessageAnswer MsgBox(std::string_view text, std::string_view title, MessageButtons buttons) override;
    bool Ask(std::string_view text, std::string_view title, const std::function<bool()>& isWanted) override;
    void Sleep(std::chrono::milliseconds duration) override;
    bool ShellOpen(const std::string& address) override;
};
