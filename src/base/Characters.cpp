#include "base/Characters.h"

#include <array>
#include <optional>
#include <unicode/uchar.h>

namespace {

// What the bytes 0x80 to 0x9f stand for in Windows-1252; five of them for nothing.
constexpr std::array<char32_t, 32> windows1252{0x20ac, 0, 0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021, 0x02c6,
    0x2030, 0x0160, 0x2039, 0x0152, 0, 0x017d, 0, 0, 0x2018, 0x2019, 0x201c, 0x201d, 0x2022, 0x2013, 0x2014, 0x02dc,
    0x2122, 0x0161, 0x203a, 0x0153, 0, 0x017e, 0x0178};

// Takes one character of UTF-8 off the front of `text`, which is not empty. Nothing if it is not valid (RFC 3629):
// overlong forms and surrogates are not.
std::optional<char32_t> TakeUtf8(std::string_view& text)
{
    const auto byteAt = [&text](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const unsigned first = byteAt(0);
    const std::size_t size = first < 0x80 ? 1
        : first < 0xc2                    ? 0
        : first < 0xe0                    ? 2
        : first < 0xf0                    ? 3
        : first < 0xf5                    ? 4
                                          : 0;
    if (size == 0 || size > text.size())
        return std::nullopt;
    char32_t character = size == 1 ? first : first & (0xffU >> (size + 1));
    for (std::size_t i = 1; i < size; ++i) {
        if ((byteAt(i) & 0xc0) != 0x80)
            return std::nullopt;
        character = character << 6 | (byteAt(i) & 0x3fU);
    }
    constexpr std::array<char32_t, 5> smallest{0, 0, 0x80, 0x800, 0x10000};
    if (character < smallest[size] || character > 0x10ffff || (character >= 0xd800 && character <= 0xdfff))
        return std::nullopt;
    text.remove_prefix(size);
    return character;
}

}

void AppendUtf8(std::string& text, char32_t character)
{
    const auto add = [&text](char32_t byte) { text += static_cast<char>(static_cast<unsigned char>(byte)); };
    const auto addRest = [&](int shift) { add(0x80 | (character >> shift & 0x3f)); };
    if (character < 0x80) {
        add(character);
    } else if (character < 0x800) {
        add(0xc0 | character >> 6);
        addRest(0);
    } else if (character < 0x10000) {
        add(0xe0 | character >> 12);
        addRest(6);
        addRest(0);
    } else {
        add(0xf0 | character >> 18);
        addRest(12);
        addRest(6);
        addRest(0);
    }
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
