#include "decoder/SixBit.h"

#include "decoder/Processor.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#define HAS_AVX2_PATH 1
#else
#define HAS_AVX2_PATH 0
#endif

namespace {

constexpr std::uint32_t foreignFlag = 1U << 31;
constexpr std::uint32_t backtickFlag = 1U << 30;

constexpr int ValueOf(SixBitAlphabet alphabet, int character)
{
    if (alphabet == SixBitAlphabet::Uuencode)
        return character >= ' ' && character <= '`' ? (character - ' ') & 63 : -1;
    if (character >= 'A' && character <= 'Z')
        return character - 'A';
    if (character >= 'a' && character <= 'z')
        return character - 'a' + 26;
    if (character >= '0' && character <= '9')
        return character - '0' + 52;
    return character == '+' ? 62 : character == '/' ? 63 : -1;
}

// For each of the four places in a group, what a character there adds to the three bytes. They lie in the low 24 bits
// in the order of their memory, the first in the lowest eight, and the flags above them, so that one "or" of four table
// entries gives a group and all that is to be known about it.
struct Tables {
    std::array<std::array<std::uint32_t, 256>, 4> places{};

    constexpr explicit Tables(SixBitAlphabet alphabet)
    {
        for (int character = 0; character < 256; ++character) {
            const auto index = static_cast<std::size_t>(character);
            const int found = ValueOf(alphabet, character);
            const auto value = static_cast<std::uint32_t>(found);
            if (found < 0) {
                for (auto& place : places)
                    place[index] = foreignFlag;
                continue;
            }
            places[0][index] = value << 2;
            places[1][index] = value >> 4 | (value & 15) << 12;
            places[2][index] = value >> 2 << 8 | (value & 3) << 22;
            places[3][index] = value << 16;
            if (alphabet == SixBitAlphabet::Uuencode && character == '`') {
                for (auto& place : places)
                    place[index] |= backtickFlag;
            }
        }
    }
};

constexpr Tables uuencodeTables{SixBitAlphabet::Uuencode};
constexpr Tables base64Tables{SixBitAlphabet::Base64};

void StoreThree(char* out, std::uint32_t bytes)
{
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(out, &bytes, 4); // the fourth is overwritten by the next group
    } else {
        for (int i = 0; i < 3; ++i)
            out[i] = static_cast<char>(bytes >> 8 * i);
    }
}

template <const Tables& Table> SixBitSeen DecodeByTable(const char* in, std::size_t groups, char* out)
{
    std::uint32_t seen = 0;
    for (std::size_t group = 0; group < groups; ++group, in += 4, out += 3) {
        std::uint32_t bytes = 0;
        for (std::size_t place = 0; place < 4; ++place)
            bytes |= Table.places[place][static_cast<unsigned char>(in[place])];
        seen |= bytes;
        StoreThree(out, bytes);
    }
    return {(seen & foreignFlag) != 0, (seen & backtickFlag) != 0};
}

using GroupDecoder = SixBitSeen (*)(const char* in, std::size_t groups, char* out);

// Decodes lines of the shape from the front of `text`, at most `most`, and returns their number. The loop is built once
// around each of the decoders for a line, so that it has them in line.
template <GroupDecoder Decode>
[[gnu::always_inline]] inline std::size_t LineLoop(
    const LineShape& shape, std::string_view text, std::size_t most, char* out, bool& backtickSeen)
{
    const LineShape line = shape;
    const std::size_t before = line.first != 0 ? 1 : 0;
    const std::size_t size = line.Size();
    const std::size_t last = size - 1;
    const std::size_t lines = std::min(most, text.size() / size);
    const char* in = text.data();
    bool anyBacktick = false;
    std::size_t done = 0;
    for (; done < lines; ++done, in += size, out += 3 * line.groups) {
        __builtin_prefetch(in + 2048); // a body in memory is cold
        if (in[last] != '\n' || (line.lineEndSize == 2 && in[last - 1] != '\r') || (before != 0 && in[0] != line.first))
            break;
        const SixBitSeen seen = Decode(in + before, line.groups, out);
        if (seen.foreign)
            break;
        anyBacktick = anyBacktick || seen.backtick;
    }
    backtickSeen = backtickSeen || anyBacktick;
    return done;
}

using LineDecoder
    = std::size_t (*)(const LineShape& shape, std::string_view text, std::size_t most, char* out, bool& backtickSeen);

template <const Tables& Table>
std::size_t DecodeLinesByTable(
    const LineShape& shape, std::string_view text, std::size_t most, char* out, bool& backtickSeen)
{
    return LineLoop<DecodeByTable<Table>>(shape, text, most, out, backtickSeen);
}

#if HAS_AVX2_PATH

// With AVX2, eight groups are decoded at a time. The last eight may overlap the ones before them, so that any number of
// groups from eight on is done without touching what lies behind the characters.
#define AVX2 __attribute__((target("avx2")))

constexpr std::size_t groupsAtATime = 8;

bool HasAvx2() { return Processor::Usable() >= Processor::Vectors::Avx2; }

// 32 values of six bits become 24 bytes, with eight bytes of rubbish behind them.
AVX2 inline void StorePacked(char* out, __m256i values)
{
    // 00aaaaaa 00bbbbbb 00cccccc 00dddddd  ->  aaaaaabb bbbb in 16 bits each  ->  24 bits in each 32
    const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi16(0x0140));
    const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
    const __m256i order = _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1, //
        2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
    const __m256i halves = _mm256_shuffle_epi8(groups, order);
    const __m256i together = _mm256_permutevar8x32_epi32(halves, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), together);
}

AVX2 inline __m256i Load(const char* in) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in)); }

AVX2 inline SixBitSeen DecodeUuencodeByAvx2(const char* in, std::size_t groups, char* out)
{
    __m256i highest = _mm256_setzero_si256();
    for (std::size_t group = 0;;) {
        const __m256i distances = _mm256_sub_epi8(Load(in + 4 * group), _mm256_set1_epi8(' '));
        highest = _mm256_max_epu8(highest, distances);
        StorePacked(out + 3 * group, _mm256_and_si256(distances, _mm256_set1_epi8(63)));
        if (group + groupsAtATime == groups)
            break;
        group = std::min(group + groupsAtATime, groups - groupsAtATime);
    }
    // The distance of the backtick is 64, and that of everything outside the alphabet more.
    const __m256i above = _mm256_subs_epu8(highest, _mm256_set1_epi8(64));
    const __m256i backticks = _mm256_cmpeq_epi8(highest, _mm256_set1_epi8(64));
    return {_mm256_testz_si256(above, above) == 0, _mm256_testz_si256(backticks, backticks) == 0};
}

AVX2 inline SixBitSeen DecodeBase64ByAvx2(const char* in, std::size_t groups, char* out)
{
    // The upper half of a character is the row of ASCII it stands in: row 2 has "+" and "/", row 3 the digits, 4 and 5
    // the capitals, 6 and 7 the small letters. In each, one stretch of characters belongs to the alphabet, all at the
    // same distance from their values. The "/" would be a second one in its row, and is given row 1, which has none.
    // The stretches of the other rows are empty: their ends are characters of another row.
    const __m256i lowest = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(-1, '/', '+', '0', 'A', 'P', 'a', 'p', -1, -1, -1, -1, -1, -1, -1, -1));
    const __m256i highest
        = _mm256_broadcastsi128_si256(_mm_setr_epi8(-1, '/', '+', '9', 'O', 'Z', 'o', 'z', 0, 0, 0, 0, 0, 0, 0, 0));
    const __m256i distance = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(0, 63 - '/', 62 - '+', 52 - '0', -'A', -'A', 26 - 'a', 26 - 'a', 0, 0, 0, 0, 0, 0, 0, 0));

    __m256i allValid = _mm256_set1_epi8(-1);
    for (std::size_t group = 0;;) {
        const __m256i characters = Load(in + 4 * group);
        const __m256i upperHalves = _mm256_and_si256(_mm256_srli_epi16(characters, 4), _mm256_set1_epi8(15));
        const __m256i slashes = _mm256_cmpeq_epi8(characters, _mm256_set1_epi8('/')); // -1 each
        const __m256i rows = _mm256_add_epi8(upperHalves, slashes);
        const __m256i clamped = _mm256_min_epu8(
            _mm256_max_epu8(characters, _mm256_shuffle_epi8(lowest, rows)), _mm256_shuffle_epi8(highest, rows));
        allValid = _mm256_and_si256(allValid, _mm256_cmpeq_epi8(clamped, characters));
        StorePacked(out + 3 * group, _mm256_add_epi8(characters, _mm256_shuffle_epi8(distance, rows)));
        if (group + groupsAtATime == groups)
            break;
        group = std::min(group + groupsAtATime, groups - groupsAtATime);
    }
    return {_mm256_movemask_epi8(allValid) != -1, false};
}

template <GroupDecoder Decode>
AVX2 std::size_t DecodeLinesByAvx2(
    const LineShape& shape, std::string_view text, std::size_t most, char* out, bool& backtickSeen)
{
    return LineLoop<Decode>(shape, text, most, out, backtickSeen);
}

#endif

LineDecoder LineLoopFor(SixBitAlphabet alphabet, [[maybe_unused]] std::size_t groups)
{
    const bool uuencode = alphabet == SixBitAlphabet::Uuencode;
#if HAS_AVX2_PATH
    if (HasAvx2() && groups >= groupsAtATime)
        return uuencode ? DecodeLinesByAvx2<DecodeUuencodeByAvx2> : DecodeLinesByAvx2<DecodeBase64ByAvx2>;
#endif
    return uuencode ? DecodeLinesByTable<uuencodeTables> : DecodeLinesByTable<base64Tables>;
}

}

int SixBitValue(SixBitAlphabet alphabet, char character)
{
    return ValueOf(alphabet, static_cast<unsigned char>(character));
}

SixBitSeen DecodeGroups(SixBitAlphabet alphabet, const char* in, std::size_t groups, char* out)
{
    const bool uuencode = alphabet == SixBitAlphabet::Uuencode;
#if HAS_AVX2_PATH
    if (HasAvx2() && groups >= groupsAtATime)
        return uuencode ? DecodeUuencodeByAvx2(in, groups, out) : DecodeBase64ByAvx2(in, groups, out);
#endif
    return (uuencode ? DecodeByTable<uuencodeTables> : DecodeByTable<base64Tables>)(in, groups, out);
}

std::size_t DecodeLines(SixBitAlphabet alphabet, const LineShape& shape, std::string_view ahead,
    AttachmentWriter& writer, bool& backtickSeen)
{
    const std::size_t bytes = 3 * shape.groups;
    if (bytes == 0 || bytes > AttachmentWriter::largestReserve || shape.lineEndSize < 1 || shape.lineEndSize > 2)
        return 0;

    const auto decode = LineLoopFor(alphabet, shape.groups);
    const std::size_t linesAtATime = AttachmentWriter::largestReserve / bytes;
    std::string_view rest = ahead;
    for (;;) {
        char* const room = writer.Reserve(linesAtATime * bytes);
        const std::size_t lines = decode(shape, rest, linesAtATime, room, backtickSeen);
        writer.Add(lines * bytes);
        rest.remove_prefix(lines * shape.Size());
        if (lines < linesAtATime)
            return ahead.size() - rest.size();
    }
}
