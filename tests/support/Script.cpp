#include "tests/support/Script.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <utility>

namespace {

using Kind = ScriptStep::Kind;

constexpr std::array<std::pair<std::string_view, Kind>, 7> actions = {{
    {"connect", Kind::Connect},
    {"packet", Kind::Packet},
    {"pause", Kind::Pause},
    {"close", Kind::Close},
    {"reset", Kind::Reset},
    {"stall", Kind::Stall},
    {"wait-close", Kind::WaitClose},
}};

std::string WithoutEscapes(std::string_view text)
{
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '\\' || at + 1 == text.size()) {
            bytes += text[at];
            continue;
        }
        switch (text[++at]) {
        case 'r':
            bytes += '\r';
            break;
        case 'n':
            bytes += '\n';
            break;
        case 't':
            bytes += '\t';
            break;
        case 's':
            bytes += ' ';
            break;
        case 'x': {
            unsigned value = 0;
            const std::string_view digits = text.substr(at + 1, 2);
            std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
            bytes += static_cast<char>(value);
            at += digits.size();
            break;
        }
        default:
            bytes += text[at];
        }
    }
    return bytes;
}

ScriptStep ReadStep(std::string_view line, int number)
{
    const std::string_view mark = line.substr(0, 2);
    std::string_view rest = line.substr(mark.size());
    if (!rest.empty() && rest.front() == ' ')
        rest.remove_prefix(1);

    if (mark == "C:")
        return {Kind::Expect, std::string(rest), number};
    if (mark == "C~")
        return {Kind::Expect, WithoutEscapes(rest), number};
    if (mark == "S:")
        return {Kind::Send, std::string(rest) + "\r\n", number};
    if (mark == "S~")
        return {Kind::SendRaw, WithoutEscapes(rest), number};
    if (mark == "X:") {
        const std::size_t blank = rest.find(' ');
        for (const auto& [word, kind] : actions) {
            if (rest.substr(0, blank) == word)
                return {kind, std::string(blank == rest.npos ? "" : rest.substr(blank + 1)), number};
        }
    }
    return {Kind::Unreadable, std::string(line), number};
}

}

std::vector<ScriptStep> ReadScript(std::string_view script)
{
    std::vector<ScriptStep> steps;
    for (int number = 1; !script.empty(); ++number) {
        const std::size_t end = script.find('\n');
        std::string_view line = script.substr(0, end);
        script.remove_prefix(end == script.npos ? script.size() : end + 1);
        line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
        if (line.empty() || line.front() == '#')
            continue;
        steps.push_back(ReadStep(line, number));
    }
    return steps;
}

std::string Describe(const ScriptStep& step)
{
    std::string what;
    switch (step.kind) {
    case Kind::Expect:
        what = "C: " + Printable(step.text);
        break;
    case Kind::Send:
    case Kind::SendRaw:
        what = "S: " + Printable(step.text.substr(0, 60));
        break;
    case Kind::Unreadable:
        what = "cannot be read: " + Printable(step.text);
        break;
    default:
        for (const auto& [word, kind] : actions) {
            if (kind == step.kind)
                what = "X: " + std::string(word);
        }
    }
    return "script line " + std::to_string(step.line) + " (" + what + ")";
}

std::string Printable(std::string_view bytes)
{
    static constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        if (byte == '\r')
            text += "\\r";
        else if (byte == '\n')
            text += "\\n";
        else if (value < 32 || value > 126)
            text += {'\\', 'x', digits[value >> 4], digits[value & 15]};
        else
            text += byte;
    }
    return text;
}
