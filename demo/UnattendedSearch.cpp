#include "demo/UnattendedSearch.h"

#include "demo/support/Screen.h"
#include "demo/support/TemporaryFolder.h"

#include <cstdio>
#include <map>

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

}

bool SearchUnattended(
    const DemoFolder& folder, const SamplePostings& postings, UnattendedDesktop& desktop, Camera& camera)
{
    int groupsHeld = 0;
    desktop.whileHeld = [&] {
        // The second group is over: something has been found, and more is to come.
        if (++groupsHeld == 2)
            camera.Take("7-during-a-search");
    };
    Click("cmdFindNow");
    desktop.whileHeld = nullptr;

    const bool asPosted = CompareStoredFiles(folder, postings);
    if (desktop.boxes > 0)
        std::printf("There were %d message boxes where there should be none.\n", desktop.boxes);
    return asPosted && desktop.boxes == 0;
}
