#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// What the two binary serializers agree on: "TFSB", a version byte, the values, and a checksum of the values. Each
/// value begins with its tag. Integers are stored in groups of seven bits, lowest first, signed ones with the sign in
/// the lowest bit; reals as their eight or four bytes, lowest first; texts as their size and their bytes. A text that
/// came before is its number among the texts so far, one that is the decimal form of an integer is that integer.
namespace Tarn::Fjel::Core::Service::BinaryForm {

inline constexpr std::string_view head = "TFSB\x02";
inline constexpr std::size_t checksumSize = 8;

enum class Tag : unsigned char
{
    Bool = 1,
    Char,
    UnsignedChar,
    Short,
    UnsignedShort,
    Int,
    UnsignedInt,
    LongLong,
    UnsignedLongLong,
    Float,
    Double,
    Text,
    KnownText, ///< the number of a text ahead, from 0
    Decimal,   ///< a text: the shortest decimal form of a signed 64-bit integer
    ArrayBegin,
    ArrayEnd,
    ObjectBegin,
    PlainObjectBegin, ///< without type name and version
    ObjectEnd,
};

constexpr std::uint64_t ToUnsigned(std::int64_t value)
{
    return (static_cast<std::uint64_t>(value) << 1) ^ static_cast<std::uint64_t>(value >> 63);
}

constexpr std::int64_t ToSigned(std::uint64_t value)
{
    return static_cast<std::int64_t>((value >> 1) ^ (~(value & 1) + 1));
}

/// A checksum that a changed, lost or moved byte changes. Four lanes, so that large tables are summed at the speed of
/// the memory.
inline std::uint64_t Checksum(std::string_view bytes)
{
    constexpr std::uint64_t factor = 0x9e3779b97f4a7c15ull;
    const auto word = [&bytes](std::size_t at) {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < 8; ++i) {
            value |= std::uint64_t{static_cast<unsigned char>(bytes[at + i])} << (8 * i);
        }
        return value;
    };
    const auto mix = [](std::uint64_t sum, std::uint64_t value) {
        return std::rotl((sum ^ value) * factor, 29) ^ (sum >> 32);
    };
    std::uint64_t lanes[4] = {1, 2, 3, 4};
    std::size_t at = 0;
    for (; at + 32 <= bytes.size(); at += 32) {
        for (std::size_t lane = 0; lane < 4; ++lane)
            lanes[lane] = mix(lanes[lane], word(at + 8 * lane));
    }
    std::uint64_t sum = bytes.size();
    for (const std::uint64_t lane : lanes)
        sum = mix(sum, lane);
    for (; at < bytes.size(); ++at)
        sum = mix(sum, static_cast<unsigned char>(bytes[at]) + 256u);
    return sum;
}

} // namespace Tarn::Fjel::Core::Service::BinaryForm
