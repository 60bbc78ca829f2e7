#pragma once

#include <string>

// Where the program keeps what lasts.
struct ProgramPlaces {
    std::string appDir; // the per-server files; a separator stands at its end
    std::string settingsFile;

    // The places of the person who runs the program: beside the executable if that is a directory of their own, else in
    // their data directory, which is made if it is missing.
    static ProgramPlaces OfUser();
};
