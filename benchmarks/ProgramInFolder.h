#pragma once

#include "demo/sample/Channel.h"
#include "demo/support/TemporaryFolder.h"
#include "demo/support/UnattendedDesktop.h"
#include "shell/Program.h"

#include <string>

// The real program with everything that it keeps in one new folder, before a user who presses Find Now. It knows one
// server, on 127.0.0.1, and one group, which it has read up to article 1.
class ProgramInFolder {
public:
    ProgramInFolder(int port, const std::string& group, Wire wire = Wire::Plain);

    // Presses Find Now and comes back when the search is over. Whether it stored so many attachments, and told nothing
    // to its user.
    bool Search(std::size_t attachments);

    // Where the attachments of the group lie, with a separator at the end.
    std::string GroupDirectory() const { return destination + group + "/"; }

private:
    const TemporaryFolder folder;
    const std::string destination = folder.File("pictures/");
    const std::string group;
    UnattendedDesktop desktop;
    std::unique_ptr<Program> program;
};
