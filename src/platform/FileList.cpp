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

void FileList::Fill(std::vector<std::string> names)
{
    std::erase_if(names, [this](const std::string& name) {
        return std::none_of(endings.begin(), endings.end(), [&name](std::string_view ending) {
            return name.size() >= ending.size() && SameText(name.substr(name.size() - ending.size()), ending);
        });
    });
    Clear();
    AddItems(names);
}
