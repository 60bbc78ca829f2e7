#pragma once

#include "demo/DemoFolder.h"
#include "demo/sample/SampleArticles.h"
#include "demo/support/UnattendedDesktop.h"

#include <string>

// One whole search with nobody in front of the screen, on the program's own window.
class UnattendedSearch {
public:
    // `screenshots` is the directory for the pictures of the window.
    UnattendedSearch(
        const DemoFolder& folder, const SamplePostings& postings, UnattendedDesktop& desktop, std::string screenshots);

    // Presses "Find Now", prints what has been stored and compares it with what was posted. True if all is as posted
    // and nothing else is there.
    bool Run();

private:
    bool CompareStoredFiles() const;
    bool TakePicture(const std::string& name, const std::string& window = "frmTamarack") const;
    bool TakePicturesOfTabs() const;
    bool ShowPictures() const;

    const DemoFolder& folder;
    const SamplePostings& postings;
    UnattendedDesktop& desktop;
    const std::string screenshots;
};
