#pragma once

#include <string_view>

// The settings' section for the servers: one key for each name, and the name to select at the next start.
namespace ServerSettings {

constexpr std::string_view section = "Servers";
constexpr std::string_view defaultKey = "Default";

}
