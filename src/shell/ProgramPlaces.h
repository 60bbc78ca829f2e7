#pragma once

#include <string>
#include <vector>

// Where the program keeps what lasts, and where it finds what came with it.
struct ProgramPlaces {
    std::string appDir; // the per-server files; a separator stands at its end
    std::string settingsFile;
    std::string resources = OfResources(); // the help; a separator stands at its end

    // The places of the person who runs the program: beside the executable if that is a directory of their own, else in
    // their data directory, which is made if it is missing.
    static ProgramPlaces OfUser();

    // The directories with files of the program itself, settings and what came with it included.
    std::vector<std::string> Directories() const;

    // Beside the executable, or in the shared data of an installation.
    static std::string OfResources();
};
