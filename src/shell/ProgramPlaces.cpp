#include "shell/ProgramPlaces.h"

#include "platform/Settings.h"

#include <cstdlib>
#include <filesystem>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

// $XDG_DATA_HOME, or what the XDG Base Directory Specification names in its absence.
fs::path UserDataDirectory()
{
    if (const char* dataHome = std::getenv("XDG_DATA_HOME"); dataHome != nullptr && *dataHome == '/')
        return dataHome;
    const char* home = std::getenv("HOME");
    return fs::path(home != nullptr ? home : "/tmp") / ".local" / "share";
}

}

ProgramPlaces ProgramPlaces::OfUser()
{
    std::error_code error;
    fs::path directory = fs::read_symlink("/proc/self/exe", error).parent_path();
    const bool installed = directory.filename() == "bin";
    if (error || installed || access(directory.c_str(), W_OK) != 0) {
        directory = UserDataDirectory() / "Tamarack";
        fs::create_directories(directory, error);
    }
    return {directory.string() + '/', Settings::UserFileName()};
}
