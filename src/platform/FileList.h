#pragma once

#include "platform/ListBox.h"

// The plain files of one directory whose names have certain endings, letters of either case, sorted regardless of ASCII
// case. It holds what the directory held when it was last read; the files themselves are not looked at.
class FileList : public ListBox {
public:
    FileList(Container& container, std::string_view name, const Place& place,
        std::initializer_list<std::string_view> endings);

    // Reads another directory. False, with nothing changed, if it cannot be read.
    [[nodiscard]] bool SetPath(const std::string& newPath);

    // Reads the directory anew; one that cannot be read any more leaves the list empty.
    void Refresh();

    std::function<void()> PathChange; // another directory has been read

private:
    void Fill(std::vector<std::string> names);

    const std::vector<std::string_view> endings;
    std::string path;
};
