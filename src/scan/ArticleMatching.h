#pragma once

#include "scan/SearchCriteria.h"
#include "session/NewsSession.h"

#include <cstdint>

// Decides by an article's head whether its body is wanted. The head is one block of text: no field of it is singled
// out but "Lines:".
class ArticleMatching {
public:
    ArticleMatching(frmTamarack& mainForm, NewsSession& session, const SearchCriteria& criteria);

    // Fetches the head, unless every article is wanted, and applies the tests that the options ask for.
    bool ArticleMatches(std::int32_t number);

private:
    bool PassesSizeTest(std::string_view headText) const;

    frmTamarack& MainForm;
    NewsSession& Session;
    const SearchCriteria& criteria;
};
