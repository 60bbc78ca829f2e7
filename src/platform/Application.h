#pragma once

#include <memory>

class QApplication;

// The toolkit's start and its event loop. There is one, it is made before every form, and it outlives them.
class Application {
public:
    // Removes the toolkit's own options from the command line.
    Application(int& argc, char** argv);
    ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    // Delivers events until Quit(); the result is the program's exit code.
    int Run();

    static void Quit();

private:
    std::unique_ptr<QApplication> application;
};
