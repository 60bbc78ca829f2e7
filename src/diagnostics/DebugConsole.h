#pragma once

#include "forms/KeptForm.h"
#include "session/NewsSession.h"

struct frmDebug;

// The debug window, frmDebug: while it is open, all traffic with the server goes into its text area and into a log
// file, passwords included, and its user can send commands by hand. It takes DebugLog and UseChanged of the session.
class DebugConsole : KeptForm<frmDebug> {
public:
    DebugConsole(NewsSession& session, Desktop& desktop);
    ~DebugConsole();

    // Shows the window, in front of the others, and starts the log.
    void Open();

private:
    void Bind() override;
    void Form_Load() override;
    void Form_Unload() override;
    void Form_Resize();
    void EnableCommands(bool enabled);
    void cmdCmd_Click(int index);
    void cmdReset_Click();

    // A log file that cannot be written is told in a message box, which lets events through.
    void DebugLog(const std::string& text);

    NewsSession& Session;
    Desktop& desktop;
};
