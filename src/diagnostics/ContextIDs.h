#pragma once

#include "platform/Desktop.h"
#include "platform/HelpPages.h"

#include <memory>
#include <string>
#include <vector>

struct frmHelp;

// The program's help: a window of its own on the help file. Topics are known by number.
class ContextIDs {
public:
    static constexpr const char* helpFileName = "Tamarack.hlp";

    explicit ContextIDs(Desktop& desktop);
    ~ContextIDs();

    // Takes the directory of the help file, and answers the F1 key from now on.
    void HelpInit(const std::string& directory);

    // Opens the help at a topic, or at its contents. A help file that cannot be opened is told in a message box.
    void HelpContext(int number);
    void HelpContents();

    // Closes the help.
    void HelpQuit();

private:
    bool Show();
    void Bind();
    void Form_Resize();
    void cmdSearch_Click();
    void lstFound_Click();

    Desktop& desktop;
    std::string HelpFile;
    std::unique_ptr<frmHelp> form;
    std::vector<HelpPages::Page> found; // the rows of lstFound
};
