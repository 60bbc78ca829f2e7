#pragma once

#include "platform/Desktop.h"
#include "session/NewsSession.h"

#include <memory>

struct frmDebug;

// The debug window, frmDebug: while it is open, all traffic with the server goes into its text area and into a log
// file, passwords included. As with the viewer, the window is kept when it is closed, and each opening finds it as new.
class DebugConsole {
public:
    DebugConsole(NewsSession& session, Desktop& desktop);
    ~DebugConsole();

    // Shows the window and starts the log.
    void Open();

private:
    void Form_Load();
    void Form_Resize();
    void Form_Unload();
    void EnableCommands(bool enabled);
    void cmdCmd_Click(int index);
    void cmdReset_Click();

    void DebugLog(const std::string& text);

    NewsSession& Session;
    Desktop& desktop;
    std::unique_ptr<frmDebug> form;
};
