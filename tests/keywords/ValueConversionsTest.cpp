#include <gtest/gtest.h>

#include <array>
#include <charconv>
#include <clocale>
#include <cmath>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "keywords/ShortNumbers.h"
#include "keywords/ValueConversions.h"

namespace ValueConversions = Tarn::Fjel::Core::DeckManager::ValueConversions;

namespace {

std::optional<int> Integer(std::string_view text)
{
    int value = -77;
    return ValueConversions::ToInteger(text, value) ? std::optional(value) : std::nullopt;
}

std::optional<int> WholeInteger(std::string_view text)
{
    int value = -77;
    return ValueConversions::ToWholeInteger(text, value) ? std::optional(value) : std::nullopt;
}

std::optional<double> Real(std::string_view text)
{
    double value = -77;
    return ValueConversions::ToReal(text, value) ? std::optional(value) : std::nullopt;
}

} // namespace

TEST(ValueConversions, Integers)
{
    const struct
    {
        const char* text;
        std::optional<int> lenient;
        std::optional<int> whole;
    } cases[] = {
        {"12", 12, 12},
        {"-12", -12, -12},
        {"+12", 12, 12},
        {"12abc", 12, {}},
        {"3.7", 3, {}},
        {" 5", 5, {}},
        {"", {}, {}},
        {"-", {}, {}},
        {"abc", {}, {}},
        {"0x10", 0, {}},
        {"2147483647", 2147483647, 2147483647},
        {"2147483648", 2147483647, 2147483647},
        {"-2147483648", -2147483647, -2147483647},
        {"99999999999999999999999", 2147483647, 2147483647},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Integer(c.text), c.lenient) << c.text;
        EXPECT_EQ(WholeInteger(c.text), c.whole) << c.text;
        EXPECT_EQ(ValueConversions::ToIntegerOrZero(c.text), c.lenient.value_or(0)) << c.text;
    }
}

TEST(ValueConversions, RealsFollowTheCLibraryInTheCLocale)
{
    // Where a locale with a decimal comma is at hand, it must make no difference.
    const char* const comma = std::setlocale(LC_ALL, "de_DE.UTF-8");
    std::vector<const char*> texts = {"1",     "-1.5",   "+1.5",   ".5",       "5.",  "1e5",
                                      "1E+05", "1e-5",   "0x1p4",  "-0x1.8p1", "inf", "-INFINITY",
                                      "1e999", "-1e999", "1e-999", "",         "0.1"};
    texts.insert(texts.end(), {"5e-324", "4.9406564584124654e-324", "1.7976931348623157e308", "2.2250738585072014e-308",
                               "123456789012345678901234567890"});
    for (const char* text : texts) {
        std::setlocale(LC_ALL, "C");
        const double expected = std::strtod(text, nullptr);
        if (comma) std::setlocale(LC_ALL, comma);
        EXPECT_EQ(Real(text), expected) << text;
    }
    std::setlocale(LC_ALL, "C");
    EXPECT_TRUE(std::isnan(Real("nan").value_or(0)));
    EXPECT_EQ(Real("1.5D3"), 1500.0);
    EXPECT_EQ(Real("1.5d-3"), 0.0015);
    EXPECT_EQ(Real("0xd"), 14.0); // the first d is an exponent's, and an E is a digit there
    for (const char* text : {"1.5D3D", "12abc", "1,5", "--5", "1.5 ", "abc", "1e", "1.5E3D2", "*"})
        EXPECT_EQ(Real(text), std::nullopt) << text;
    EXPECT_EQ(Real(std::string_view("1\0", 2)), std::nullopt);
}

TEST(ValueConversions, ShortNumbersAreThoseOfTheStandardLibrary)
{
    namespace ShortNumbers = Tarn::Fjel::Core::DeckManager::ShortNumbers;
    // Digits, signs, points and exponents put together at random: what is taken is taken as far, and means the same.
    std::mt19937 random(20);
    const auto pick = [&random](unsigned most) { return random() % (most + 1); };
    int taken = 0;
    for (int round = 0; round < 200000; ++round) {
        std::string text;
        const auto digits = [&](unsigned most) {
            for (auto count = pick(most); count > 0; --count)
                text += static_cast<char>('0' + pick(9));
        };
        if (pick(4) == 0) text += "-";
        digits(pick(3) == 0 ? 20 : 8);
        if (pick(3) != 0) text += '.';
        digits(pick(3) == 0 ? 20 : 8);
        if (pick(2) == 0) text += pick(1) == 0 ? 'e' : 'E';
        if (pick(3) == 0) text += pick(1) == 0 ? '-' : '+';
        digits(pick(9) == 0 ? 5 : 2);
        text += std::array<const char*, 6>{"", " ", "/", "x", ".", "e"}[pick(5)];

        const char* const end = text.data() + text.size();
        double expected = 0;
        const auto [stop, error] = std::from_chars(text.data(), end, expected);
        double value = 0;
        const char* at = text.data();
        if (ShortNumbers::TakeReal(at, end, value)) {
            ++taken;
            ASSERT_EQ(error, std::errc()) << text;
            ASSERT_EQ(at, stop) << text;
            ASSERT_EQ(value, expected) << text;
            ASSERT_EQ(std::signbit(value), std::signbit(expected)) << text;
        } else {
            ASSERT_EQ(at, text.data()) << text;
        }
        int integer = 0;
        int expectedInteger = 0;
        at = text.data();
        if (ShortNumbers::TakeInteger(at, end, integer)) {
            ASSERT_EQ(at, std::from_chars(text.data(), end, expectedInteger).ptr) << text;
            ASSERT_EQ(integer, expectedInteger) << text;
        }
    }
    EXPECT_GT(taken, 50000);
}

TEST(ValueConversions, YesAndNo)
{
    signed char value = 7;
    for (const char* text : {"YES", "yes", "Yes", "Y", "y"}) {
        EXPECT_TRUE(ValueConversions::ConvertYesNo(text, value)) << text;
        EXPECT_EQ(value, 1) << text;
    }
    for (const char* text : {"NO", "no", "No", "N", "n"}) {
        EXPECT_TRUE(ValueConversions::ConvertYesNo(text, value)) << text;
        EXPECT_EQ(value, 0) << text;
    }
    for (const char* text : {"", "nO", "yEs", "YE", "1", "TRUE"})
        EXPECT_FALSE(ValueConversions::ConvertYesNo(text, value)) << text;
}
