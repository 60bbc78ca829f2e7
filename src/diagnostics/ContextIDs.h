#pragma once

#include "platform/Desktop.h"

#include <memory>
#include <string>

struct frmHelp;

// The program's help: a window of its own on the help file. Topics are known by number.
class ContextIDs {
public:
    static constexpr const char* helpFileName = "Tamarack.hlp";

    // Answers the F1 key as long as it lives. A separator stands at the end of the help file's directory.
    ContextIDs(Desktop& desktop, const std::string& directory);
    ~ContextIDs();

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
    const std::string HelpFile;
    std::unique_ptr<frmHelp> form;
};
