#include "platform/Application.h"
#include "shell/Program.h"

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv)
{
    const std::string_view option = argc == 2 ? argv[1] : "";
    if (option == "--version") {
        std::printf("tamarack %s\n", std::string(Application::version).c_str());
        return EXIT_SUCCESS;
    }
    if (option == "--help") {
        std::puts("Usage: tamarack [--help | --version]\n\nSearches news groups and downloads their attachments.");
        return EXIT_SUCCESS;
    }
    Application application(argc, argv);
    Desktop desktop;
    Program program(desktop, ProgramPlaces::OfUser());
    application.AtEndRequest([&program] { program.End(); });
    program.Start();
    return application.Run();
}
