#pragma once

#include "platform/Buttons.h"
#include "platform/Form.h"
#include "platform/TextArea.h"
#include "platform/TextBox.h"

// What goes over the wire, and a command by hand.
struct frmDebug : Form {
    frmDebug()
        : Form("frmDebug", "Debug Window", {.clientWidth = 6900, .clientHeight = 5400, .border = BorderStyle::Sizable})
    {
        SetFallbackTopic(1080);
        txtLogFile.SetAccessibleName("Log file");
        DebugWindow.SetAccessibleName("Log");
        TxtManual.SetAccessibleName("Command");
        cmdCmd[0].SetToolTip("Ask the server which commands it knows");
        cmdCmd[1].SetToolTip("Send the command in the field");
        cmdReset.SetToolTip("Delete the log file");
        TxtManual.EnterPresses(cmdCmd[1]);
    }

    TextBox txtLogFile{*this, "txtLogFile", {30, 30, 6840, 330}};
    TextArea DebugWindow{*this, "DebugWindow", {30, 390, 6840, 4500}, TextAreaStyle::Log}; // the log
    TextBox TxtManual{*this, "TxtManual", {1395, 5100, 2400, 285}, {.hint = "Command"}};
    CommandButton cmdCmd[2] = {{*this, "cmdCmd(0)", "Send Help", {30, 5050, 1320, 330}},
        {*this, "cmdCmd(1)", "Manual Cmd", {3840, 5050, 1485, 330}}};
    CommandButton cmdReset{*this, "cmdReset", "Reset Log", {5370, 5050, 1500, 330}};
};
