#pragma once

#include <string>

// Each news server has three files of its own beside the program: a prefix and the server's name.
namespace ServerFiles {

inline constexpr const char* groupPrefix = "!@#!.";
inline constexpr const char* selectedPrefix = "#!@!.";
inline constexpr const char* pointerPrefix = "@!!#.";

inline std::string Group(const std::string& appDir, const std::string& server) { return appDir + groupPrefix + server; }

inline std::string Selected(const std::string& appDir, const std::string& server)
{
    return appDir + selectedPrefix + server;
}

inline std::string Pointers(const std::string& appDir, const std::string& server)
{
    return appDir + pointerPrefix + server;
}

}
