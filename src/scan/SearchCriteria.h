#pragma once

#include "forms/frmTamarack.h"
#include "platform/Desktop.h"

#include <string>

// What a search looks for: how the controls that say so depend on each other, and the name patterns that follow them.
// The search reads the controls at each article, so that a change counts at once.
class SearchCriteria {
public:
    SearchCriteria(frmTamarack& mainForm, Desktop& desktop);

    // Rebuilds FilePatterns from the controls.
    void BuildFilePatterns();

    // Parts of names, separated by ";".
    std::string FilePatterns;

private:
    void chkMaximumFiles_Click();
    void chkLimitPictures_Click();
    void WarnOfMultiPartMessages();

    frmTamarack& MainForm;
    Desktop& desktop;
};
