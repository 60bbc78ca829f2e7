#include "platform/FileList.h"

#include "base/Files.h"
#include "base/Text.h"

#include <algorithm>
#include <iterator>

FileList::FileList(Container& container, std::string_view name, const Place& place, std::string_view pattern)
    : ListBox(container, name, place, {.hint = "No files of these kinds here"})
{
    while (!pattern.empty()) {
        const std::string_view part = pattern.substr(0, pattern.find(';'));
        endings.emplace_back(part.substr(part.find('*') + 1));
        pattern.remove_prefix(std::min(part.size() + 1, pattern.size()));
    }
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
    Clear();
    std::vector<std::string> fitting;
    std::copy_if(names.begin(), names.end(), std::back_inserter(fitting),
        [this](const std::string& fileName) { return Fits(fileName); });
    AddItems(fitting);
}

bool FileList::Fits(std::string_view fileName) const
{
    return std::any_of(endings.begin(), endings.end(), [&](std::string_view ending) {
        return fileName.size() >= ending.size()
            && FindIgnoringCase(fileName, ending, fileName.size() - ending.size()) != std::string_view::npos;
    });
}
