#pragma once

#include <functional>
#include <memory>
#include <string>

// How a program that is started a second time brings the windows of the first one up, where there is a session bus. For
// the desktop too, which calls the first one by the same interface (org.freedesktop.Application).
namespace Activation {

// This is the first one: as long as the result lives `activated` is called, where events are delivered, with the name
// of an action of the desktop entry, "" for the window alone.
[[nodiscard]] std::shared_ptr<void> Await(std::function<void(const std::string& action)> activated);

// From the second one. Does not wait for the first to do it.
void ActivateFirst();

}
