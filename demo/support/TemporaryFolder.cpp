#include "demo/support/TemporaryFolder.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder()
{
    std::string name = (fs::temp_directory_path() / "tamarack-test-XXXXXX").string();
    if (!mkdtemp(name.data())) {
        // A test that went on would write its files to the root directory.
        std::perror(name.c_str());
        std::abort();
    }
    path = name + "/";
}

TemporaryFolder::~TemporaryFolder()
{
    // A test may have taken away the right to write, to see what the program does then.
    std::error_code error;
    fs::permissions(path, fs::perms::owner_all, fs::perm_options::add, error);
    for (fs::recursive_directory_iterator entry(path, error), end; !error && entry != end; entry.increment(error)) {
        if (entry->is_directory(error) && !entry->is_symlink(error))
            fs::permissions(entry->path(), fs::perms::owner_all, fs::perm_options::add, error);
    }
    fs::remove_all(path, error);
}

std::string ContentOf(const std::string& path)
{
    std::error_code error;
    if (!fs::is_regular_file(path, error))
        return {};
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool MakeFile(const std::string& path, std::string_view bytes)
{
    std::error_code error;
    fs::create_directories(fs::path(path).parent_path(), error);
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    return file.good();
}

std::vector<std::string> FilesBelow(const std::string& folder)
{
    std::vector<std::string> files;
    std::error_code error;
    for (fs::recursive_directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        if (entry->is_symlink(error) || !entry->is_directory(error))
            files.push_back(entry->path().lexically_relative(folder).string());
    }
    std::sort(files.begin(), files.end());
    return files;
}
