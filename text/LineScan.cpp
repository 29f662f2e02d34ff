#include "text/LineScan.h"

#include <bit>
#include <cstring>

#if defined(__SSE2__) && defined(__x86_64__)
#define DECK_LINE_SCAN_SSE2
#include <emmintrin.h>
#endif

#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

bool IsHead(char c)
{
    return c == '-' || Service::IsAlpha(c);
}

/// Goes on from `scan.lineStart`, which begins a line.
LineScan ScanByLines(LineScan scan, const char* end)
{
    while (scan.lineStart < end) {
        if (IsHead(*scan.lineStart)) {
            scan.head = scan.lineStart;
            return scan;
        }
        const void* found = std::memchr(scan.lineStart, '\n', static_cast<std::size_t>(end - scan.lineStart));
        if (!found) return scan;
        scan.lineStart = static_cast<const char*>(found) + 1;
        ++scan.lines;
    }
    return scan;
}

#if defined(DECK_LINE_SCAN_SSE2)

struct Masks
{
    std::uint64_t lineEnds = 0;
    std::uint64_t heads = 0;
    /// The number of line ends, in two halves.
    __m128i lineEndCount = _mm_setzero_si128();
};

/// One bit for each of the 64 bytes: is it a line end, could it begin a keyword line.
Masks Classify(const char* bytes)
{
    const __m128i lineEnd = _mm_set1_epi8('\n');
    const __m128i dash = _mm_set1_epi8('-');
    const __m128i lower = _mm_set1_epi8(0x20);
    const __m128i letterA = _mm_set1_epi8('a');
    const __m128i last = _mm_set1_epi8(25);
    Masks masks;
    __m128i count = _mm_setzero_si128();
    for (int part = 0; part < 4; ++part) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + 16 * part));
        const __m128i letter = _mm_sub_epi8(_mm_or_si128(block, lower), letterA);
        const __m128i head =
            _mm_or_si128(_mm_cmpeq_epi8(_mm_min_epu8(letter, last), letter), _mm_cmpeq_epi8(block, dash));
        const __m128i end = _mm_cmpeq_epi8(block, lineEnd);
        count = _mm_sub_epi8(count, end);
        masks.lineEnds |= static_cast<std::uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(end))) << (16 * part);
        masks.heads |= static_cast<std::uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(head))) << (16 * part);
    }
    masks.lineEndCount = _mm_sad_epu8(count, _mm_setzero_si128());
    return masks;
}

std::int64_t Sum(__m128i halves)
{
    return _mm_cvtsi128_si64(halves) + _mm_cvtsi128_si64(_mm_unpackhi_epi64(halves, halves));
}

#endif

} // namespace

LineScan FindLineHead(const char* first, const char* end)
{
    LineScan scan;
    scan.lineStart = first;
#if defined(DECK_LINE_SCAN_SSE2)
    const char* block = first;
    std::uint64_t atLineStart = 1;
    __m128i lines = _mm_setzero_si128();
    while (end - block >= 64) {
        const Masks masks = Classify(block);
        const std::uint64_t starts = (masks.lineEnds << 1) | atLineStart;
        if (const std::uint64_t hits = starts & masks.heads) {
            const int index = std::countr_zero(hits);
            scan.head = block + index;
            scan.lineStart = scan.head;
            scan.lines = Sum(lines) + std::popcount(masks.lineEnds & ((std::uint64_t{1} << index) - 1));
            return scan;
        }
        if (masks.lineEnds) scan.lineStart = block + (64 - std::countl_zero(masks.lineEnds));
        lines = _mm_add_epi64(lines, masks.lineEndCount);
        atLineStart = masks.lineEnds >> 63;
        block += 64;
    }
    scan.lines = Sum(lines);
    // The unfinished line's head was no candidate, or stands in the rest.
    if (scan.lineStart < block) {
        const void* found = std::memchr(block, '\n', static_cast<std::size_t>(end - block));
        if (!found) return scan;
        scan.lineStart = static_cast<const char*>(found) + 1;
        ++scan.lines;
    }
#endif
    return ScanByLines(scan, end);
}

} // namespace Tarn::Fjel::Core::DeckManager
