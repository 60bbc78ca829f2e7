#pragma once

#include <string>

// Each news server has three files of its own beside the program: a prefix and the server's name.
namespace ServerFiles {

inline std::string Group(const std::string& appDir, const std::string& server) { return appDir + "!@#!." + server; }

inline std::string Selected(const std::string& appDir, const std::string& server) { return appDir + "#!@!." + server; }

inline std::string Pointers(const std::string& appDir, const std::string& server) { return appDir + "@!!#." + server; }

}
