#include "diagnostics/ContextIDs.h"

#include "platform/Buttons.h"
#include "platform/Form.h"
#include "platform/HelpPages.h"
#include "platform/Label.h"
#include "platform/ListBox.h"
#include "platform/TextBox.h"

#include <algorithm>

// The help, with a search through its pages.
struct frmHelp : Form {
    frmHelp()
        : Form("frmHelp", "Tamarack Help", {.clientWidth = 9600, .clientHeight = 7200, .border = BorderStyle::Sizable})
    {
        lblSearch.SetBuddy(txtSearch);
        lstFound.SetAccessibleName("Pages found");
        cmdBack.SetShortcut("Alt+Left");
        SetDialogButtons(cmdSearch, cmdClose);
    }

    CommandButton cmdContents{*this, "cmdContents", "Contents", {60, 60, 1200, 345}};
    CommandButton cmdBack{*this, "cmdBack", "Back", {1320, 60, 900, 345}};
    Label lblSearch{*this, "lblSearch", "&Search:", {2340, 60, 810, 345}};
    TextBox txtSearch{*this, "txtSearch", {3180, 60, 3600, 345}, {.hint = "Words to look for"}};
    CommandButton cmdSearch{*this, "cmdSearch", "Search", {6840, 60, 1080, 345}};
    CommandButton cmdClose{*this, "cmdClose", "Close", {8460, 60, 1080, 345}};
    ListBox lstFound{*this, "lstFound", {60, 465, 9480, 1200}};
    HelpPages Pages{*this, "Pages", {60, 465, 9480, 6390}};
    // The help file and, for a topic, its number.
    Label lblTopic{*this, "lblTopic", "", {60, 6900, 9480, 270}};
};

namespace {

// Between the controls and the edges of the window, in twips.
constexpr double margin = 60;

}

ContextIDs::ContextIDs(Desktop& newDesktop, const std::string& directory)
    : desktop(newDesktop)
    , HelpFile(directory + helpFileName)
{
    Form::HelpKey = [this](int topic) { HelpContext(topic); };
}

ContextIDs::~ContextIDs() { Form::HelpKey = nullptr; }

void ContextIDs::HelpContext(int number)
{
    if (!Show())
        return;
    if (form->Pages.ShowTopic(number))
        form->lblTopic.SetCaption(HelpFile + "  " + std::to_string(number));
    else
        HelpContents();
}

void ContextIDs::HelpContents()
{
    if (Show())
        form->Pages.ShowContents();
}

// A message box may stand over the window, and still wait further down for its answer, so that the window has to stay.
void ContextIDs::HelpQuit()
{
    if (form)
        form->SetVisible(false);
}

// Each opening of the window reads the file anew, since it may have been put right.
bool ContextIDs::Show()
{
    if (!form) {
        form = std::make_unique<frmHelp>();
        Bind();
    }
    if (!form->Visible()) {
        if (!form->Pages.Open(HelpFile)) {
            desktop.MsgBox("The help file cannot be opened:\r\n" + HelpFile
                    + "\r\nIt is missing or damaged. Installing the program again brings it back.",
                "Help");
            return false;
        }
        form->lstFound.Clear();
        form->lstFound.SetVisible(false);
        form->txtSearch.SetText("");
        Form_Resize();
    }
    form->BringToFront();
    return true;
}

void ContextIDs::Bind()
{
    form->Resize = [this] { Form_Resize(); };
    form->cmdContents.Click = [this] { HelpContents(); };
    form->cmdBack.Click = [this] { form->Pages.GoBack(); };
    form->cmdSearch.Click = [this] { cmdSearch_Click(); };
    form->cmdClose.Click = [this] { form->SetVisible(false); };
    form->lstFound.Click = [this] { form->Pages.Show(form->lstFound.List(form->lstFound.ListIndex())); };
    form->Pages.PageChange = [this] { form->lblTopic.SetCaption(HelpFile); };
}

void ContextIDs::Form_Resize()
{
    const double width = form->ScaleWidth() - 2 * margin;
    const double height = form->ScaleHeight();
    const double labelHeight = form->lblTopic.Height();
    const double top
        = form->lstFound.Visible() ? form->lstFound.Top() + form->lstFound.Height() + margin : form->lstFound.Top();
    if (width < 1000 || height < top + 1000)
        return;
    form->cmdClose.SetLeft(
        std::max(margin + width - form->cmdClose.Width(), form->cmdSearch.Left() + form->cmdSearch.Width() + margin));
    form->lstFound.SetWidth(width);
    form->lblTopic.Move({margin, height - labelHeight - margin / 2, width, labelHeight});
    form->Pages.Move({margin, top, width, height - top - labelHeight - margin});
}

void ContextIDs::cmdSearch_Click()
{
    const std::string text = form->txtSearch.Text();
    std::vector<std::string> titles = form->Pages.Search(text);
    if (titles.empty())
        titles.push_back("No page holds \"" + text + "\".");
    form->lstFound.Clear();
    form->lstFound.AddItems(titles);
    form->lstFound.SetVisible(true);
    Form_Resize();
}
