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
    // Somebody without a home directory has none that others could foresee either.
    const char* home = std::getenv("HOME");
    return fs::path(home != nullptr && *home == '/' ? home : "/") / ".local" / "share";
}

fs::path ExecutableDirectory()
{
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error).parent_path();
}

bool IsInstallation(const fs::path& directory) { return directory.filename() == "bin"; }

}

ProgramPlaces ProgramPlaces::OfUser()
{
    fs::path directory = ExecutableDirectory();
    if (IsInstallation(directory) || access(directory.c_str(), W_OK) != 0) {
        directory = UserDataDirectory() / "Tamarack";
        std::error_code error;
        fs::create_directories(directory, error);
    }
    return {directory.string() + '/', Settings::UserFileName()};
}

std::vector<std::string> ProgramPlaces::Directories() const
{
    const fs::path executables = ExecutableDirectory();
    return {appDir, fs::path(settingsFile).parent_path().string(), resources, resources + "help", executables.string(),
        (executables.parent_path() / "libexec" / "tamarack").string()};
}

std::string ProgramPlaces::OfResources()
{
    const fs::path directory = ExecutableDirectory();
    return (IsInstallation(directory) ? directory.parent_path() / "share" / "tamarack" : directory).string() + '/';
}
