#pragma once

#include <functional>
#include <string>

// What a control without an action of its own tells of the mouse.
struct MouseEvents {
    // The toolkit numbers them so. The keys that are held down make a sum, of Shift, Ctrl and Alt.
    static constexpr int rightButton = 2;
    static constexpr int ctrlKey = 0x04000000;

    std::function<void()> Click;
    std::function<void()> DblClick; // behind a Click
    std::function<void(int button, int keys)> MouseDown;
    std::function<void()> MouseMove;
    // The path of the file that can be dragged out of here, "" for none.
    std::function<std::string()> DraggedFile;
};
