#pragma once

#include <cstdint>
#include <random>

// The program's port field takes no more than four characters, and the ports that a system chooses by itself have
// five digits. Calls `listen(port)` with free-to-use ports of four digits, from a random one on so that tests may run
// at the same time, until it gives true; the result is that port, or 0 if none was to be had.
template <class Listen> std::uint16_t ListenOnShortPort(Listen listen)
{
    constexpr unsigned first = 2000;
    constexpr unsigned count = 8000;
    const unsigned start = std::random_device{}() % count;
    for (unsigned tried = 0; tried < count; ++tried) {
        const auto port = static_cast<std::uint16_t>(first + (start + tried) % count);
        if (listen(port))
            return port;
    }
    return 0;
}
