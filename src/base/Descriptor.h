#pragma once

#include <cerrno>
#include <cstddef>
#include <string_view>
#include <sys/types.h>
#include <system_error>
#include <unistd.h>
#include <utility>

// What the system has just said of a call that failed.
inline std::error_code LastError() { return {errno, std::generic_category()}; }

// Owns a descriptor of the system: an open file, a socket, a place.
class Descriptor {
public:
    // None.
    Descriptor() = default;

    // A negative number is none, as from a call that failed.
    explicit Descriptor(int opened)
        : number(opened)
    {
    }
    ~Descriptor() { (void)Close(); }
    Descriptor(Descriptor&& other) noexcept { std::swap(number, other.number); }
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(number, other.number);
        return *this;
    }

    bool IsOpen() const { return number >= 0; }
    int Number() const { return number; }

    // Writes all of it.
    [[nodiscard]] std::error_code Write(std::string_view bytes) const;

    // The number of bytes read from the current place on: `size`, less at the end of the file, or -1.
    [[nodiscard]] ssize_t Read(char* to, std::size_t size) const;

    // A full disk may show only here. No failure if there is none to close.
    std::error_code Close()
    {
        return number < 0 || close(std::exchange(number, -1)) == 0 ? std::error_code() : LastError();
    }

private:
    int number = -1;
};
