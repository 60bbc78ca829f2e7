#pragma once

#include <cstdint>
#include <string_view>

// What the servers and clients on 127.0.0.1 share.

// Binds a TCP socket to a port of four digits, which fits the program's port field, and lets it listen. Gives the port,
// or 0 if none was to be had.
std::uint16_t ListenOnLoopback(int descriptor);

// A TCP socket that is connected to that port and sends what it is given at once, or -1.
int ConnectToLoopback(std::uint16_t port);

// False if the other side is gone.
bool SendAll(int descriptor, std::string_view bytes);
