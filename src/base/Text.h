#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What the logic does with texts and numbers. A text is a run of bytes; nothing here knows of characters.

// The letters A to Z in lower case, any other byte as it is.
char LowerCase(char character);

// True if two texts differ in nothing but ASCII case.
bool SameText(std::string_view left, std::string_view right);

// The text without these characters at its ends, or only at its second one.
std::string_view Trim(std::string_view text, std::string_view blanks = " ");
std::string_view TrimEnd(std::string_view text, std::string_view blanks = " \t");

// What stands between the separators, each part trimmed. An empty part counts, but for one behind a separator at the
// very end.
std::vector<std::string> TrimmedParts(std::string_view text, char separator);

// The number with which a text begins, as a form's field is read: leading blanks are skipped, reading stops at the
// first character that cannot belong to a decimal number in the C locale ("12.5abc" is 12.5, "-3" is -3, "1e3" is
// 1000). 0 if there is none; no hexadecimal, no "inf", no "nan".
double Val(std::string_view text);

// Val(), rounded to the nearest whole number, halves to the even one. Nothing if it does not fit into 32 bits.
std::optional<std::int32_t> WholeNumber(std::string_view text);

// The shortest decimal number, without an exponent, that is read back as the same value.
std::string DecimalText(float value);
std::string DecimalText(double value);

// The bytes of a text in which some are written as a mark and two hexadecimal digits, "%C3" or "=C3". A mark without
// them stands for itself.
std::string DecodeHex(std::string_view text, char mark);

// The position of the first `part` in `text`, letters that differ only in ASCII case being equal.
// std::string_view::npos if there is none. An empty part is found at once in a text that is not empty.
std::size_t FindIgnoringCase(std::string_view text, std::string_view part);

// True if `left` comes before `right` in a sorted list: regardless of ASCII case, ties by byte.
bool SortsBefore(std::string_view left, std::string_view right);
