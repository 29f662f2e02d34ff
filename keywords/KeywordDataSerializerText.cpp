// How values are spelt.

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <exception>

#include <deckmanager/VeldaneDeckInfo.h>
#include <fmt/printf.h>
#include <tarn/service/Strings.h>

#include "keywords/KeywordDataSerializer.h"

namespace Tarn::Fjel::Core::DeckManager {

namespace {

/// The longest text that a format of the metadata may give.
constexpr std::size_t LongestFormatted = 64;

/// Longer words are read in full only in quotes.
constexpr std::size_t LongestBareWord = 120;

/// The value by a printf format. Empty when the format yields nothing, too much, or isn't one.
template <class Value>
std::string Formatted(const char* format, Value value)
{
    try {
        std::string text = fmt::sprintf(std::string_view(format), value);
        if (text.size() > LongestFormatted) text.clear();
        return text;
    } catch (const std::exception&) {
        return {};
    }
}

#if defined(__SIZEOF_INT128__)

__extension__ using Wide = unsigned __int128;

constexpr auto powersOfTen = [] {
    std::array<std::uint64_t, 19> powers{};
    std::uint64_t power = 1;
    for (std::uint64_t& entry : powers) {
        entry = power;
        power *= 10;
    }
    return powers;
}();

constexpr auto digitPairs = [] {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

/// Writes a number with that many digits, zeros ahead.
void WriteDigits(std::uint64_t number, int digits, char* out)
{
    for (; digits >= 2; digits -= 2, number /= 100)
        std::memcpy(out + digits - 2, digitPairs.data() + 2 * (number % 100), 2);
    if (digits == 1) *out = static_cast<char>('0' + number % 10);
}

/// The digits of numbers that get no exponent, which are most of those in a deck. The number is an integer times a
/// power of two; times a power of ten it still fits into 128 bits, so that the 15 digits come out exactly, rounded
/// half to even. Null for any other number.
char* WritePlainReal(double value, char* out)
{
    const double magnitude = std::fabs(value);
    if (!(magnitude >= 1e-4 && magnitude < 1e15)) return nullptr;
    const auto bits = std::bit_cast<std::uint64_t>(magnitude);
    const int shift = 1075 - static_cast<int>(bits >> 52); // magnitude is mantissa / 2^shift, and 3 <= shift <= 66
    const std::uint64_t mantissa = (bits & 0xFFFFFFFFFFFFF) | 0x10000000000000;

    // From the binary exponent to the decimal one, or to one less.
    const int estimate = ((52 - shift) * 1233) >> 12;
    int decimals = std::min(14 - estimate, 18);
    std::uint64_t digits = 0;
    for (;; --decimals) {
        if (decimals < 0) return nullptr; // rounds to what has an exponent
        const Wide scaled = static_cast<Wide>(mantissa) * powersOfTen[static_cast<std::size_t>(decimals)];
        digits = static_cast<std::uint64_t>(scaled >> shift);
        const Wide rest = scaled - (static_cast<Wide>(digits) << shift);
        const Wide half = static_cast<Wide>(1) << (shift - 1);
        if (rest > half || (rest == half && (digits & 1) != 0)) ++digits;
        if (digits < powersOfTen[15]) break;
    }
    for (const int zeros : {8, 4, 2, 1}) {
        const std::uint64_t power = powersOfTen[static_cast<std::size_t>(zeros)];
        while (decimals >= zeros && digits % power == 0) {
            digits /= power;
            decimals -= zeros;
        }
    }

    if (value < 0) *out++ = '-';
    const std::uint64_t unit = powersOfTen[static_cast<std::size_t>(decimals)];
    const std::uint64_t whole = digits / unit;
    if (whole < 10)
        *out++ = static_cast<char>('0' + whole);
    else
        out = std::to_chars(out, out + 20, whole).ptr;
    if (decimals == 0) return out;
    *out++ = '.';
    WriteDigits(digits - whole * unit, decimals, out);
    return out + decimals;
}

#else

char* WritePlainReal(double, char*)
{
    return nullptr;
}

#endif

/// Something that ends a token, repeats it, or begins a comment.
bool HoldsSpecialCharacters(std::string_view text, bool allowCommas)
{
    char before = 0;
    for (const char c : text) {
        // White space other than the blank would part the text as well.
        if (c == '*' || c == '/' || c == '\\' || Service::IsSpace(c) || (c == ',' && !allowCommas) ||
            (c == VeldaneDeckInfo::DASH && before == VeldaneDeckInfo::DASH))
            return true;
        before = c;
    }
    return false;
}

} // namespace

std::string_view KeywordDataSerializer::FormatInteger(int value, const char* format, NumberBuffer& buffer)
{
    if (format != nullptr) {
        const std::string text = Formatted(format, value);
        if (!text.empty()) return {buffer.data(), text.copy(buffer.data(), buffer.size())};
    }
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    return {buffer.data(), static_cast<std::size_t>(end - buffer.data())};
}

std::string_view KeywordDataSerializer::FormatReal(double value, const char* format, NumberBuffer& buffer)
{
    if (format != nullptr) {
        const std::string text = Formatted(format, value);
        if (!text.empty()) return {buffer.data(), text.copy(buffer.data(), buffer.size())};
    }
    char* const begin = buffer.data();
    if (char* const end = WritePlainReal(value, begin)) return {begin, static_cast<std::size_t>(end - begin)};
    if (value == 0.0 && !std::signbit(value)) return "0.0";

    char* end = std::to_chars(begin, begin + buffer.size(), value, std::chars_format::general, 15).ptr;
    if (!std::isfinite(value)) {
        for (char* at = begin; at != end; ++at)
            *at = Service::ToUpper(*at);
        return {begin, static_cast<std::size_t>(end - begin)};
    }
    // 1e+20 becomes 1.0E+20, and 1.5e-05 becomes 1.5E-5.
    char* mark = begin;
    bool hasPoint = false;
    for (; mark != end && *mark != 'e'; ++mark)
        hasPoint = hasPoint || *mark == '.';
    if (mark != end) {
        const char sign = mark[1];
        const char* digits = mark + 2;
        while (digits + 1 < end && *digits == '0')
            ++digits;
        const std::string_view exponent(digits, static_cast<std::size_t>(end - digits));
        char kept[8];
        const std::size_t size = exponent.copy(kept, sizeof kept);
        if (!hasPoint) {
            *mark++ = '.';
            *mark++ = '0';
        }
        *mark++ = 'E';
        *mark++ = sign;
        for (std::size_t i = 0; i < size; ++i)
            *mark++ = kept[i];
        end = mark;
    }
    return {begin, static_cast<std::size_t>(end - begin)};
}

std::string_view KeywordDataSerializer::Quote(std::string_view text, std::string& scratch)
{
    const bool opened = text.starts_with(VeldaneDeckInfo::QUOTE);
    const bool closed = text.ends_with(VeldaneDeckInfo::QUOTE);
    if (opened && closed) return text;
    scratch.clear();
    if (!opened) scratch += VeldaneDeckInfo::QUOTE;
    scratch += text;
    if (!closed) scratch += VeldaneDeckInfo::QUOTE;
    return scratch;
}

std::string_view KeywordDataSerializer::QuoteIfNeeded(std::string_view text, bool allowCommas, std::string& scratch)
{
    const bool needed = text.empty() || Service::IsDigit(text.front()) || text.size() > LongestBareWord ||
                        HoldsSpecialCharacters(text, allowCommas);
    return needed ? Quote(text, scratch) : text;
}

std::string_view KeywordDataSerializer::QuoteExpressionToken(std::string_view text, bool allowCommas,
                                                             std::string& scratch)
{
    const bool needed = text.empty() || (text.size() > 1 && HoldsSpecialCharacters(text, allowCommas));
    return needed ? Quote(text, scratch) : text;
}

} // namespace Tarn::Fjel::Core::DeckManager
