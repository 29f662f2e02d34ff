#include "text/PlainNumbers.h"

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck.h>

namespace {

using namespace Tarn::Fjel::Core::DeckManager;

using Kind = PlainNumbers::Kind;
using Rules = PlainNumbers::Rules;

constexpr std::int64_t noLimit = std::numeric_limits<std::int64_t>::max();

/// Bytes and values that both ways of passing over the text have come to.
std::pair<std::size_t, std::int64_t> Passed(const std::string& text, Rules rules = {}, std::int64_t most = noLimit)
{
    const PlainNumbers::Passed passed = PlainNumbers::Pass(text, rules, most);
    const PlainNumbers::Passed byBytes = PlainNumbers::PassByteByByte(text, rules, most);
    EXPECT_EQ(passed.bytes, byBytes.bytes) << text;
    EXPECT_EQ(passed.values, byBytes.values) << text;
    return {passed.bytes, passed.values};
}

/// The values of a token that stands among others, in lines long enough for whole blocks; -1 when it isn't plain.
std::int64_t ValuesOf(const std::string& token, Rules rules = {})
{
    const std::string neighbours = "11 22 33 44 55 66 77 88 99 111 222 333 444 555 666 777 888 999\n";
    std::int64_t values = -2;
    for (std::size_t column = 0; column < 64; ++column) {
        const std::string line = std::string(column, ' ') + token + " 8\n";
        const std::string text = neighbours + line + neighbours + neighbours;
        const auto [bytes, count] = Passed(text, rules);
        const bool isPlain = bytes == text.size();
        EXPECT_TRUE(isPlain || bytes == neighbours.size()) << token;
        const std::int64_t here = isPlain ? count - 3 * 18 - 1 : -1;
        EXPECT_TRUE(column == 0 || here == values) << token << " at column " << column;
        values = here;
    }
    return values;
}

rc::Gen<std::string> Token()
{
    const auto plain = rc::gen::oneOf(
        rc::gen::map(rc::gen::inRange(-1000, 100000), [](int number) { return std::to_string(number); }),
        rc::gen::map(rc::gen::inRange(-1000, 100000), [](int number) { return std::to_string(number / 64.0); }),
        rc::gen::element<std::string>("1.5e3", "2.5E-03", "-1.D+2", "+7", ".5", "5.", "12*0.3", "7*", "3*-4.5",
                                      "2*+.5"));
    // Pieces of numbers, in any order.
    const auto scrap = rc::gen::container<std::string>(rc::gen::weightedElement<char>(
        {{8, '1'}, {2, '0'}, {3, '.'}, {2, '-'}, {1, '+'}, {2, 'e'}, {1, 'D'}, {2, '*'}}));
    const auto other =
        rc::gen::element<std::string>("/", "'7'", "1,2", "--", "-- it's", "$A", "nan", std::string(1, '\0'));
    return rc::gen::weightedOneOf<std::string>({{60, plain}, {3, scrap}, {1, other}});
}

rc::Gen<std::string> Text()
{
    const auto gap = rc::gen::weightedElement<std::string>(
        {{30, " "}, {5, "   "}, {2, "\t"}, {6, "\n"}, {3, "\r\n"}, {1, "\r"}, {1, "\n\n"}, {1, std::string(90, ' ')}});
    return rc::gen::map(
        rc::gen::container<std::vector<std::pair<std::string, std::string>>>(rc::gen::pair(Token(), gap)),
        [](const std::vector<std::pair<std::string, std::string>>& pieces) {
            std::string text;
            for (const auto& [token, space] : pieces)
                text += token + space;
            return text;
        });
}

} // namespace

TEST(PlainNumbers, KnowsItsTokens)
{
    const struct
    {
        std::int64_t real, integer; ///< -1: not plain
        std::vector<const char*> tokens;
    } kinds[] = {
        {1, 1, {"7", "-7", "+7", "007", "1*7"}},
        {1, -1, {"1.5", ".5", "5.", "-.5", "1e5", "1.E+05", ".5d-3", "1D300"}},
        {3, 3, {"3*7", "3*-7"}},
        {3, -1, {"3*.5", "3*+1.5E3"}},
        {10, 10, {"010*7"}},
        {999999999, 999999999, {"999999999*1"}},
        {-1, -1, {".",    "-",    "+.",    ".e5",   "1e",    "1e+",   "1e5.", "1.5.5", "1..5", "1e5e5", "1e5d5",
                  "e5",   "1-2",  "--1",   "-+1",   "1-",    "1e-.5", "*",    "*5",    "0*5",  "000*5", "1000000000*1",
                  "-3*5", "3.*5", ".3*5",  "1e3*5", "2*3*4", "3**5",  "3*.",  "3*-",   "3*e5", "1/",    "/",
                  "1,2",  "'1'",  "12abc", "0x10",  "inf",   "1f5",   "3*",   "1*"}},
    };
    for (const auto& kind : kinds) {
        for (const char* token : kind.tokens) {
            EXPECT_EQ(ValuesOf(token), kind.real) << token;
            EXPECT_EQ(ValuesOf(token, {Kind::Integer, false}), kind.integer) << token;
        }
    }
    EXPECT_EQ(ValuesOf("3*", {Kind::Real, true}), 3);
    EXPECT_EQ(ValuesOf("1*", {Kind::Integer, true}), 1);
    EXPECT_EQ(ValuesOf("0*", {Kind::Real, true}), -1);
    EXPECT_EQ(ValuesOf(std::string("1\0", 2)), -1);
}

TEST(PlainNumbers, TakesWholeLinesOfTheWidthThatCounts)
{
    const std::string fits = std::string(131, ' ') + "7\n";
    const std::string tooLong = std::string(132, ' ') + "7\n";
    const std::string lines = "1 2 3\n4 5 6\n";
    for (const std::string& around : {std::string(), lines, lines + lines + lines + lines + lines + lines}) {
        EXPECT_EQ(Passed(around + fits + around + lines).first, 2 * around.size() + fits.size() + lines.size());
        EXPECT_EQ(Passed(around + tooLong + around + lines).first, around.size());
        EXPECT_EQ(Passed(around + "7 8 9").first, around.size()); // it may go on
        EXPECT_EQ(Passed(around + std::string(5000, ' ')).first, around.size());
    }
    EXPECT_EQ(Passed("").first, 0U);
    EXPECT_EQ(Passed("\n\r\n 1\t2\r\n"), std::pair(std::size_t{9}, std::int64_t{2}));
}

TEST(PlainNumbers, StopsAheadOfTheLineThatHoldsTooMuch)
{
    std::string text;
    for (int line = 0; line < 40; ++line)
        text += "10 20 3*30\n"; // 11 bytes, 5 values
    for (std::int64_t most = 0; most <= 210; ++most) {
        const auto lines = static_cast<std::size_t>(std::min<std::int64_t>(most / 5, 40));
        EXPECT_EQ(Passed(text, {}, most), std::pair(11 * lines, 5 * static_cast<std::int64_t>(lines))) << most;
    }
    EXPECT_EQ(Passed("999999999*1\n999999999*1\n", {}, 999999999).second, 999999999);
}

TEST(PlainNumbers, BlocksAndBytesAgree)
{
    EXPECT_TRUE(rc::check("both ways pass over the same lines", [] {
        const std::string text = *Text();
        const Rules rules{*rc::gen::element(Kind::Integer, Kind::Real), *rc::gen::arbitrary<bool>()};
        const std::int64_t most = *rc::gen::oneOf(rc::gen::just(noLimit), rc::gen::inRange<std::int64_t>(0, 60));
        const PlainNumbers::Passed passed = PlainNumbers::Pass(text, rules, most);
        const PlainNumbers::Passed byBytes = PlainNumbers::PassByteByByte(text, rules, most);
        RC_ASSERT(passed.bytes == byBytes.bytes);
        RC_ASSERT(passed.values == byBytes.values);
        RC_ASSERT((passed.bytes == 0 || text[passed.bytes - 1] == '\n'));
    }));
}
