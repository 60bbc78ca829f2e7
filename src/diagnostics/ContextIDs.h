#pragma once

#include "platform/Desktop.h"

#include <memory>
#include <string>

struct frmHelp;

// The program's help: a window of its own on the help file. Topics are known by number.
class ContextIDs {
public:
    static constexpr const char* helpFileName = "Tamarack.hlp";

    explicit ContextIDs(Desktop& desktop);
    ~ContextIDs();

    // Takes the directory of the help file, and answers the F1 key from now on.
    void HelpInit(const std::string& directory);

    // Opens the help at a topic, or at its contents, also for a number that is no topic. A help file that cannot be
    // opened is told in a message box.
    void HelpContext(int number);
    void HelpContents();

    // Closes the help.
    void HelpQuit();

private:
    bool Show();
    void Bind();
    void Form_Resize();
    void cmdSearch_Click();

    Desktop& desktop;
    std::string HelpFile;
    std::unique_ptr<frmHelp> form;
};
