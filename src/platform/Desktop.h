#pragma once

#include <chrono>
#include <string>
#include <string_view>

enum class MessageButtons { Ok, OkCancel, YesNo };
enum class MessageAnswer { Ok, Cancel, Yes, No };

// The few things that reach beyond the program's own windows, so that a test can answer for the user. The functions
// here do the real thing.
class Desktop {
public:
    virtual ~Desktop();

    // Shows a modal message box and gives the button that closed it. Escape and the box's close button count as Ok
    // where there is nothing else, as Cancel and as No.
    virtual MessageAnswer MsgBox(
        std::string_view text, std::string_view title, MessageButtons buttons = MessageButtons::Ok);

    // Blocks the thread; no event is delivered. The windows are painted before, so that a text set just now can be
    // read.
    virtual void Sleep(std::chrono::milliseconds duration);

    // Hands a document or web address to the system's opener. False if there is none, or if it has failed within a
    // second, which is how long this waits for it; no event is delivered.
    [[nodiscard]] virtual bool ShellOpen(const std::string& address);

    // Ends the process at once, with everything that it has open, and without an unload of any form.
    virtual void EndProgram();
};

// The address under which a file of this machine can be handed to ShellOpen.
std::string AddressOfFile(const std::string& path);
