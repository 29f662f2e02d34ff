#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

/// Text helpers. Case, white space and digits are ASCII, whatever the locale of the process is: bytes above 127 are
/// never space, letter or digit, and are never changed.
namespace Tarn::Fjel::Core::Service {

namespace Detail {

enum CharacterClass : unsigned char
{
    Space = 1,
    Alpha = 2,
    Digit = 4
};

constexpr std::array<unsigned char, 256> MakeCharacterTable()
{
    std::array<unsigned char, 256> table{};
    for (std::size_t c = 0; c < table.size(); ++c) {
        const bool space = c == ' ' || (c >= '\t' && c <= '\r');
        const bool alpha = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        const bool digit = c >= '0' && c <= '9';
        table[c] = space ? Space : alpha ? Alpha : digit ? Digit : 0;
    }
    return table;
}

inline constexpr std::array<unsigned char, 256> characterTable = MakeCharacterTable();

} // namespace Detail

/// Blank, tab, line feed, vertical tab, form feed, carriage return.
constexpr bool IsSpace(char c)
{
    return (Detail::characterTable[static_cast<unsigned char>(c)] & Detail::Space) != 0;
}
constexpr bool IsAlpha(char c)
{
    return (Detail::characterTable[static_cast<unsigned char>(c)] & Detail::Alpha) != 0;
}
constexpr bool IsDigit(char c)
{
    return (Detail::characterTable[static_cast<unsigned char>(c)] & Detail::Digit) != 0;
}
constexpr bool IsAlnum(char c)
{
    return (Detail::characterTable[static_cast<unsigned char>(c)] & (Detail::Alpha | Detail::Digit)) != 0;
}
constexpr char ToUpper(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}
constexpr char ToLower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// The part of text without the white space (IsSpace, so line ends too) at its left, its right, or both ends. A view
/// into text, good as long as text is.
constexpr std::string_view TrimmedLeft(std::string_view text)
{
    std::size_t first = 0;
    while (first < text.size() && IsSpace(text[first]))
        ++first;
    return text.substr(first);
}
constexpr std::string_view TrimmedRight(std::string_view text)
{
    std::size_t size = text.size();
    while (size > 0 && IsSpace(text[size - 1]))
        --size;
    return text.substr(0, size);
}
constexpr std::string_view Trimmed(std::string_view text)
{
    return TrimmedLeft(TrimmedRight(text));
}

/// Trims text in place, at both ends, of every character in characters.
void StringTrim(std::string& text, std::string_view characters);
/// Trim text in place, at both ends, of white space, line ends included.
void StringTrim(std::string& text);
void StringTrimBlank(std::string& text);
void StringTrimSpace(std::string& text);
/// Trims text in place at its right end only.
void StringTrimRight(std::string& text);

/// Makes capitals of the letters a to z, in place.
void StringToUpper(std::string& text);
/// A copy of text in capitals.
std::string Uppercased(std::string_view text);
/// A copy of text in small letters.
std::string Lowercased(std::string_view text);

/// Replaces every occurrence of from in text by to, from left to right; what was put in isn't searched again.
/// Returns the number of replacements. An empty from replaces nothing.
std::size_t StringReplace(std::string& text, std::string_view from, std::string_view to);

/// Equality, with or without regard to the case of the letters a to z.
bool StringEqual(std::string_view left, std::string_view right, bool caseSensitive = true);
bool NoCaseStringEqual(std::string_view left, std::string_view right);
/// Order by the bytes of the texts in capitals; a strict weak order that agrees with NoCaseStringEqual.
bool NoCaseStringLess(std::string_view left, std::string_view right);

/// True when text holds white space only, or nothing.
constexpr bool AllBlanks(std::string_view text)
{
    return TrimmedLeft(text).empty();
}
/// True when text holds digits only, and at least one.
constexpr bool AllDigits(std::string_view text)
{
    for (const char c : text) {
        if (!IsDigit(c)) return false;
    }
    return !text.empty();
}

} // namespace Tarn::Fjel::Core::Service
