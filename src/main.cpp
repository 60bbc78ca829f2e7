#include "platform/Application.h"
#include "shell/Program.h"

#include <algorithm>

int main(int argc, char** argv)
{
    // No options are taken, and the toolkit's own are none of the program's users'.
    int argumentCount = std::min(argc, 1);
    Application application(argumentCount, argv);
    Desktop desktop;
    Program program(desktop, ProgramPlaces::OfUser());
    application.AtEndRequest([&program] { program.End(); });
    program.Start();
    return application.Run();
}
