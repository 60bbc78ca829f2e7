#include "base/Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace {

bool IsDigit(char character) { return character >= '0' && character <= '9'; }

template <class Number> std::string Shortest(Number value)
{
    char digits[512]; // the largest and the smallest number have some 330
    return {digits, std::to_chars(std::begin(digits), std::end(digits), value, std::chars_format::fixed).ptr};
}

}

char LowerCase(char character)
{
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

bool SameText(std::string_view left, std::string_view right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
        [](char one, char other) { return LowerCase(one) == LowerCase(other); });
}

std::string_view Trim(std::string_view text, std::string_view blanks)
{
    return TrimEnd(text.substr(std::min(text.find_first_not_of(blanks), text.size())), blanks);
}

std::string_view TrimEnd(std::string_view text, std::string_view blanks)
{
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

std::vector<std::string> TrimmedParts(std::string_view text, char separator)
{
    std::vector<std::string> parts;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(separator), text.size());
        parts.emplace_back(Trim(text.substr(0, end)));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

double Val(std::string_view text)
{
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    std::size_t digits = 0;
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
    } else if (!text.empty() && text.front() == '-') {
        digits = 1;
    }
    // from_chars would also read "inf" and "nan", and a second sign.
    const bool startsNumber = digits < text.size()
        && (IsDigit(text[digits]) || (text[digits] == '.' && digits + 1 < text.size() && IsDigit(text[digits + 1])));
    if (!startsNumber)
        return 0;
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range) {
        const std::string_view read(text.data(), static_cast<std::size_t>(end - text.data()));
        const bool tiny = read.find("e-") != std::string_view::npos || read.find("E-") != std::string_view::npos;
        value = tiny ? 0 : std::copysign(std::numeric_limits<double>::max(), text.front() == '-' ? -1.0 : 1.0);
    }
    return value;
}

std::optional<std::int32_t> WholeNumber(std::string_view text)
{
    const double value = std::nearbyint(Val(text));
    if (value < std::numeric_limits<std::int32_t>::min() || value > std::numeric_limits<std::int32_t>::max())
        return {};
    return static_cast<std::int32_t>(value);
}

std::string DecimalText(float value) { return Shortest(value); }

std::string DecimalText(double value) { return Shortest(value); }

std::string DecodeHex(std::string_view text, char mark)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char* const digits = text.data() + i + 1;
        unsigned char byte = 0;
        if (text[i] == mark && i + 2 < text.size() && std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
            bytes += static_cast<char>(byte);
            i += 2;
        } else {
            bytes += text[i];
        }
    }
    return bytes;
}

std::size_t FindIgnoringCase(std::string_view text, std::string_view part)
{
    const auto found = std::search(text.begin(), text.end(), part.begin(), part.end(),
        [](char left, char right) { return LowerCase(left) == LowerCase(right); });
    return found == text.end() ? std::string_view::npos : static_cast<std::size_t>(found - text.begin());
}

bool SortsBefore(std::string_view left, std::string_view right)
{
    const auto order = std::lexicographical_compare_three_way(
        left.begin(), left.end(), right.begin(), right.end(), [](char one, char other) {
            return static_cast<unsigned char>(LowerCase(one)) <=> static_cast<unsigned char>(LowerCase(other));
        });
    return order != 0 ? order < 0 : left < right;
}
