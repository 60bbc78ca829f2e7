#pragma once

#include <string>
#include <string_view>
#include <vector>

// An empty folder of its own for one test, removed with everything in it when the object goes.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    // The folder's absolute path; it ends in the separator, like AppDir and the destination.
    const std::string& Path() const { return path; }

    // The path of an entry of the folder, which need not exist: File("alt.kites/red.jpg").
    std::string File(std::string_view name) const { return path + std::string(name); }

private:
    std::string path;
};

// The whole content of a file; a file that cannot be read gives an empty string.
[[nodiscard]] std::string ContentOf(const std::string& path);

// Writes a file and the folders that lead to it, replacing what it held. False when it could not be written.
bool MakeFile(const std::string& path, std::string_view bytes);

// The plain files and the links below a folder, as paths relative to it, in the order of their bytes.
[[nodiscard]] std::vector<std::string> FilesBelow(const std::string& folder);
