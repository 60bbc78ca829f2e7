#pragma once

#include <functional>
#include <memory>
#include <string_view>

class QApplication;

// The toolkit's start and its event loop. There is one, it is made before every form, and it outlives them.
class Application {
public:
    // The first two numbers of the version.
    static const int major;
    static const int minor;
    static const std::string_view companyName;

    // Removes the toolkit's own options from the command line.
    Application(int& argc, char** argv);
    ~Application();

    // Delivers events for as long as the program runs; the result is its exit code.
    int Run();

    // What happens from now on when the system wants the program to end: at SIGTERM, SIGINT or SIGHUP, or when the
    // person logs out. It is called where events are delivered, so also inside a wait and while a message box is up.
    void AtEndRequest(std::function<void()> handler);

private:
    std::unique_ptr<QApplication> application;
};
