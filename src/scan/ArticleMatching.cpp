#include "scan/ArticleMatching.h"

#include "base/Text.h"
#include "platform/Events.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace {

// The entries between the semicolons, without blanks at their ends. A semicolon at the very end adds no entry; an
// empty entry elsewhere stays, and is found in every head.
std::vector<std::string> Split(std::string_view patterns)
{
    std::vector<std::string> entries;
    while (!patterns.empty()) {
        const std::size_t end = patterns.find(';');
        entries.emplace_back(Trim(patterns.substr(0, end)));
        if (end == std::string_view::npos)
            break;
        patterns.remove_prefix(end + 1);
    }
    return entries;
}

}

ArticleMatching::ArticleMatching(frmTamarack& mainForm, NewsSession& session, const SearchCriteria& newCriteria)
    : MainForm(mainForm)
    , Session(session)
    , criteria(newCriteria)
{
}

bool ArticleMatching::ArticleMatches(std::int32_t number)
{
    DoEvents();
    const std::vector<std::string> patternList = Split(criteria.FilePatterns);
    if (MainForm.chkAllArticles.Value())
        return true;
    const std::string headText = Session.CmdHead(number);
    if (MainForm.chkSingleParts.Value() && headText.find("1/1") == std::string::npos
        && headText.find("01/01") == std::string::npos)
        return false;
    if (!PassesSizeTest(headText))
        return false;
    return std::any_of(patternList.begin(), patternList.end(),
        [&](const std::string& entry) { return FindIgnoringCase(headText, entry) != std::string::npos; });
}

bool ArticleMatching::PassesSizeTest(std::string_view headText) const
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
