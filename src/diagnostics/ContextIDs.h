#pragma once

#include "forms/frmTamarack.h"
#include "platform/Desktop.h"

#include <memory>
#include <string>

struct frmHelp;

// The program's help: a window of its own on the help file. Topics are known by number.
class ContextIDs {
public:
    explicit ContextIDs(Desktop& desktop);
    ~ContextIDs();

    // Takes the form whose controls have topics for the F1 key, and the directory of the help file.
    void HelpInit(frmTamarack& mainForm, const std::string& directory);

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
};
