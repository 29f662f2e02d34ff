#pragma once

#include <cfloat>
#include <cstddef>
#include <cstdint>

namespace Tarn::Fjel::Core::DeckManager {

/// Numbers in the forms that decks are full of, at a few nanoseconds each. Both functions take the longest number at
/// `at`, as `std::from_chars` would, and move `at` behind it; they refuse, and move nothing, what is longer, rarer or
/// no number at all. What they take has the very value that `std::from_chars` gives.
namespace ShortNumbers {

/// At most nine digits, with a minus sign or without.
inline bool TakeInteger(const char*& at, const char* end, int& value)
{
    const char* next = at;
    const bool negative = next != end && *next == '-';
    if (negative) ++next;
    const char* const first = next;
    unsigned number = 0;
    for (; next != end; ++next) {
        const unsigned digit = static_cast<unsigned char>(*next) - static_cast<unsigned>('0');
        if (digit > 9) break;
        if (next - first == 9) return false;
        number = number * 10 + digit;
    }
    if (next == first) return false;
    value = negative ? -static_cast<int>(number) : static_cast<int>(number);
    at = next;
    return true;
}

/// A decimal number whose digits make an integer that a double holds exactly, times a power of ten that a double holds
/// exactly: one multiplication or division then rounds as correctly as the whole conversion would.
inline bool TakeReal(const char*& at, const char* end, double& value)
{
#if FLT_EVAL_METHOD == 0
    static constexpr double powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                        1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    constexpr int largestPower = 22;
    constexpr std::ptrdiff_t mostDigits = 18; // leading zeros too: no more fit the integer in any case
    constexpr std::uint64_t largestExact = std::uint64_t{1} << 53;

    const char* next = at;
    const bool negative = next != end && *next == '-';
    if (negative) ++next;
    std::uint64_t digits = 0;
    const auto takeDigits = [&digits, end](const char* from) {
        for (; from != end; ++from) {
            const unsigned digit = static_cast<unsigned char>(*from) - static_cast<unsigned>('0');
            if (digit > 9) break;
            digits = digits * 10 + digit;
        }
        return from;
    };
    const char* const whole = next;
    next = takeDigits(next);
    std::ptrdiff_t count = next - whole;
    std::ptrdiff_t power = 0;
    if (next != end && *next == '.') {
        const char* const fraction = next + 1;
        next = takeDigits(fraction);
        power = -(next - fraction);
        count -= power;
    }
    if (count == 0 || count > mostDigits || digits > largestExact) return false;
    if (next != end && (*next | 0x20) == 'e') {
        ++next;
        const bool down = next != end && *next == '-';
        if (next != end && (*next == '-' || *next == '+')) ++next;
        const char* const first = next;
        int exponent = 0;
        for (; next != end && *next >= '0' && *next <= '9'; ++next) {
            if (next - first == 3) return false;
            exponent = exponent * 10 + (*next - '0');
        }
        if (next == first) return false;
        power += down ? -exponent : exponent;
    }
    if (power < -largestPower || power > largestPower) return false;
    const double number = static_cast<double>(digits);
    const double scaled = power < 0 ? number / powers[-power] : number * powers[power];
    value = negative ? -scaled : scaled;
    at = next;
    return true;
#else
    (void)at, (void)end, (void)value;
    return false; // intermediate results have more digits than a double: they would be rounded twice
#endif
}

} // namespace ShortNumbers
} // namespace Tarn::Fjel::Core::DeckManager
