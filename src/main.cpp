#include "platform/Application.h"
#include "shell/Program.h"

int main(int argc, char** argv)
{
    Application application(argc, argv);
    Desktop desktop;
    Program program(desktop, ProgramPlaces::OfUser());
    application.AtEndRequest([&program] { program.End(); });
    program.Start();
    return application.Run();
}
