#pragma once

#include <random>
#include <string>

// The same for the same size and seed.
inline std::string RandomBytes(std::size_t size, unsigned seed = 1)
{
    std::mt19937 random(seed);
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}
