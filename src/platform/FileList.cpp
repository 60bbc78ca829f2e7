#include "platform/FileList.h"

#include "base/Files.h"
#include "base/Text.h"

#include <algorithm>

FileList::FileList(
    Container& container, std::string_view name, const Place& place, std::initializer_list<std::string_view> newEndings)
    : ListBox(container, name, place, {.hint = "No files of these kinds here"})
    , endings(newEndings)
{
}

bool FileList::SetPath(const std::string& newPath)
{
    const auto names = NamesIn(newPath, EntryKind::File);
    if (!names)
        return false;
    const bool another = newPath != path;
    path = newPath;
    Fill(*names);
    if (another)
        Raise(PathChange);
    return true;
}

void FileList::Refresh() { Fill(NamesIn(path, EntryKind::File).value_or(std::vector<std::string>())); }

void FileList::Fill(const std::vector<std::string>& names)
{
    std::vector<std::string> fitting;
    for (const std::string& name : names) {
        const auto isItsEnd = [&](std::string_view ending) {
            return name.size() >= ending.size()
                && FindIgnoringCase(name, ending, name.size() - ending.size()) != std::string_view::npos;
        };
        if (std::any_of(endings.begin(), endings.end(), isItsEnd))
            fitting.push_back(name);
    }
    Clear();
    AddItems(fitting);
}
