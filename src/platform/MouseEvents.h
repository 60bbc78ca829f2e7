#pragma once

#include <functional>
#include <string>

// What a control without an action of its own tells of the mouse.
struct MouseEvents {
    // The toolkit numbers them so.
    static constexpr int leftButton = 1;
    static constexpr int rightButton = 2;
    static constexpr int middleButton = 4;

    // Sums of these tell which keys are held down.
    static constexpr int shiftKey = 1;
    static constexpr int ctrlKey = 2;
    static constexpr int altKey = 4;

    std::function<void()> Click;
    std::function<void()> DblClick; // behind a Click
    std::function<void(int button, int keys)> MouseDown;
    std::function<void()> MouseMove;
    // The path of the file that can be dragged out of here, "" for none.
    std::function<std::string()> DraggedFile;
};
