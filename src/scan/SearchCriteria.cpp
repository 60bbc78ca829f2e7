#include "scan/SearchCriteria.h"

#include "base/Text.h"
#include "platform/Events.h"

#include <algorithm>
#include <cmath>
#include <limits>

SearchCriteria::SearchCriteria(frmTamarack& mainForm, NewsSession& session, Desktop& newDesktop)
    : MainForm(mainForm)
    , Session(session)
    , desktop(newDesktop)
{
    MainForm.chkMaximumFiles.Click = [this] { chkMaximumFiles_Click(); };
    MainForm.chkLimitPictures.Click = [this] { chkLimitPictures_Click(); };
    MainForm.chkAllArticles.Click = [this] { WarnOfMultiPartMessages(); };
    MainForm.chkAllCriteria.Click = [this] { WarnOfMultiPartMessages(); };
}

void SearchCriteria::chkMaximumFiles_Click()
{
    const bool limited = MainForm.chkMaximumFiles.Value() == 1;
    MainForm.txtMaxToDownload.SetEnabled(limited);
    MainForm.udMaxToDownload.SetEnabled(limited);
}

void SearchCriteria::chkLimitPictures_Click()
{
    const bool limited = MainForm.chkLimitPictures.Value() == 1;
    MainForm.txtLimitPictures.SetEnabled(limited);
    MainForm.udLimitPictures.SetEnabled(limited);
    MainForm.lblPerNewsGroup.SetEnabled(limited);
}

// Not at start-up, when the stored choice is brought back behind the scenes.
void SearchCriteria::WarnOfMultiPartMessages()
{
    if (MainForm.Visible() && !MainForm.chkSingleParts.Value())
        desktop.MsgBox("Currently the Tamarack is not able to\r\n"
                       "decode multi-part messages.  Therefore,\r\n"
                       "some attachments might not view correclty.",
            "Warning");
}

bool SearchCriteria::ArticleMatches(std::int32_t number)
{
    DoEvents();
    const std::vector<std::string> patternList = FilePatterns();
    if (MainForm.chkAllArticles.Value())
        return true;
    const std::string headText = Session.CmdHead(number);
    if (MainForm.chkSingleParts.Value() && headText.find("1/1") == std::string::npos
        && headText.find("01/01") == std::string::npos)
        return false;
    if (!PassesSizeTest(headText))
        return false;
    return std::any_of(patternList.begin(), patternList.end(),
        [&](const std::string& pattern) { return FindIgnoringCase(headText, pattern) != std::string::npos; });
}

// Parts of names: of the file types, and what stands between the semicolons of the field, without blanks at its ends. A
// semicolon at the very end adds none; an empty one elsewhere stays, and is found in every head.
std::vector<std::string> SearchCriteria::FilePatterns() const
{
    std::vector<std::string> patterns = TrimmedParts(MainForm.txtNamed.Text(), ';');
    const auto add = [&patterns](const CheckBox& fileType, const char* extension) {
        if (fileType.Value() == 1)
            patterns.emplace_back(extension);
    };
    add(MainForm.chkJPEGFiles, ".jpg");
    add(MainForm.chkBitMapFiles, ".bmp");
    add(MainForm.chkMPEGFiles, ".mpg");
    add(MainForm.chkGIFFiles, ".gif");
    return patterns;
}

bool SearchCriteria::PassesSizeTest(std::string_view headText) const
{
    constexpr std::string_view linesField = "\nLines:";
    constexpr std::size_t longestNumber = 10;
    const std::size_t found = FindIgnoringCase(headText, linesField);
    const std::string sizeIs = MainForm.cboSizeIs.Text();
    if (found == std::string_view::npos || sizeIs.empty())
        return true;
    constexpr double largest = std::numeric_limits<std::int32_t>::max();
    const std::string_view count = headText.substr(found + linesField.size(), longestNumber);
    const double articleLines = std::nearbyint(std::min(Val(count), largest));
    const double limit = Val(MainForm.txtKB.Text());
    return sizeIs == "At Least" ? limit <= articleLines : limit >= articleLines;
}
