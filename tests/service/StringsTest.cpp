#include <tarn/service/Math.h>
#include <tarn/service/Strings.h>

#include <clocale>
#include <cstdint>
#include <limits>

namespace Tarn::Fjel::Core::Service {
namespace {

TEST(Strings, TrimmingTakesAllAsciiWhiteSpaceAndNothingElse)
{
    struct Case
    {
        std::string text, both, left, right;
    };
    const Case cases[] = {
        {"", "", "", ""},
        {" \t\r\n\v\f", "", "", ""},
        {"  a b \r\n", "a b", "a b \r\n", "  a b"},
        {"\xa0x\xa0", "\xa0x\xa0", "\xa0x\xa0", "\xa0x\xa0"}, // a no-break blank in Latin-1
        {std::string("\0 a", 3), std::string("\0 a", 3), std::string("\0 a", 3), std::string("\0 a", 3)},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Trimmed(c.text), c.both);
        EXPECT_EQ(TrimmedLeft(c.text), c.left);
        EXPECT_EQ(TrimmedRight(c.text), c.right);
        for (auto trim : {static_cast<void (*)(std::string&)>(&StringTrim), &StringTrimBlank, &StringTrimSpace}) {
            std::string text = c.text;
            trim(text);
            EXPECT_EQ(text, c.both);
        }
    }
    std::string quoted = "''it's''";
    StringTrim(quoted, "'");
    EXPECT_EQ(quoted, "it's");
}

TEST(Strings, CaseAndClassesAreAsciiWhateverTheLocale)
{
    // Where the locale isn't installed the test still holds, by the table.
    std::setlocale(LC_ALL, "en_US.ISO-8859-1");
    std::string text = "poro_\xe9 x9";
    StringToUpper(text);
    EXPECT_EQ(text, "PORO_\xe9 X9");
    EXPECT_TRUE(NoCaseStringEqual("WeLl", "wElL"));
    EXPECT_FALSE(NoCaseStringEqual("\xe9", "\xc9"));
    EXPECT_FALSE(NoCaseStringEqual("WELL", "WELLS"));
    for (int c = 128; c < 256; ++c) {
        EXPECT_FALSE(IsSpace(static_cast<char>(c)) || IsAlnum(static_cast<char>(c))) << c;
    }
    EXPECT_FALSE(IsAlpha('@') || IsAlpha('[') || IsAlpha('`') || IsAlpha('{') || IsDigit('/') || IsDigit(':'));
    EXPECT_TRUE(IsAlpha('A') && IsAlpha('z') && IsDigit('0') && IsDigit('9') && IsSpace('\v'));
    std::setlocale(LC_ALL, "C");
}

TEST(Strings, NoCaseOrderAgreesWithNoCaseEquality)
{
    EXPECT_FALSE(NoCaseStringLess("abc", "ABC") || NoCaseStringLess("ABC", "abc"));
    EXPECT_TRUE(NoCaseStringLess("abc", "ABD"));
    EXPECT_TRUE(NoCaseStringLess("ab", "ABC"));
    EXPECT_TRUE(NoCaseStringLess("z", "\xe9"));
}

TEST(Strings, ReplaceDoesNotSearchWhatItPutIn)
{
    struct Case
    {
        std::string text, from, to, result;
        std::size_t count;
    };
    const Case cases[] = {
        {"--@@@a --@@@b", "--@@@", "", "a b", 2},
        {"aaa", "a", "aa", "aaaaaa", 3},
        {"aaa", "aa", "b", "ba", 1},
        {"abc", "x", "y", "abc", 0},
        {"abc", "", "y", "abc", 0},
        {"", "a", "b", "", 0},
    };
    for (const Case& c : cases) {
        std::string text = c.text;
        EXPECT_EQ(StringReplace(text, c.from, c.to), c.count);
        EXPECT_EQ(text, c.result);
    }
}

TEST(Strings, EmptyTextIsBlankAndHoldsNoDigits)
{
    EXPECT_TRUE(AllBlanks("") && AllBlanks(" \t\n"));
    EXPECT_FALSE(AllBlanks(" x ") || AllBlanks(std::string_view("\0", 1)));
    EXPECT_TRUE(AllDigits("0") && AllDigits("0123456789"));
    EXPECT_FALSE(AllDigits("") || AllDigits("-1") || AllDigits("1 ") || AllDigits("1.0"));
}

TEST(Math, NumOfDigits)
{
    EXPECT_EQ(Math::NumOfDigits(0), 1);
    EXPECT_EQ(Math::NumOfDigits(9), 1);
    EXPECT_EQ(Math::NumOfDigits(10), 2);
    EXPECT_EQ(Math::NumOfDigits(-99), 2);
    EXPECT_EQ(Math::NumOfDigits(std::numeric_limits<int>::min()), 10);
    EXPECT_EQ(Math::NumOfDigits(std::numeric_limits<std::uint64_t>::max()), 20);
}

} // namespace
} // namespace Tarn::Fjel::Core::Service
