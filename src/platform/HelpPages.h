#pragma once

#include "platform/Control.h"

#include <string>
#include <vector>

class QListWidget;

// The pages of a help file, one at a time, and a list of them at the left, which marks the one that is shown. It shows
// nothing but what is in the file.
class HelpPages : public Control {
public:
    HelpPages(Container& container, std::string_view name, const Place& place);

    // Reads the file. False, and no change, if it is missing, cut short or no help file.
    [[nodiscard]] bool Open(const std::string& helpFile);

    // The place that has this number. False, and no change, if there is none.
    [[nodiscard]] bool ShowTopic(int number);

    // The first page.
    void ShowContents();

    // The page that was shown before this one.
    void GoBack();

    // The titles of the pages that hold this text, letters of either case.
    std::vector<std::string> Search(std::string_view text) const;

    // The page of this title. No change if there is none.
    void Show(std::string_view title);

    // Another page is shown, by whatever way.
    std::function<void()> PageChange;

private:
    class Browser;

    // Both owned by the widget.
    QListWidget* const contents;
    Browser* const browser;
};
