#pragma once

#include <functional>
#include <memory>
#include <string_view>

// The program's note among those that the desktop shows: one at a time, a newer one in its place. Where no service
// shows such notes, nothing happens. For platform/ alone.
class Notification {
public:
    Notification();
    ~Notification();

    // `pressed` is for its button.
    void Show(std::string_view title, std::string_view text, std::string_view button, std::function<void()> pressed);

private:
    class Note;

    std::unique_ptr<Note> note;
};
