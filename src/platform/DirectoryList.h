#pragma once

#include "platform/Control.h"

// A list to walk directories with: the directories that lead to the open one, the open one, which is the current row,
// and the directories in it. Hidden ones are left out. A click on a row raises Click, and so does Enter; Backspace
// raises it for the directory above. Moving through the rows by keys opens nothing. Paths are absolute bytes.
class DirectoryList : public Control {
public:
    // Opens the current directory, or the root directory if that is gone.
    DirectoryList(Container& container, std::string_view name, const Place& place);

    // The open directory, with no separator at its end except for the root's.
    std::string Path() const;

    // Opens a directory and reads it anew. False, with the open one kept as the current row, if it cannot be read.
    [[nodiscard]] bool SetPath(const std::string& newPath);

    // The path of a row; empty if there is no such row.
    std::string List(int index) const;
    int ListIndex() const;

    std::function<void()> Click;
    std::function<void()> Change; // another directory is open

private:
    class View;
};
