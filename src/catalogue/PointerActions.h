#pragma once

#include "catalogue/PointerFile.h"
#include "session/NewsSession.h"

// "Set Pointer" and "Reset Group": how far the highlighted group has been read, changed by hand.
class PointerActions {
public:
    PointerActions(frmTamarack& mainForm, NewsSession& session, Desktop& desktop);

private:
    void Command4_Click();
    void cmdResetGroup_Click();

    // The group in the row with the focus.
    std::string Group() const;
    PointerFile Pointers() const;

    frmTamarack& MainForm;
    NewsSession& Session;
    Desktop& desktop;
};
