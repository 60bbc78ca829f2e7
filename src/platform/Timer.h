#pragma once

#include <chrono>
#include <functional>
#include <memory>

class QTimer;

// A clock that calls its handler on the user-interface thread, again and again while it is enabled. Beyond what a
// QTimer does, a change of `Interval` while it runs starts the time anew, and it never fires early.
class Timer {
public:
    explicit Timer(std::chrono::milliseconds interval);
    ~Timer();

    bool Enabled() const;
    void SetEnabled(bool enabled);
    void SetInterval(std::chrono::milliseconds interval);

    std::function<void()> Tick;

private:
    std::unique_ptr<QTimer> timer;
};
