#pragma once

#include "demo/support/Screen.h"

#include <string>
#include <string_view>

// Takes pictures of windows to a directory, and tells on the output what is hard to see in them.
class Camera {
public:
    // Makes the directory.
    explicit Camera(const std::string& directory);

    void Take(std::string_view name, QWidget& window);
    // The window of this name.
    void Take(std::string_view name, std::string_view window = "frmTamarack");

    // Takes a picture of a window that something else brings up, and gives it the Escape key then: of the one of this
    // name, or of a message box if there is none.
    void TakeNext(std::string_view name, std::string_view window = {});

    // How many pictures have been written.
    int Taken() const { return written; }

private:
    const std::string directory;
    int written = 0;
};
