#pragma once

#include "picture-reader/Format.h"

#include <cstddef>
#include <cstdint>

// What the program and tamarack-picture, which reads pictures for it, say to each other. Each message is one of a
// SOCK_SEQPACKET socket, in this machine's order of bytes.
//
// The program starts the helper with the socket as its standard input, and with a piece of shared memory, whose size
// stays as it is, as its descriptor 3. Once the helper has given up its rights it sends an empty answer. From then on
// each request brings the open file with it (SCM_RIGHTS), and each answer tells what is in the shared memory.

struct PictureRequest {
    PictureFormat format;
    // The helper reduces a larger picture to fit this. Both at least 1, and together within the shared memory.
    std::uint32_t maxWidth;
    std::uint32_t maxHeight;
};

struct PictureAnswer {
    // The picture's own, in pixels; 0 if the file could not be read.
    std::uint32_t width;
    std::uint32_t height;
    // Those of the pixels in the shared memory, row by row, each a 32-bit number: 0xffRRGGBB, or 0xAARRGGBB with
    // colours multiplied by their alpha.
    std::uint32_t pixelWidth;
    std::uint32_t pixelHeight;
    std::uint32_t hasAlpha; // 1 or 0
};

constexpr int requestDescriptor = 0;
constexpr int pixelDescriptor = 3;

// A picture that has more is not read.
constexpr std::uint64_t mostPixels = 64'000'000;

constexpr std::size_t BytesFor(std::uint32_t width, std::uint32_t height) { return std::size_t{4} * width * height; }

// A helper that a picture has led astray may say anything. Can this be the answer to that?
constexpr bool IsPossible(const PictureAnswer& answer, const PictureRequest& request)
{
    return answer.width >= 1 && answer.height >= 1 && answer.width <= mostPixels && answer.height <= mostPixels
        && std::uint64_t{answer.width} * answer.height <= mostPixels && answer.pixelWidth >= 1
        && answer.pixelHeight >= 1 && answer.pixelWidth <= request.maxWidth && answer.pixelHeight <= request.maxHeight
        && answer.hasAlpha <= 1;
}
