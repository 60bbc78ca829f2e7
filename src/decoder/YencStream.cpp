#include "decoder/YencStream.h"

#include "decoder/Processor.h"

#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <bit>
#include <vector>

#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#define HAS_VECTOR_PATHS 1
#else
#define HAS_VECTOR_PATHS 0
#endif

// Most characters are data and stand for themselves, but every fortieth or so is an escape or a line end, at a place
// that cannot be foreseen. A loop that looks at each character runs into a wrong guess of the processor there, and that
// costs more than all the rest. The block decoders therefore make no difference between the characters of a block:
// the bytes of those that are not data are computed like the others and then squeezed out.

namespace {

// Small enough for its bytes to be still at hand when the check sum is taken.
constexpr std::size_t chunkSize = 16 * 1024;

// The block decoders take blocks up to the first that holds something out of the ordinary: an escape or a dot at the
// start of a line, or an escaped character that should not be one. They may scribble on the slack behind `out`.
void DecodeNoBlocks(const char*&, const char*, char*&, bool&) { }

#if HAS_VECTOR_PATHS

// A body in memory is cold, and a loop of so many steps to a byte does not look far ahead of itself.
constexpr std::ptrdiff_t prefetchDistance = 2048;

// Of eight bytes of which those marked in the index are dropped: where each byte of the result comes from.
constexpr auto keptBytes = [] {
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

#define SSSE3 __attribute__((target("ssse3,popcnt")))

SSSE3 inline char* StoreKept(char* out, __m128i bytes, unsigned dropped)
{
    const __m128i kept = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(keptBytes[dropped].data()));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_shuffle_epi8(bytes, kept));
    return out + 8 - std::popcount(dropped);
}

SSSE3 void DecodeBlocksOf16(const char*& inPlace, const char* end, char*& outPlace, bool& atLineStart)
{
    // Copies, which the stores of the bytes cannot be suspected of changing.
    const char* in = inPlace;
    char* out = outPlace;
    __m128i escapesBefore = _mm_setzero_si128();
    unsigned escapeBefore = 0; // 1 if the last character of the block before was an escape: it is not decoded yet
    unsigned lineStart = atLineStart ? 1 : 0;
    for (; end - in >= 16; in += 16) {
        __builtin_prefetch(in + prefetchDistance);
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
        const __m128i bytes
            = _mm_sub_epi8(_mm_sub_epi8(characters, _mm_set1_epi8(42)), _mm_and_si128(isEscaped, _mm_set1_epi8(64)));
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

using PlacesOfSixteen = std::array<std::uint8_t, 16>;

// The same of sixteen bytes, by which of the first fifteen are dropped. Half a megabyte, of which a few kilobytes are
// in use: more than two or three are hardly ever dropped.
const std::vector<PlacesOfSixteen>& KeptOfSixteen()
{
    static const std::vector<PlacesOfSixteen> all = [] {
        std::vector<PlacesOfSixteen> kept(std::size_t{1} << 15);
        for (std::size_t dropped = 0; dropped < kept.size(); ++dropped) {
            std::size_t count = 0;
            for (std::size_t byte = 0; byte < 16; ++byte) {
                if ((dropped >> byte & 1) == 0)
                    kept[dropped][count++] = static_cast<std::uint8_t>(byte);
            }
        }
        return kept;
    }();
    return all;
}

#define AVX2 __attribute__((target("avx2,popcnt")))

// The characters one place on, behind this one.
AVX2 inline __m256i Behind(char character, __m256i characters)
{
    const __m256i before = _mm256_permute2x128_si256(_mm256_set1_epi8(character), characters, 0x21);
    return _mm256_alignr_epi8(characters, before, 15);
}

AVX2 void DecodeBlocksOf32(const char*& inPlace, const char* end, char*& outPlace, bool& atLineStart)
{
    const char* const kept = reinterpret_cast<const char*>(KeptOfSixteen().data());
    const char* const start = inPlace;
    const char* in = start;
    char* out = outPlace;
    for (auto blocks = (end - in) / 32; blocks != 0; --blocks, in += 32) {
        __builtin_prefetch(in + prefetchDistance);
        const __m256i characters = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in));
        // The one before the first block has been decoded, whatever it is.
        const __m256i before = in == start ? Behind(atLineStart ? '\n' : '\0', characters)
                                           : _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in - 1));
        const __m256i isEscape = _mm256_cmpeq_epi8(characters, _mm256_set1_epi8('='));
        const __m256i isLineFeed = _mm256_cmpeq_epi8(characters, _mm256_set1_epi8('\n'));
        const __m256i isReturn = _mm256_cmpeq_epi8(characters, _mm256_set1_epi8('\r'));
        const __m256i isDot = _mm256_cmpeq_epi8(characters, _mm256_set1_epi8('.'));
        const __m256i isEscaped = _mm256_cmpeq_epi8(before, _mm256_set1_epi8('='));
        const __m256i isAtStart = _mm256_cmpeq_epi8(before, _mm256_set1_epi8('\n'));
        const __m256i isDropped = _mm256_or_si256(isEscape, _mm256_or_si256(isLineFeed, isReturn));
        const __m256i isUnusual = _mm256_or_si256(
            _mm256_and_si256(isEscaped, isDropped), _mm256_and_si256(isAtStart, _mm256_or_si256(isEscape, isDot)));
        if (!_mm256_testz_si256(isUnusual, isUnusual))
            break;

        const __m256i bytes = _mm256_sub_epi8(
            _mm256_sub_epi8(characters, _mm256_set1_epi8(42)), _mm256_and_si256(isEscaped, _mm256_set1_epi8(64)));
        const auto dropped = static_cast<std::uint32_t>(_mm256_movemask_epi8(isDropped));
        const auto* lower = reinterpret_cast<const __m128i*>(kept + (dropped << 4 & 0x7fff0));
        const auto* upper = reinterpret_cast<const __m128i*>(kept + (dropped >> 12 & 0x7fff0));
        const __m256i places
            = _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(lower)), _mm_loadu_si128(upper), 1);
        const __m256i squeezed = _mm256_shuffle_epi8(bytes, places);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm256_castsi256_si128(squeezed));
        out -= std::popcount(dropped & 0xffff);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 16), _mm256_extracti128_si256(squeezed, 1));
        out += 32 - std::popcount(dropped >> 16);
    }
    if (in != start) {
        atLineStart = in[-1] == '\n';
        in -= in[-1] == '=' ? 1 : 0; // it is not decoded yet
    }
    inPlace = in;
    outPlace = out;
}

#define AVX512 __attribute__((target("avx512bw,avx512vbmi2,popcnt")))

AVX512 void DecodeBlocksOf64(const char*& inPlace, const char* end, char*& outPlace, bool& atLineStart)
{
    const char* in = inPlace;
    char* out = outPlace;
    std::uint64_t escapeBefore = 0;
    std::uint64_t lineStart = atLineStart ? 1 : 0;
    for (; end - in >= 64; in += 64) {
        __builtin_prefetch(in + prefetchDistance);
        const __m512i characters = _mm512_loadu_si512(in);
        const std::uint64_t escapes = _mm512_cmpeq_epi8_mask(characters, _mm512_set1_epi8('='));
        const std::uint64_t lineFeeds = _mm512_cmpeq_epi8_mask(characters, _mm512_set1_epi8('\n'));
        const std::uint64_t returns = _mm512_cmpeq_epi8_mask(characters, _mm512_set1_epi8('\r'));
        const std::uint64_t dots = _mm512_cmpeq_epi8_mask(characters, _mm512_set1_epi8('.'));
        const std::uint64_t dropped = escapes | lineFeeds | returns;
        const std::uint64_t escaped = escapes << 1 | escapeBefore;
        const std::uint64_t lineStarts = lineFeeds << 1 | lineStart;
        if (((escaped & dropped) | (lineStarts & (escapes | dots))) != 0)
            break;

        const __m512i plain = _mm512_sub_epi8(characters, _mm512_set1_epi8(42));
        const __m512i bytes = _mm512_mask_sub_epi8(plain, escaped, plain, _mm512_set1_epi8(64));
        _mm512_storeu_si512(out, _mm512_maskz_compress_epi8(~dropped, bytes));
        out += std::popcount(~dropped);
        escapeBefore = escapes >> 63;
        lineStart = lineFeeds >> 63;
    }
    inPlace = in - escapeBefore;
    outPlace = out;
    atLineStart = lineStart != 0;
}

#endif

}

YencStream::YencStream(AttachmentWriter& attachmentWriter)
    : writer(attachmentWriter)
    , decodeBlocks(DecodeNoBlocks)
{
#if HAS_VECTOR_PATHS
    if (Processor::Usable() >= Processor::Vectors::Avx512)
        decodeBlocks = DecodeBlocksOf64;
    else if (Processor::Usable() >= Processor::Vectors::Avx2)
        decodeBlocks = DecodeBlocksOf32;
    else if (Processor::Usable() >= Processor::Vectors::Ssse3)
        decodeBlocks = DecodeBlocksOf16;
#endif
}

std::size_t YencStream::Take(std::string_view text)
{
    const char* in = text.data();
    const char* const end = in + text.size();
    while (in != end && !atOwnLine) {
        const char* const stop = in + std::min<std::size_t>(static_cast<std::size_t>(end - in), chunkSize);
        const char* const before = in;
        char* const room = writer.Reserve(chunkSize);
        const char* const roomEnd = TakeChunk(in, stop, end, room);
        const auto count = static_cast<std::size_t>(roomEnd - room);
        checksum = libdeflate_crc32(checksum, room, count);
        writer.Add(count);
        if (in == before)
            break;
    }
    return static_cast<std::size_t>(in - text.data());
}

// Begins nothing at or behind `stop`, yet may look on up to `end`.
char* YencStream::TakeChunk(const char*& in, const char* stop, const char* end, char* out)
{
    while (in < stop) {
        decodeBlocks(in, stop, out, atLineStart);
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
bool YencStream::TakeCharacter(const char*& in, const char* end, char*& out)
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
