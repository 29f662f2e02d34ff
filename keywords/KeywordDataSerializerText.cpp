// How values are spelt.

#include <charconv>
#include <cmath>
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

/// Numbers of few digits behind the point, which are most of those in a deck: their digits are those of an integer.
/// The division below is rounded as the reading of these digits would be, and 15 of them are always kept, so what
/// gives the value back is what the long road would have given. Null for any other number.
char* WriteShortReal(double value, char* out)
{
    constexpr double smallest = 1e-4; // what is less gets an exponent
    constexpr double largest = 1e9;
    constexpr double scale = 1e6;
    const double magnitude = std::fabs(value);
    if (!(magnitude >= smallest && magnitude < largest)) return nullptr;
    const auto scaled = static_cast<std::int64_t>(magnitude * scale + 0.5);
    if (static_cast<double>(scaled) / scale != magnitude) return nullptr;

    if (value < 0) *out++ = '-';
    out = std::to_chars(out, out + 16, scaled / 1000000).ptr;
    auto fraction = static_cast<std::int32_t>(scaled % 1000000);
    if (fraction == 0) return out;
    int digits = 6;
    for (; fraction % 10 == 0; fraction /= 10)
        --digits;
    *out = '.';
    for (int at = digits; at > 0; --at, fraction /= 10)
        out[at] = static_cast<char>('0' + fraction % 10);
    return out + digits + 1;
}

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
    if (char* const end = WriteShortReal(value, begin)) return {begin, static_cast<std::size_t>(end - begin)};
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
