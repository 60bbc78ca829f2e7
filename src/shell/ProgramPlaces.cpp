#include "shell/ProgramPlaces.h"

#include "base/Files.h"
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
    // It is there, and absolute, from the start of the application on.
    return fs::path(std::getenv("HOME")) / ".local" / "share";
}

bool IsInstallation(std::string_view executables) { return executables.ends_with("/bin/"); }

}

ProgramPlaces ProgramPlaces::OfUser()
{
    std::string directory = ExecutableDirectory();
    if (IsInstallation(directory) || access(directory.c_str(), W_OK) != 0) {
        directory = UserDataDirectory() / "Tamarack" / "";
        std::error_code error;
        fs::create_directories(directory, error);
    }
    return {directory, Settings::UserFileName()};
}

std::vector<std::string> ProgramPlaces::Directories() const
{
    const std::string executables = ExecutableDirectory();
    return {appDir, DirectoryOf(settingsFile), resources, resources + "help", executables,
        executables + "../libexec/tamarack"};
}

std::string ProgramPlaces::OfResources()
{
    const std::string directory = ExecutableDirectory();
    if (!IsInstallation(directory))
        return directory;
    return fs::path(directory).parent_path().parent_path() / "share" / "tamarack" / "";
}
