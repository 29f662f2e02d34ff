#include "keywords/ValueConversions.h"

#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <locale.h>
#if defined(__APPLE__)
#include <xlocale.h>
#endif

#include <deckmanager/VeldaneDeckInfo.h>

#include "keywords/ShortNumbers.h"

namespace Tarn::Fjel::Core::DeckManager::ValueConversions {

namespace {

constexpr int largestInteger = 2147483647;

/// Parses a number at the head of the text. Returns the characters that it takes, 0 without a digit.
std::size_t ParseInteger(std::string_view text, int& value)
{
    std::size_t at = 0;
    while (at < text.size() && VeldaneDeckInfo::IsSpace(text[at]))
        ++at;
    bool negative = false;
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) {
        negative = text[at] == '-';
        ++at;
    }
    const std::size_t firstDigit = at;
    std::int64_t number = 0;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
        number = number * 10 + (text[at] - '0');
        if (number > largestInteger) number = largestInteger;
    }
    if (at == firstDigit) return 0;
    value = static_cast<int>(negative ? -number : number);
    return at;
}

/// `strtod` of the "C" locale; sets `end` behind what it took.
double ParseLikeC(const char* text, char** end)
{
#if defined(_WIN32)
    static const _locale_t locale = _create_locale(LC_NUMERIC, "C");
    return _strtod_l(text, end, locale);
#else
    static const locale_t locale = newlocale(LC_NUMERIC_MASK, "C", static_cast<locale_t>(nullptr));
    return strtod_l(text, end, locale);
#endif
}

bool ParseReal(const std::string& text, double& value)
{
    char* end = nullptr;
    const double number = ParseLikeC(text.c_str(), &end);
    if (end != text.c_str() + text.size()) return false;
    value = number;
    return true;
}

} // namespace

bool ToInteger(std::string_view text, int& value)
{
    return ParseInteger(text, value) > 0;
}

bool ToWholeInteger(std::string_view text, int& value)
{
    int number = 0;
    if (text.empty() || VeldaneDeckInfo::IsSpace(text.front()) || ParseInteger(text, number) != text.size())
        return false;
    value = number;
    return true;
}

int ToIntegerOrZero(std::string_view text)
{
    int number = 0;
    ParseInteger(text, number);
    return number;
}

bool ToReal(std::string_view text, double& value)
{
    double number = 0.0;
    const char* const end = text.data() + text.size();
    if (const char* at = text.data(); ShortNumbers::TakeReal(at, end, number) && at == end) {
        value = number;
        return true;
    }
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (stop == end && error == std::errc()) {
        value = number;
        return true;
    }
    // The forms that are left: an exponent of Fortran, a plus sign, hexadecimal digits, what is beyond a double's
    // range, and nothing at all.
    std::string copy(text);
    if (const std::size_t mark = copy.find_first_of("Dd"); mark != std::string::npos) copy[mark] = 'E';
    return ParseReal(copy, value);
}

bool ConvertYesNo(std::string_view text, signed char& value)
{
    if (text == "NO" || text == "no" || text == "No" || text == "N" || text == "n") {
        value = 0;
        return true;
    }
    if (text == "YES" || text == "yes" || text == "Yes" || text == "Y" || text == "y") {
        value = 1;
        return true;
    }
    return false;
}

} // namespace Tarn::Fjel::Core::DeckManager::ValueConversions
