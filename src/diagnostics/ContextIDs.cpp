#include "diagnostics/ContextIDs.h"

#include "base/Files.h"
#include "diagnostics/frmHelp.h"

#include <algorithm>

namespace {

// Between the controls and the edges of the window, in twips.
constexpr double margin = 60;

}

ContextIDs::ContextIDs(Desktop& newDesktop)
    : desktop(newDesktop)
{
}

ContextIDs::~ContextIDs() { Form::HelpKey = nullptr; }

void ContextIDs::HelpInit(const std::string& directory)
{
    HelpFile = WithSeparator(directory) + helpFileName;
    Form::HelpKey = [this](int topic) { HelpContext(topic); };
}

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
