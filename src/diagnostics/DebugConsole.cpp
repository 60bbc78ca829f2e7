#include "diagnostics/DebugConsole.h"

#include "base/Files.h"
#include "platform/Buttons.h"
#include "platform/Form.h"
#include "platform/TextArea.h"
#include "platform/TextBox.h"

#include <algorithm>

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

DebugConsole::DebugConsole(NewsSession& session, Desktop& newDesktop)
    : Session(session)
    , desktop(newDesktop)
{
    Session.DebugLog = [this](const std::string& text) { DebugLog(text); };
    Session.UseChanged = [this](bool inUse) {
        if (IsLoaded())
            EnableCommands(!inUse);
    };
}

DebugConsole::~DebugConsole() = default;

void DebugConsole::Open() { Loaded().BringToFront(); }

void DebugConsole::Bind()
{
    form->Resize = [this] { Form_Resize(); };
    form->cmdCmd[0].Click = [this] { cmdCmd_Click(0); };
    form->cmdCmd[1].Click = [this] { cmdCmd_Click(1); };
    form->cmdReset.Click = [this] { cmdReset_Click(); };
}

void DebugConsole::Form_Load()
{
    form->DebugWindow.Clear();
    form->TxtManual.SetText("");
    form->txtLogFile.SetText(Session.AppDir + "debug.log");
    EnableCommands(!Session.InUse());
    Session.DebugOn = true;
}

void DebugConsole::Form_Unload() { Session.DebugOn = false; }

void DebugConsole::Form_Resize()
{
    const double width = form->ScaleWidth();
    const double height = form->ScaleHeight();
    if (width - 60 <= 10 || height - 500 <= 10)
        return;
    form->DebugWindow.SetWidth(width - 60);
    form->DebugWindow.SetHeight(height - 900);
    form->txtLogFile.SetWidth(width - 60);
    for (CommandButton* button : {&form->cmdCmd[0], &form->cmdCmd[1], &form->cmdReset})
        button->SetTop(height - 350);
    form->TxtManual.SetTop(height - 300);
}

void DebugConsole::DebugLog(const std::string& text)
{
    // In characters; a line end, CR LF, is one of them. A longer text is no line that anybody reads, and would take the
    // area minutes to set: of that, only the file gets all.
    constexpr int longest = 32000;
    constexpr int cut = 10000;
    constexpr int most = 64000;
    if (const int length = form->DebugWindow.Length(); length > longest)
        form->DebugWindow.Cut(1, std::max(cut, length - most));
    form->DebugWindow.Append(text, longest);
    const std::string logFile = form->txtLogFile.Text();
    if (const std::error_code error = AppendToFile(logFile, text))
        desktop.MsgBox("Tamarack\r\n" + logFile + ": " + error.message(), "Access Error");
}

void DebugConsole::EnableCommands(bool enabled)
{
    for (CommandButton& button : form->cmdCmd)
        button.SetEnabled(enabled);
}

void DebugConsole::cmdCmd_Click(int index)
{
    const SessionUse use(Session);
    if (!use)
        return;
    (void)Session.TcpConnect();
    Session.CmdManual(index == 0 ? "help" : form->TxtManual.Text());
}

// The next line makes a new one.
void DebugConsole::cmdReset_Click() { (void)DeleteFile(form->txtLogFile.Text()); }
