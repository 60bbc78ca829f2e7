#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// The longest file name, in bytes, that is made here. The usual file systems take no longer one.
constexpr std::size_t longestFileName = 255;

// A bare file name, in UTF-8, made from a name that a stranger chose. It has no directory part, is not hidden, is no
// longer than longestFileName and never empty, does not begin with a "-", and shows what it is: controls, characters
// that turn the direction of writing and all others that show as nothing are dropped, and so are blanks of every kind
// at its ends; two or more of them inside become one. Bytes that are no valid UTF-8 are read as Windows-1252.
std::string SafeFileName(std::string_view name);

// The safe name as every file system takes it: the characters that some keep for themselves become "_", and it has at
// most 120 bytes.
std::string PortableFileName(std::string_view safeName);

// The name that a file gets where others of its name exist: "red.jpg" for number 1, then "red (2).jpg" and so on. Not
// longer than longestFileName either.
std::string NumberedFileName(std::string_view safeName, std::size_t number);
