#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

class Notification;

enum class MessageButtons { Ok, OkCancel, YesNo };
enum class MessageAnswer { Ok, Cancel, Yes, No };

enum class KeptAwake { Computer, Screen };

// The few things that reach beyond the program's own windows, so that a test can answer for the user. The functions
// here do the real thing. Each service of the desktop has its own file.
class Desktop {
public:
    virtual ~Desktop() = default;

    // Shows a modal message box and gives the button that closed it. Escape and the box's close button count as Ok
    // where there is nothing else, as Cancel and as No. Until then no window of the program but the box takes keys and
    // clicks; timers, the socket and a request to end the program go on, and their handlers run inside this call.
    virtual MessageAnswer MsgBox(
        std::string_view text, std::string_view title, MessageButtons buttons = MessageButtons::Ok);

    // Asks for a line of text. Nothing if the user would rather not.
    virtual std::optional<std::string> InputBox(std::string_view prompt, std::string_view title);

    // Asks a question of safety, with Yes and No, in a message box that blocks no window: whatever can be pressed while
    // nobody asks can be pressed now. Its default is No, and so are Escape and the box's close button. Lets events
    // through; as soon as `isWanted` is false, the box goes, and the answer is false.
    virtual bool Ask(std::string_view text, std::string_view title, const std::function<bool()>& isWanted);

    // Blocks the thread; no event is delivered. The windows are painted before, so that a text set just now can be
    // read. A timer that is due meanwhile ticks once, afterwards; what the server sends waits.
    virtual void Sleep(std::chrono::milliseconds duration);

    // Hands a document or web address to the system's opener. False if there is none, or if it has failed within a
    // second, which is how long this waits for it; no event is delivered.
    [[nodiscard]] virtual bool ShellOpen(const std::string& address);

    // The person is at another program: no window of this one is active.
    virtual bool IsInBackground() const;

    // What follows needs a service of the desktop. Where that is missing, or does not answer, nothing happens, and
    // nothing waits for it.

    // Keeps the computer from suspending by itself, or the screen from blanking, as long as the result lives and this
    // process runs. People read the reason in lists of the desktop.
    [[nodiscard]] virtual std::shared_ptr<void> KeepAwake(KeptAwake what, std::string_view reason);

    // Shows a note, in place of an earlier one that is still there.
    virtual void Notify(
        std::string_view title, std::string_view text, std::string_view button, std::function<void()> pressed);

    // How far a search is, in the program's icon: from 0 to 1, or less than 0 for nothing.
    virtual void ShowProgress(double share);

    // Ends the process at once, from wherever it is called, with everything that it has open: no form is unloaded, no
    // event delivered, no destructor run, no buffered file written out. What counts is on the disk before: settings are
    // written out after each change. The helpers that read pictures end with their connection.
    virtual void EndProgram();

private:
    std::shared_ptr<Notification> notification; // from the first one on
};

// The address under which a file of this machine can be handed to ShellOpen.
std::string AddressOfFile(const std::string& path);
