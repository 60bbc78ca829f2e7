#pragma once

#include "forms/frmTamarack.h"
#include "platform/Desktop.h"
#include "platform/Settings.h"
#include "session/NewsSession.h"

struct frmNewsServer;

// "Add News Server": takes a name into cboNewsServer and the settings, and makes the server the current one.
class NewServer {
public:
    // `freeList` is the address of the page that "Show Free List" opens.
    NewServer(frmTamarack& mainForm, NewsSession& session, Settings& settings, Desktop& desktop, std::string freeList);

    // Shows the dialog and returns when the user has done with it.
    void Show();

    // Shows a topic of the help, for a system that cannot open the page.
    std::function<void(int topic)> HelpContext;

private:
    void Form_Load(frmNewsServer& form);
    void Form_Unload(frmNewsServer& form);
    void cmdSave_Click(frmNewsServer& form);
    void CmdFreeList_Click();

    frmTamarack& MainForm;
    NewsSession& Session;
    Settings& settings;
    Desktop& desktop;
    const std::string freeList;
};
