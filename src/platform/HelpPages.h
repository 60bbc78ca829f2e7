#pragma once

#include "platform/Control.h"

#include <memory>
#include <string>
#include <vector>

// The pages of a compressed help file (Qt Help's format), with their table of contents beside them, which marks the
// one that is shown. It shows nothing but what is in the file.
class HelpPages : public Control {
public:
    HelpPages(Container& container, std::string_view name, const Place& place);
    ~HelpPages();

    // False if the file is missing or is no help file; nothing is shown then.
    [[nodiscard]] bool Open(const std::string& helpFile);

    // Lets go of the help file, and of what has been noted of it on disk. Only Open may follow.
    void Close();

    // The page that has this number for its identifier. False, and no change, if there is none.
    [[nodiscard]] bool ShowTopic(int number);

    // The first page.
    void ShowContents();

    // The page that was shown before this one.
    void GoBack();

    struct Page {
        std::string title;
        std::string address;
    };

    // The pages that hold this text, letters of either case.
    std::vector<Page> Search(std::string_view text) const;
    void Show(const Page& page);

    // Another page is shown, by whatever way.
    std::function<void()> PageChange;

private:
    struct Parts;

    std::unique_ptr<Parts> parts;
};
