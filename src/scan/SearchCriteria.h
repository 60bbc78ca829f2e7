#pragma once

#include "session/NewsSession.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// What a search looks for: how the controls that say so depend on each other, and whether an article is wanted. The
// controls are read at each article, so that a change counts at once. A head is one block of text: no field of it is
// singled out but "Lines:".
class SearchCriteria {
public:
    SearchCriteria(frmTamarack& mainForm, NewsSession& session, Desktop& desktop);

    // Fetches the article's head, unless every article is wanted, and applies the tests that the options ask for.
    bool ArticleMatches(std::int32_t number);

private:
    void chkMaximumFiles_Click();
    void chkLimitPictures_Click();
    void WarnOfMultiPartMessages();

    std::vector<std::string> FilePatterns() const;
    bool PassesSizeTest(std::string_view headText) const;

    frmTamarack& MainForm;
    NewsSession& Session;
    Desktop& desktop;
};
