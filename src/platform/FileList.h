#pragma once

#include "platform/ListBox.h"

// The plain files of one directory whose names fit a pattern, sorted regardless of ASCII case. It holds what the
// directory held when it was last read; the files themselves are not looked at.
class FileList : public ListBox {
public:
    // `pattern` is a list such as "*.jpg;*.gif": endings of names, letters of either case.
    FileList(Container& container, std::string_view name, const Place& place, std::string_view pattern);

    // Reads another directory. False, with nothing changed, if it cannot be read.
    [[nodiscard]] bool SetPath(const std::string& newPath);

    // Reads the directory anew; one that cannot be read any more leaves the list empty.
    void Refresh();

    std::function<void()> PathChange; // another directory has been read

private:
    void Fill(const std::vector<std::string>& names);
    bool Fits(std::string_view fileName) const;

    std::vector<std::string> endings;
    std::string path;
};
