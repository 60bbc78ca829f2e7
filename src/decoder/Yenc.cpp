#include "decoder/Yenc.h"

#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>

#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#define HAS_SSSE3_PATH 1
#else
#define HAS_SSSE3_PATH 0
#endif

// yEnc, version 1.3 of its public draft:
//
//   =ybegin line=128 size=123456 name=picture.jpg
//   ... bytes, in lines of about 128 ...
//   =yend size=123456 crc32=abcdef12
//
// A byte is sent as itself plus 42. Those that would then be NUL, LF, CR or "=" are sent as "=" and the byte plus 106.
// Encoders may do so with others too, such as the blank, the tab and a dot at the start of a line. CR and LF are never
// data. A line that begins with "=y" is one of the format's own.
//
// A posting in several articles has in each of them "part=" on the =ybegin line and a second line
//
//   =ypart begin=1 end=384000
//
// There, the crc32 of the =yend line is that of the whole attachment, and pcrc32 that of the part. An attachment in
// one article may be written in the same way, as part 1 that goes from 1 to its size. All other parts are not decoded.
//
// The check sum is voluntary, and an =yend line without it proves nothing but the size. Values that cannot be read are
// taken for wrong ones. The "line" of =ybegin is of no use to a decoder, and a line may well be a little longer.

namespace {

// The value after " field=" on one of the format's own lines, up to the next blank; nothing if there is no such field.
std::optional<std::string_view> Field(std::string_view line, std::string_view field)
{
    for (std::size_t at = line.find(' '); at != std::string_view::npos; at = line.find(' ', at)) {
        ++at;
        const std::string_view rest = line.substr(at);
        if (rest.starts_with(field) && rest.substr(field.size()).starts_with('=')) {
            const std::string_view value = rest.substr(field.size() + 1);
            return value.substr(0, value.find_first_of(" \t"));
        }
    }
    return std::nullopt;
}

template <class Number>
std::optional<Number> ReadNumber(std::string_view text, int base)
{
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (error != std::errc() || end != text.data() + text.size() || text.empty())
        return std::nullopt;
    return number;
}

std::optional<std::uint64_t> Count(std::string_view line, std::string_view field)
{
    const auto text = Field(line, field);
    return text ? ReadNumber<std::uint64_t>(*text, 10) : std::nullopt;
}

// Some encoders take the check sum for a signed number of 64 bits and write "ffffffffabcdef12".
bool IsChecksumWrong(std::string_view line, std::string_view field, std::uint32_t checksum)
{
    const auto text = Field(line, field);
    if (!text)
        return false;
    const auto number = ReadNumber<std::uint64_t>(*text, 16);
    return !number || static_cast<std::uint32_t>(*number) != checksum
        || (*number >> 32 != 0 && *number >> 32 != 0xffffffff);
}

#if HAS_SSSE3_PATH

// With SSSE3, sixteen characters are decoded at a time without a look at each: the bytes of those that are not data are
// squeezed out, eight characters in one go, by a table of which bytes to keep for each way in which they can lie.
#define SSSE3 __attribute__((target("avx2,popcnt")))

const bool HasSsse3 = [] {
    __builtin_cpu_init();
    return __builtin_cpu_supports("ssse3") != 0 && __builtin_cpu_supports("popcnt") != 0;
}();

constexpr auto KeptBytes = [] {
    std::array<std::array<std::uint8_t, 8>, 256> kept{};
    for (std::size_t dropped = 0; dropped < kept.size(); ++dropped) {
        std::size_t count = 0;
        for (std::size_t byte = 0; byte < 8; ++byte) {
            if ((dropped >> byte & 1) == 0)
                kept[dropped][count++] = static_cast<std::uint8_t>(byte);
        }
    }
    return kept;
}();

SSSE3 inline char* StoreKept(char* out, __m128i bytes, unsigned dropped)
{
    const __m128i kept = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(KeptBytes[dropped].data()));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_shuffle_epi8(bytes, kept));
    return out + 8 - std::popcount(dropped);
}

// Decodes blocks of sixteen characters, up to the first that holds something out of the ordinary: an escape or a dot at
// the start of a line, or an escaped character that should not be one. May scribble on what lies behind `out`.
SSSE3 void DecodeBlocks(const char*& inPlace, const char* end, char*& outPlace, bool& atLineStart)
{
    // Copies, which the stores of the bytes cannot be suspected of changing.
    const char* in = inPlace;
    char* out = outPlace;
    __m128i escapesBefore = _mm_setzero_si128();
    unsigned escapeBefore = 0; // the last character of the block before, not yet decoded
    unsigned lineStart = atLineStart ? 1 : 0;
    for (; end - in >= 16; in += 16) {
        const __m128i characters = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
        const __m128i isEscape = _mm_cmpeq_epi8(characters, _mm_set1_epi8('='));
        const __m128i isLineFeed = _mm_cmpeq_epi8(characters, _mm_set1_epi8('\n'));
        const __m128i isReturn = _mm_cmpeq_epi8(characters, _mm_set1_epi8('\r'));
        const __m128i isDot = _mm_cmpeq_epi8(characters, _mm_set1_epi8('.'));
        const __m128i isDropped = _mm_or_si128(isEscape, _mm_or_si128(isLineFeed, isReturn));
        const auto escapes = static_cast<unsigned>(_mm_movemask_epi8(isEscape));
        const auto lineFeeds = static_cast<unsigned>(_mm_movemask_epi8(isLineFeed));
        const auto dropped = static_cast<unsigned>(_mm_movemask_epi8(isDropped));
        const auto notAtStart = static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(isEscape, isDot)));
        const unsigned lineStarts = lineFeeds << 1 | lineStart;
        if ((((escapes << 1 | escapeBefore) & dropped) | (lineStarts & notAtStart)) != 0)
            break;

        const __m128i isEscaped = _mm_alignr_epi8(isEscape, escapesBefore, 15);
        const __m128i bytes = _mm_sub_epi8(_mm_sub_epi8(characters, _mm_set1_epi8(42)),
            _mm_and_si128(isEscaped, _mm_set1_epi8(64)));
        out = StoreKept(out, bytes, dropped & 0xff);
        out = StoreKept(out, _mm_srli_si128(bytes, 8), dropped >> 8);
        escapesBefore = isEscape;
        escapeBefore = escapes >> 15;
        lineStart = lineFeeds >> 15;
    }
    inPlace = in - escapeBefore;
    outPlace = out;
    atLineStart = lineStart != 0;
}

#endif

// The data lines, cut anywhere.
class YencStream {
public:
    explicit YencStream(AttachmentWriter& attachmentWriter)
        : writer(attachmentWriter)
    {
    }

    // Decodes up to a line of the format's own, and returns the number of bytes that were taken. What is left without
    // such a line being found is the beginning of something whose rest has to come first.
    std::size_t Take(std::string_view text)
    {
        const char* in = text.data();
        const char* const end = in + text.size();
        while (in != end && !atOwnLine) {
            const char* const stop = in + std::min<std::size_t>(static_cast<std::size_t>(end - in), Chunk);
            const char* const before = in;
            char* const room = writer.Reserve(Chunk);
            const char* const roomEnd = TakeChunk(in, stop, end, room);
            const auto count = static_cast<std::size_t>(roomEnd - room);
            checksum = libdeflate_crc32(checksum, room, count);
            writer.Add(count);
            if (in == before)
                break;
        }
        return static_cast<std::size_t>(in - text.data());
    }

    bool IsAtOwnLine() const { return atOwnLine; }
    bool IsDamaged() const { return isDamaged; } // an escape that the end of its line cut off
    std::uint32_t Checksum() const { return checksum; }

private:
    static constexpr std::size_t Chunk = 16 * 1024;

    // Begins nothing at or behind `stop`, yet may look on up to `end`.
    char* TakeChunk(const char*& in, const char* stop, const char* end, char* out)
    {
        while (in < stop) {
#if HAS_SSSE3_PATH
            if (HasSsse3)
                DecodeBlocks(in, stop, out, atLineStart);
#endif
            const char* const blockEnd = stop - in > 16 ? in + 16 : stop;
            while (in < blockEnd) {
                if (!TakeCharacter(in, end, out))
                    return out;
            }
        }
        return out;
    }

    // Decodes one character, escaped or not. False, without taking anything, at a line of the format's own and where
    // that cannot be told before there is more.
    bool TakeCharacter(const char*& in, const char* end, char*& out)
    {
        const bool isOnlyOne = end - in < 2;
        if (*in == '=') {
            atOwnLine = atLineStart && !isOnlyOne && in[1] == 'y';
            if (atOwnLine || isOnlyOne)
                return false;
            isDamaged = isDamaged || in[1] == '\r' || in[1] == '\n';
            *out++ = static_cast<char>(in[1] - 106);
            in += 2;
            atLineStart = false;
            return true;
        }
        if (*in == '.' && atLineStart) {
            if (isOnlyOne)
                return false;
            if (in[1] == '.')
                ++in;
        }
        atLineStart = *in == '\n';
        if (!atLineStart && *in != '\r')
            *out++ = static_cast<char>(*in - 42);
        ++in;
        return true;
    }

    AttachmentWriter& writer;
    std::uint32_t checksum = 0;
    bool atLineStart = true;
    bool atOwnLine = false;
    bool isDamaged = false;
};

// Is the line "=yend size=123456 crc32=abcdef12" right about what was decoded?
bool IsConfirmed(std::string_view line, const YencBegin& begin, std::uint64_t size, std::uint32_t checksum)
{
    return size == begin.size && Count(line, "size") == size && !IsChecksumWrong(line, "crc32", checksum)
        && !IsChecksumWrong(line, "pcrc32", checksum);
}

}

std::optional<YencBegin> ReadYencBegin(std::string_view line)
{
    // =ybegin line=128 size=123456 name=picture.jpg   (the name goes on to the end of the line, blanks and all)
    constexpr std::string_view NameField = " name=";
    const std::size_t nameAt = line.find(NameField);
    if (!line.starts_with("=ybegin ") || nameAt == std::string_view::npos)
        return std::nullopt;
    const std::string_view fields = line.substr(0, nameAt);
    const auto size = Count(fields, "size");
    if (!size)
        return std::nullopt;
    const auto isMoreThanOne = [fields](std::string_view field) {
        return Field(fields, field).has_value() && Count(fields, field) != 1U;
    };
    return YencBegin{*size, isMoreThanOne("part") || isMoreThanOne("total"),
        std::string(line.substr(nameAt + NameField.size()))};
}

Outcome DecodeYenc(LineReader& lines, const YencBegin& begin, AttachmentSink& sink)
{
    if (begin.isOneOfSeveral)
        return Outcome::Part;
    if (lines.HasLine() && lines.Line().starts_with("=ypart ")) {
        const auto first = Count(lines.Line(), "begin");
        const auto last = Count(lines.Line(), "end");
        if (!first || !last || *last > begin.size)
            return Outcome::Damaged;
        if (*first != 1 || *last != begin.size)
            return Outcome::Part;
        lines.Advance();
    }

    AttachmentWriter writer(sink, begin.name);
    YencStream stream(writer);
    for (;;) {
        lines.Skip(stream.Take(lines.Ahead()));
        if (stream.IsDamaged() || writer.Size() > begin.size)
            return Outcome::Damaged;
        if (!stream.IsAtOwnLine()) {
            if (!lines.ReadMore())
                return Outcome::Part;
            continue;
        }
        if (!lines.HasLine() || !lines.Line().starts_with("=yend"))
            return Outcome::Part; // the next attachment begins before this one has ended
        const bool isConfirmed = lines.IsWhole() && IsConfirmed(lines.Line(), begin, writer.Size(), stream.Checksum());
        lines.Advance();
        return isConfirmed ? writer.Keep() : Outcome::Damaged;
    }
}
