#include "decoder/AttachmentName.h"

#include "base/Characters.h"
#include "base/Text.h"

#include <algorithm>

namespace {

constexpr std::string_view nameForNothing = "attachment";

// An extension of more bytes than this is taken for a part of the name that happens to follow a dot.
constexpr std::size_t longestExtension = 32;

std::string_view LastComponent(std::string_view name)
{
    name = Trim(name, " \t");
    if (name.size() >= 2 && name.front() == '"' && name.back() == '"')
        name = name.substr(1, name.size() - 2);
    const std::size_t separator = name.find_last_of("/\\");
    return separator == std::string_view::npos ? name : name.substr(separator + 1);
}

std::size_t ExtensionSize(std::string_view name)
{
    const std::size_t dot = name.rfind('.');
    const bool hasOne = dot != std::string_view::npos && dot != 0 && name.size() - dot <= longestExtension;
    return hasOne ? name.size() - dot : 0;
}

// At most `size` bytes from the front of `text`, and no cut through a character.
std::string_view Front(std::string_view text, std::size_t size)
{
    if (text.size() <= size)
        return text;
    while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xc0) == 0x80)
        --size;
    return text.substr(0, size);
}

}

std::string SafeFileName(std::string_view name)
{
    std::u32string characters = CharactersOf(LastComponent(name));
    std::erase_if(characters, ShowsAsNothing);
    // A dot in front would hide the file; blanks and dots at the end get lost on some file systems.
    const auto isAtEdge = [](char32_t character) { return character == '.' || IsBlank(character); };
    const auto end = std::find_if_not(characters.rbegin(), characters.rend(), isAtEdge).base();
    auto next = std::find_if_not(characters.begin(), end, isAtEdge);
    std::string kept;
    // A hyphen in front would make commands take the name for an option.
    if (next != end && *next == '-')
        kept = "_";
    while (next != end) {
        const auto afterBlanks = std::find_if_not(next, end, IsBlank);
        // A long row of blanks could push the extension out of sight.
        AppendUtf8(kept, afterBlanks - next > 1 ? U' ' : *next);
        next = std::max(next + 1, afterBlanks);
    }
    return NumberedFileName(kept.empty() ? nameForNothing : kept, 1);
}

std::string PortableFileName(std::string_view safeName)
{
    constexpr std::size_t longest = 120;
    const std::size_t extensionSize = ExtensionSize(safeName);
    std::string name(Front(safeName.substr(0, safeName.size() - extensionSize), longest - extensionSize));
    name += safeName.substr(safeName.size() - extensionSize);
    for (char& character : name) {
        if (std::string_view("<>:\"|?*").find(character) != std::string_view::npos)
            character = '_';
    }
    return name;
}

std::string NumberedFileName(std::string_view safeName, std::size_t number)
{
    const std::string_view extension = safeName.substr(safeName.size() - ExtensionSize(safeName));
    const std::string_view stem = safeName.substr(0, safeName.size() - extension.size());
    const std::string mark = number > 1 ? " (" + std::to_string(number) + ")" : std::string();
    std::string numbered(Front(stem, longestFileName - extension.size() - mark.size()));
    numbered += mark;
    numbered += extension;
    return numbered;
}
