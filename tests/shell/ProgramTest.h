#pragma once

#include "demo/sample/SampleServer.h"
#include "demo/support/Screen.h"
#include "demo/support/TemporaryFolder.h"
#include "platform/Settings.h"
#include "shell/Program.h"
#include "tests/support/TestDesktop.h"

#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <string>
#include <vector>

// The whole program, on a folder of its own, with its user before it. One news server, on this machine, is known.
class ProgramTest : public testing::Test {
protected:
    ProgramTest();

    // Starts the program, once more if it is there already; with these selected groups and this port.
    void Start();
    void Start(const std::vector<std::string>& groups, std::uint16_t port);

    // The same, wherever the start leads to.
    void Launch();

    // Has something done as soon as a window is up; for a modal one, which holds the caller.
    static void WhenUp(const std::string& window, const std::function<void()>& what);

    // Presses "Find Now" and comes back when the search is over. `captions` are then those of this search.
    void Search();

    // Makes the next search begin with this pointer file, none if it is empty, and an empty destination.
    void Forget(const std::string& pointers = {});

    std::string ProgramFile(std::string_view name) const { return folder.File("program/" + std::string(name)); }
    std::string SelectedFile(const std::string& server = serverName) const { return ProgramFile("#!@!." + server); }
    std::string PointerFile() const { return ProgramFile("@!!#." + serverName); }

    // Has something done when the thread next lets events through.
    static void AtNextYield(const std::function<void()>& what);

    inline static const std::string serverName = "127.0.0.1";

    TemporaryFolder folder;
    const std::string destination = folder.File("pictures/");
    Settings settings{folder.File("settings.ini")};
    ProgramPlaces places{ProgramFile(""), folder.File("settings.ini")};
    TestDesktop desktop;
    std::unique_ptr<Program> program;
    std::vector<std::string> captions; // of the main form, in their order
    std::map<std::string, std::function<void()>> atCaption; // called once, as soon as the caption is set
};

// A record of the pointer file: the number, least significant byte first, and the name in 80 characters.
std::string PointerRecord(std::int32_t article, std::string_view group);
