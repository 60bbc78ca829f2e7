#include "demo/UnattendedSearch.h"

#include "demo/support/Screen.h"
#include "demo/support/TemporaryFolder.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <set>
#include <system_error>

namespace {

void Print(const char* verdict, const std::string& file, std::size_t size)
{
    std::printf("%-12s %8zu bytes  %s\n", verdict, size, file.c_str());
}

bool CompareStoredFiles(const DemoFolder& folder, const SamplePostings& postings)
{
    std::map<std::string, const std::string*> expected;
    for (const ExpectedFile& file : postings.expected)
        expected[file.group + "/" + file.name] = &file.bytes;

    std::size_t asPosted = 0;
    std::size_t others = 0;
    for (const std::string& file : folder.StoredFiles()) {
        const std::string bytes = ContentOf(folder.Destination() + file);
        const auto wanted = expected.find(file);
        const bool equal = wanted != expected.end() && *wanted->second == bytes;
        Print(equal ? "as posted" : wanted == expected.end() ? "UNEXPECTED" : "DIFFERENT", file, bytes.size());
        ++(equal ? asPosted : others);
        if (wanted != expected.end())
            expected.erase(wanted);
    }
    for (const auto& [file, bytes] : expected)
        Print("MISSING", file, bytes->size());

    std::size_t articles = 0;
    for (const SampleGroup& group : postings.groups)
        articles += group.articles.size();
    std::printf("\n%zu articles in %zu groups: %zu files stored as posted, %zu others, %zu missing.\n"
                "They are in %s\n",
        articles, postings.groupsToSearch.size(), asPosted, others, expected.size(), folder.Destination().c_str());
    return others == 0 && expected.empty();
}

// Takes pictures of the windows to a directory.
struct Camera {
    UnattendedDesktop& desktop;
    const std::string directory;

    bool Take(const std::string& name, const std::string& window = "frmTamarack") const
    {
        const std::string path = directory + name + ".png";
        desktop.PaintWindows();
        const bool taken = Screenshot(path, window);
        std::printf("%s %s\n", taken ? "screenshot" : "CANNOT WRITE", path.c_str());
        return taken;
    }
};

bool TakePicturesOfTabs(const Camera& camera)
{
    bool taken = true;
    const char* const tabs[] = {"1-name-and-location", "2-advanced-filtering", "3-server-setup"};
    for (int tab = 0; tab < 3; ++tab) {
        SelectTab("SSTMain", tab);
        taken = camera.Take(tabs[tab]) && taken;
    }
    const char* const groupTabs[] = {"4-selected-groups", "5-filtered-groups", "6-all-groups"};
    SelectTab("SSTMain", 3);
    for (int tab = 0; tab < 3; ++tab) {
        SelectTab("SSTab1", tab);
        taken = camera.Take(groupTabs[tab]) && taken;
    }
    return taken;
}

// The newest picture in the viewer, and a slide show of one group that has come round to its first pane.
bool ShowPictures(const Camera& camera, const std::string& group)
{
    Click("frmTamarack/Command2(0)");
    bool taken = camera.Take("8-viewer", "frmShowPicture");

    ChooseMenu("mnuSlideShow");
    const std::vector<std::string> rows = RowsOf("Dir1");
    ClickRow("Dir1", static_cast<int>(std::find(rows.begin(), rows.end(), group) - rows.begin()));
    TypeInto("frmSlideShow/txtDelay", "20");
    Check("chkOptions(0)", true);
    Click("frmSlideShow/Command1(0)");
    int shown = 0;
    std::string last;
    taken = Until([&] {
        const std::string pane = PanelText("frmSlideShow/StatusBar1", 2);
        shown += pane != last && pane.starts_with("Pane: ");
        last = pane;
        return shown > 6;
    }) && taken;
    taken = camera.Take("9-slide-show", "frmSlideShow") && taken;
    Click("frmSlideShow/Command1(1)");
    return taken;
}

}

bool SearchUnattended(const DemoFolder& folder, const SamplePostings& postings, UnattendedDesktop& desktop,
    const std::string& screenshots)
{
    std::error_code error;
    std::filesystem::create_directories(screenshots, error);

    const Camera camera{desktop, screenshots};
    bool pictureTaken = true;
    int groupsHeld = 0;
    desktop.whileHeld = [&] {
        // The second group is over: something has been found, and more is to come.
        if (++groupsHeld == 2)
            pictureTaken = camera.Take("7-during-a-search");
    };
    Click("cmdFindNow");
    desktop.whileHeld = nullptr;

    const bool asPosted = CompareStoredFiles(folder, postings);
    const bool tabsTaken = TakePicturesOfTabs(camera);
    const bool picturesShown = ShowPictures(camera, postings.groupsToSearch.front());
    if (desktop.boxes > 0)
        std::printf("There were %d message boxes where there should be none.\n", desktop.boxes);
    return asPosted && pictureTaken && tabsTaken && picturesShown && desktop.boxes == 0;
}
