#pragma once

#include "demo/sample/SampleArticles.h"
#include "shell/Program.h"

#include <QLockFile>

#include <memory>
#include <string>
#include <vector>

// Everything that a demo keeps on disk: $XDG_DATA_HOME/tamarack-demo. The program's own directory, its settings and the
// destination lie in there, apart from those of the installed program, and are made anew at each start.
class DemoFolder {
public:
    // The server's name, under which the program keeps its files.
    static constexpr const char* serverName = "localhost";

    // Makes the folder and writes what the program brings back at start-up: the server, its groups, the selected groups
    // and the criteria. False, with a line on the error output, if that does not work or another demo is running.
    [[nodiscard]] bool Prepare(const SamplePostings& postings);

    // All with a separator at the end, where they are directories.
    ProgramPlaces Places() const { return {program, program + "settings.ini"}; }
    const std::string& Destination() const { return destination; }
    const std::string& Screenshots() const { return screenshots; }

    // What has been stored, by its path below Destination(). Whatever found a way out of the destination begins
    // with "../".
    std::vector<std::string> StoredFiles() const;

private:
    void WriteSettings() const;
    [[nodiscard]] bool WriteGroupFiles(const SamplePostings& postings) const;

    std::string files; // what is removed at the next start
    std::string program;
    std::string destination;
    std::string screenshots;
    std::unique_ptr<QLockFile> lock;
};
