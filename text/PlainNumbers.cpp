#include "text/PlainNumbers.h"

#include <array>
#include <bit>

#if defined(__SSE2__) && defined(__x86_64__)
#define DECK_PLAIN_NUMBERS_SSE2
#include <emmintrin.h>
#endif

#include <tarn/service/Strings.h>

#include "text/Tokenizer.h"

namespace Tarn::Fjel::Core::DeckManager {

namespace {

constexpr std::ptrdiff_t mostCountDigits = 9;
constexpr auto mostColumns = static_cast<std::ptrdiff_t>(Tokenizer::MaxLineLength);

// Byte by byte: a machine whose states are what may come next.

enum class Byte : unsigned char
{
    Other,
    Blank,
    LineEnd,
    Digit,
    Point,
    Sign,
    Exponent,
    Star
};

constexpr std::array<Byte, 256> MakeBytes()
{
    std::array<Byte, 256> bytes{};
    for (const char c : {' ', '\t', '\v', '\f', '\r'})
        bytes[static_cast<unsigned char>(c)] = Byte::Blank;
    for (const char c : {'0', '1', '2', '3', '4', '5', '6', '7', '8', '9'})
        bytes[static_cast<unsigned char>(c)] = Byte::Digit;
    for (const char c : {'e', 'E', 'd', 'D'})
        bytes[static_cast<unsigned char>(c)] = Byte::Exponent;
    bytes['\n'] = Byte::LineEnd;
    bytes['.'] = Byte::Point;
    bytes['+'] = bytes['-'] = Byte::Sign;
    bytes['*'] = Byte::Star;
    return bytes;
}

constexpr std::array<Byte, 256> byteOf = MakeBytes();

enum class State : unsigned char
{
    Bad,
    Between,        ///< no token has begun
    Count,          ///< digits that may yet be a count
    Repeated,       ///< behind a repeat character
    Signed,         ///< behind a number's sign
    Whole,          ///< digits that can't be a count
    BarePoint,      ///< behind a point without a digit ahead of it
    Fraction,       ///< behind a point, with a digit on one of its sides
    Exponent,       ///< behind its letter
    SignedExponent, ///< behind its sign
    ExponentDigits
};

constexpr State Next(State state, Byte byte)
{
    const bool ends = byte == Byte::Blank || byte == Byte::LineEnd;
    switch (state) {
    case State::Between:
    case State::Repeated:
        if (ends) return State::Between;
        if (byte == Byte::Digit) return state == State::Between ? State::Count : State::Whole;
        if (byte == Byte::Sign) return State::Signed;
        return byte == Byte::Point ? State::BarePoint : State::Bad;
    case State::Signed:
        if (byte == Byte::Digit) return State::Whole;
        return byte == Byte::Point ? State::BarePoint : State::Bad;
    case State::Count:
    case State::Whole:
        if (byte == Byte::Digit) return state;
        if (byte == Byte::Star) return state == State::Count ? State::Repeated : State::Bad;
        if (byte == Byte::Point) return State::Fraction;
        if (byte == Byte::Exponent) return State::Exponent;
        return ends ? State::Between : State::Bad;
    case State::BarePoint:
        return byte == Byte::Digit ? State::Fraction : State::Bad;
    case State::Fraction:
        if (byte == Byte::Digit) return State::Fraction;
        if (byte == Byte::Exponent) return State::Exponent;
        return ends ? State::Between : State::Bad;
    case State::Exponent:
        if (byte == Byte::Sign) return State::SignedExponent;
        [[fallthrough]];
    case State::SignedExponent:
        return byte == Byte::Digit ? State::ExponentDigits : State::Bad;
    case State::ExponentDigits:
        if (byte == Byte::Digit) return State::ExponentDigits;
        return ends ? State::Between : State::Bad;
    default:
        return State::Bad;
    }
}

/// The count ahead of the repeat character at `star`; 0 for one that isn't plain. REQUIRES: digits stand there, behind
/// `begin` or a character that is none.
std::int64_t CountAhead(const char* star, const char* begin)
{
    std::int64_t count = 0;
    std::int64_t power = 1;
    const char* at = star;
    for (; at != begin && Service::IsDigit(at[-1]); --at) {
        if (star - at == mostCountDigits) return 0;
        count += power * (at[-1] - '0');
        power *= 10;
    }
    return count;
}

#if defined(DECK_PLAIN_NUMBERS_SSE2)

// 64 bytes at a time: one bit for each of them, and rules on what may stand behind what.

using Bits = std::uint64_t;

struct Block
{
    Bits digits = 0;
    Bits points = 0;
    Bits blanks = 0; ///< line ends too
    Bits lineEnds = 0;
};

struct RareBytes
{
    Bits signs = 0;
    Bits exponents = 0;
    Bits stars = 0;
};

__m128i Load(const char* bytes)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

void Put(Bits& bits, __m128i mask, int part)
{
    bits |= static_cast<Bits>(static_cast<unsigned>(_mm_movemask_epi8(mask))) << (16 * part);
}

/// The bytes from `first` on, `count` of them.
__m128i InRange(__m128i bytes, char first, char count)
{
    const __m128i offset = _mm_sub_epi8(bytes, _mm_set1_epi8(first));
    return _mm_cmpeq_epi8(_mm_min_epu8(offset, _mm_set1_epi8(static_cast<char>(count - 1))), offset);
}

Block Classify(const char* bytes)
{
    Block block;
    for (int part = 0; part < 4; ++part) {
        const __m128i piece = Load(bytes + 16 * part);
        Put(block.digits, InRange(piece, '0', 10), part);
        Put(block.points, _mm_cmpeq_epi8(piece, _mm_set1_epi8('.')), part);
        Put(block.blanks, _mm_or_si128(InRange(piece, '\t', 5), _mm_cmpeq_epi8(piece, _mm_set1_epi8(' '))), part);
        Put(block.lineEnds, _mm_cmpeq_epi8(piece, _mm_set1_epi8('\n')), part);
    }
    return block;
}

RareBytes ClassifyRare(const char* bytes)
{
    RareBytes rare;
    for (int part = 0; part < 4; ++part) {
        const __m128i piece = Load(bytes + 16 * part);
        const __m128i lower = _mm_or_si128(piece, _mm_set1_epi8(0x20));
        Put(rare.signs,
            _mm_or_si128(_mm_cmpeq_epi8(piece, _mm_set1_epi8('-')), _mm_cmpeq_epi8(piece, _mm_set1_epi8('+'))), part);
        Put(rare.exponents,
            _mm_or_si128(_mm_cmpeq_epi8(lower, _mm_set1_epi8('e')), _mm_cmpeq_epi8(lower, _mm_set1_epi8('d'))), part);
        Put(rare.stars, _mm_cmpeq_epi8(piece, _mm_set1_epi8('*')), part);
    }
    return rare;
}

/// What a block hands on to the one behind it.
class Carries
{
public:
    /// The bytes that stand behind one of `bits`.
    Bits Behind(Bits bits, Bits& carry)
    {
        const Bits behind = (bits << 1) | carry;
        carry = bits >> 63;
        return behind;
    }

    /// Where the runs of digits end that begin at `starts`: the first byte behind each.
    Bits EndsOfRuns(Bits digits, Bits starts, Bits& carry)
    {
        const Bits started = digits + (starts & digits);
        const Bits sum = started + carry;
        carry = static_cast<Bits>(started < digits) | static_cast<Bits>(sum < started);
        return sum & ~digits;
    }

    Bits blank = 1;
    Bits digit = 0;
    Bits point = 0;
    Bits barePoint = 0;
    Bits sign = 0;
    Bits exponentSign = 0;
    Bits exponent = 0;
    Bits star = 0;
    Bits countRun = 0;
    Bits fractionRun = 0;
    Bits exponentRun = 0;
};

#endif

} // namespace

PlainNumbers::Passed PlainNumbers::PassByteByByte(std::string_view text, Rules rules, std::int64_t most)
{
    Passed passed;
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    const char* line = begin;
    std::int64_t values = 0; // of the line
    State state = State::Between;
    for (const char* at = begin; at != end; ++at) {
        const Byte byte = byteOf[static_cast<unsigned char>(*at)];
        if (rules.kind == Kind::Integer && (byte == Byte::Point || byte == Byte::Exponent)) return passed;
        const State next = Next(state, byte);
        if (next == State::Bad) return passed;
        if (state == State::Between && next != State::Between) ++values;
        if (next == State::Repeated) {
            const std::int64_t count = CountAhead(at, line);
            if (count == 0) return passed;
            values += count - 1;
        }
        if (state == State::Repeated && next == State::Between && !rules.allowsDefaults) return passed;
        state = next;
        if (byte != Byte::LineEnd) continue;
        if (at - line > mostColumns || values > most - passed.values) return passed;
        line = at + 1;
        passed.bytes = static_cast<std::size_t>(line - begin);
        passed.values += values;
        values = 0;
    }
    return passed;
}

#if defined(DECK_PLAIN_NUMBERS_SSE2)

namespace {

/// The values whose tokens begin in the text, which begins with a line and holds plain lines alone.
std::int64_t ValuesIn(std::string_view text)
{
    std::int64_t values = 0;
    bool between = true;
    for (const char& c : text) {
        const bool isBlank = Service::IsSpace(c);
        if (between && !isBlank) ++values;
        if (c == '*') values += CountAhead(&c, text.data()) - 1;
        between = isBlank;
    }
    return values;
}

/// Goes through a text by blocks, as far as these are plain and hold no more than `most` values.
class BlockPass
{
public:
    BlockPass(std::string_view text, PlainNumbers::Rules rules, std::int64_t most)
        : m_begin(text.data()), m_line(m_begin), m_rules(rules), m_most(most)
    {
        const char* const end = m_begin + text.size();
        const char* block = m_begin;
        while (end - block >= blockSize && Take(block))
            block += blockSize;
        m_values -= ValuesIn(std::string_view(m_line, static_cast<std::size_t>(block - m_line)));
    }

    /// The lines that end in these blocks.
    PlainNumbers::Passed Result() const { return {static_cast<std::size_t>(m_line - m_begin), m_values}; }

private:
    bool Take(const char* bytes)
    {
        const Block block = Classify(bytes);
        const Bits usual = block.digits | block.points | block.blanks;
        RareBytes rare;
        if (~usual != 0) rare = ClassifyRare(bytes);
        const Bits starts = ~block.blanks & m_carries.Behind(block.blanks, m_carries.blank);
        Bits bad = ~(usual | rare.signs | rare.exponents | rare.stars) | Misplaced(block, rare, starts);
        if (m_rules.kind == PlainNumbers::Kind::Integer) bad |= block.points | rare.exponents;
        if (bad != 0) return false;

        std::int64_t values = m_values + std::popcount(starts);
        for (Bits stars = rare.stars; stars != 0; stars &= stars - 1) {
            const std::int64_t count = CountAhead(bytes + std::countr_zero(stars), m_begin);
            if (count == 0) return false;
            values += count - 1;
        }
        if (values > m_most) return false;
        if (block.lineEnds == 0) {
            if (bytes + blockSize - m_line > mostColumns) return false;
        } else {
            if (bytes + std::countr_zero(block.lineEnds) - m_line > mostColumns) return false;
            m_line = bytes + blockSize - std::countl_zero(block.lineEnds);
        }
        m_values = values;
        return true;
    }

    Bits Misplaced(const Block& block, const RareBytes& rare, Bits starts)
    {
        Carries& carries = m_carries;
        const Bits digits = block.digits;
        const Bits behindDigit = carries.Behind(digits, carries.digit);
        const Bits behindPoint = carries.Behind(block.points, carries.point);
        const Bits behindBarePoint = carries.Behind(block.points & ~behindDigit, carries.barePoint);
        const Bits countEnds = carries.EndsOfRuns(digits, starts, carries.countRun);
        const Bits fractionEnds = carries.EndsOfRuns(digits, behindPoint, carries.fractionRun);
        // A point ends digits once in a token, and has one on either side.
        Bits bad = (fractionEnds & block.points) | (behindBarePoint & ~digits);
        const Bits rareCarries =
            carries.sign | carries.exponentSign | carries.exponent | carries.star | carries.exponentRun;
        if ((rare.signs | rare.exponents | rare.stars | rareCarries) == 0)
            return bad | (block.points & ~(behindDigit | starts));

        const Bits behindSign = carries.Behind(rare.signs, carries.sign);
        const Bits behindExponent = carries.Behind(rare.exponents, carries.exponent);
        const Bits behindExponentSign = carries.Behind(rare.signs & behindExponent, carries.exponentSign);
        const Bits behindStar = carries.Behind(rare.stars, carries.star);
        const Bits exponentEnds = carries.EndsOfRuns(digits, behindExponent | behindExponentSign, carries.exponentRun);
        bad |= exponentEnds & ~block.blanks;
        bad |= rare.stars & ~countEnds;
        bad |= rare.signs & ~(starts | behindExponent | behindStar);
        bad |= block.points & ~(behindDigit | starts | behindStar | (behindSign & ~behindExponentSign));
        bad |= rare.exponents & ~(behindDigit | behindPoint);
        bad |= block.blanks & (behindSign | behindExponent);
        if (!m_rules.allowsDefaults) bad |= block.blanks & behindStar;
        return bad;
    }

    static constexpr std::ptrdiff_t blockSize = 64;

    const char* m_begin;
    const char* m_line; ///< the line that has not ended yet
    PlainNumbers::Rules m_rules;
    std::int64_t m_most;
    std::int64_t m_values = 0; ///< of all blocks taken; in the end without those of that line
    Carries m_carries;
};

} // namespace

PlainNumbers::Passed PlainNumbers::Pass(std::string_view text, Rules rules, std::int64_t most)
{
    const Passed blocks = BlockPass(text, rules, most).Result();
    const Passed rest = PassByteByByte(text.substr(blocks.bytes), rules, most - blocks.values);
    return {blocks.bytes + rest.bytes, blocks.values + rest.values};
}

#else

PlainNumbers::Passed PlainNumbers::Pass(std::string_view text, Rules rules, std::int64_t most)
{
    return PassByteByByte(text, rules, most);
}

#endif

} // namespace Tarn::Fjel::Core::DeckManager
