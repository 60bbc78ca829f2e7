#include "base/Characters.h"

#include <algorithm>
#include <array>
#include <optional>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace {

// What the bytes 0x80 to 0x9f stand for in Windows-1252; five of them for nothing.
constexpr std::array<char32_t, 32> windows1252{0x20ac, 0, 0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021, 0x02c6,
    0x2030, 0x0160, 0x2039, 0x0152, 0, 0x017d, 0, 0, 0x2018, 0x2019, 0x201c, 0x201d, 0x2022, 0x2013, 0x2014, 0x02dc,
    0x2122, 0x0161, 0x203a, 0x0153, 0, 0x017e, 0x0178};

// The library's macros convert without saying so.
#pragma GCC diagnostic ignored "-Wconversion"

// Takes one character of UTF-8 off the front of `text`, which is not empty. Nothing if it is not valid (RFC 3629):
// overlong forms and surrogates are not.
std::optional<char32_t> TakeUtf8(std::string_view& text)
{
    constexpr std::size_t longest = 4;
    std::int32_t length = 0;
    UChar32 character = 0;
    U8_NEXT(text.data(), length, static_cast<std::int32_t>(std::min(text.size(), longest)), character);
    if (character < 0)
        return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(length));
    return static_cast<char32_t>(character);
}

}

void AppendUtf8(std::string& text, char32_t character)
{
    char bytes[4];
    std::size_t length = 0;
    U8_APPEND_UNSAFE(bytes, length, character);
    text.append(bytes, length);
}

char32_t FromWindows1252(char byte)
{
    const auto code = static_cast<unsigned char>(byte);
    return code >= 0x80 && code < 0xa0 ? windows1252[code - 0x80U] : char32_t{code};
}

std::u32string CharactersOf(std::string_view text)
{
    std::u32string characters;
    for (std::string_view rest = text; !rest.empty();) {
        if (const auto character = TakeUtf8(rest)) {
            characters += *character;
            continue;
        }
        characters.clear();
        for (const char byte : text)
            characters += FromWindows1252(byte);
        break;
    }
    return characters;
}

// Of the characters that only arrange others, those that stand before a number are drawn. A Braille cell without dots
// is a symbol to Unicode, and empty all the same.
bool ShowsAsNothing(char32_t character)
{
    const auto code = static_cast<UChar32>(character);
    const bool arranges = (U_MASK(u_charType(code)) & (U_GC_CC_MASK | U_GC_CF_MASK | U_GC_ZL_MASK | U_GC_ZP_MASK)) != 0
        && !u_hasBinaryProperty(code, UCHAR_PREPENDED_CONCATENATION_MARK);
    return arranges || u_hasBinaryProperty(code, UCHAR_DEFAULT_IGNORABLE_CODE_POINT) || character == 0x2800;
}

bool IsBlank(char32_t character)
{
    return u_hasBinaryProperty(static_cast<UChar32>(character), UCHAR_WHITE_SPACE) != 0;
}

bool IsVisibleThroughout(std::string_view text)
{
    while (!text.empty()) {
        const std::optional<char32_t> character = TakeUtf8(text);
        if (!character)
            text.remove_prefix(1);
        else if (ShowsAsNothing(*character) || IsBlank(*character))
            return false;
    }
    return true;
}
