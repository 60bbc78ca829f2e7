#include "demo/DemoFolder.h"
#include "demo/UnattendedSearch.h"
#include "demo/WindowPictures.h"
#include "demo/sample/SampleArticles.h"
#include "demo/sample/SampleServer.h"
#include "demo/support/Screen.h"
#include "demo/support/TemporaryFolder.h"
#include "demo/support/UnattendedDesktop.h"
#include "platform/Application.h"
#include "platform/Desktop.h"
#include "shell/Program.h"

#include <QLineEdit>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

using namespace std::chrono_literals;

namespace {

constexpr const char* usage = R"(Usage: tamarack-demo [--screenshots DIR]

Opens Tamarack on a small news server of its own, with sample groups and pictures, ready for "Find Now". Settings, files
and destination are the demo's own and are made anew at each start.

The server has a second port, which is named at the start, for encrypted connections; nobody vouches for its certificate.

With no display, or with --screenshots, it does one whole search by itself, encrypted, prints each stored file, compares
it with what was posted, and writes pictures of all windows to DIR. Below each it prints what is hard to read in it. The
exit code is then 0 if all is as posted and each picture was taken, and 1 if not.
)";

bool IsSet(const char* variable)
{
    const char* value = std::getenv(variable);
    return value && *value;
}

bool HasDisplay()
{
    const char* platform = std::getenv("QT_QPA_PLATFORM");
    return (IsSet("DISPLAY") || IsSet("WAYLAND_DISPLAY")) && !(platform && platform == std::string_view("offscreen"));
}

void Start(Program& program, const SampleServer& server, std::uint16_t port)
{
    program.MainWindow().TCP1.SecurePorts.push_back(server.SecurePort());
    program.Start();
    // The port belongs to no setting.
    Find<QLineEdit>("txtPort").setText(QString::number(port));
    ChooseMenu("mnuInteractiveDownload");
}

}

int main(int argc, char** argv)
{
    const bool hasDisplay = HasDisplay();
    if (!hasDisplay)
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
    Application application(argc, argv);

    std::string screenshots;
    for (int at = 1; at < argc; ++at) {
        const std::string_view argument = argv[at];
        if (argument == "--screenshots" && at + 1 < argc) {
            screenshots = argv[++at] + std::string("/");
        } else {
            std::fputs(usage, argument == "--help" ? stdout : stderr);
            return argument == "--help" ? EXIT_SUCCESS : 2;
        }
    }
    const bool attended = hasDisplay && screenshots.empty();

    const SamplePostings postings = MakeSamplePostings();
    DemoFolder folder;
    if (!folder.Prepare(postings))
        return EXIT_FAILURE;
    // Who watches wants to see the pictures come, and to press "Stop Action" in time.
    SampleServer::Options options;
    options.bodyTime = attended ? 200ms : 0ms;
    options.identity = std::make_shared<Identity>();
    const SampleServer server(postings.groups, options);
    if (server.Port() == 0 || server.SecurePort() == 0) {
        std::fputs("tamarack-demo: no free ports for the news server\n", stderr);
        return EXIT_FAILURE;
    }
    if (attended) {
        Desktop desktop;
        Program program(desktop, folder.Places());
        Start(program, server, server.Port());
        std::printf("Press \"Find Now\". What it finds is stored in %s\n"
                    "Port %d, on \"Server Setup\", leads to the same server, encrypted, at the next connection.\n",
            folder.Destination().c_str(), server.SecurePort());
        std::fflush(stdout);
        return application.Run();
    }
    UnattendedDesktop desktop;
    Program program(desktop, folder.Places());
    Socket& TCP1 = program.MainWindow().TCP1;
    TCP1.AuthoritiesFile = folder.Places().appDir + "certificate.pem";
    (void)MakeFile(TCP1.AuthoritiesFile, options.identity->Certificate());
    Start(program, server, server.SecurePort());
    Camera camera(screenshots.empty() ? folder.Screenshots() : screenshots);
    const bool asPosted = SearchUnattended(folder, postings, desktop, camera);
    const std::string protocol = TCP1.Encrypted() ? TCP1.Encrypted()->protocol : "";
    std::printf("The connection was %s.\n", protocol.empty() ? "NOT ENCRYPTED" : protocol.c_str());
    TakePicturesOfWindows(camera, desktop, program.MainWindow(), postings.groupsToSearch.front());
    return asPosted && !protocol.empty() && camera.Taken() == 1 + windowPictures ? EXIT_SUCCESS : EXIT_FAILURE;
}
