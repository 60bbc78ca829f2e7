#pragma once

#include <functional>
#include <memory>
#include <string>

// How a program that is started a second time brings the windows of the first one up, where there is a session bus. For
// the desktop too, which calls the first one by the same interface (org.freedesktop.Application).
class Activation {
public:
    // This is the first one: from now on `activated` is called, where events are delivered, with the name of an action
    // of the desktop entry, "" for the window alone.
    explicit Activation(std::function<void(const std::string& action)> activated);
    ~Activation();

    // From the second one. Does not wait for the first to do it.
    static void ActivateFirst();

private:
    class Listener;

    std::unique_ptr<Listener> listener;
};
