// Lists of numbers take plain numbers straight from the line. A list with an end detector goes token by token; the two
// must agree in values, marks, messages and place.

#include <rapidcheck.h>

#include "tests/keywords/DataReading.h"

using namespace DataReading;

namespace {

rc::Gen<std::string> Piece()
{
    return rc::gen::weightedOneOf<std::string>({
        {12, rc::gen::map(rc::gen::inRange(-1000, 100000), [](int number) { return std::to_string(number); })},
        {8, rc::gen::map(rc::gen::arbitrary<double>(), [](double number) { return fmt::format("{}", number); })},
        {4,
         rc::gen::element<std::string>("1.5D3", "+7", "1e5", ".5", "5.", "0x10", "inf", "nan", "1e999", "3.7", "12abc",
                                       "-2147483648", "2147483648", "1--2", "1-2", "-", "--", "-5-", "''", "' 7 '", "'",
                                       "8'9'", "$A", "0*5", "3*2.5", "4*", "1*", "2*x", "2000000000*1", "5*'/'", "x")},
        {2, rc::gen::element<std::string>(",", ", ,", "1,2", ",,", "7,", ",8")},
        {1, rc::gen::element<std::string>("/", "7/", "/7", "-- comment", "STOP")},
    });
}

rc::Gen<std::string> Text()
{
    const auto gap = rc::gen::weightedElement<std::string>({{20, " "},
                                                            {3, "  "},
                                                            {2, "\t"},
                                                            {6, "\n"},
                                                            {1, "\r\n"},
                                                            {1, "\n-- a comment\n\n"},
                                                            {1, ""},
                                                            {1, std::string(60, ' ')}});
    return rc::gen::map(
        rc::gen::container<std::vector<std::pair<std::string, std::string>>>(rc::gen::pair(Piece(), gap)),
        [](const std::vector<std::pair<std::string, std::string>>& pieces) {
            std::string text;
            for (const auto& [piece, space] : pieces)
                text += piece + space;
            return text;
        });
}

/// The list under test, and behind it a string that tells where it has stopped.
std::string Shape(const char* kind, const char* list)
{
    return fmt::format(
        R"({{"type": "record", "items": [{{"name": "L", "type": "list", "element": {{"type": "{}"}}, {}}},
                           {{"name": "S", "type": "string"}}]}})",
        kind, list);
}

} // namespace

TEST(BulkNumbers, ReadAsTheTokenizersDo)
{
    const char* detector = R"(, "end": {"tokens": ["NEVER"]})";
    for (const char* kind : {"real", "integer"}) {
        for (const std::string list :
             {R"("termination": "slash", "elementsDefaultable": true)", R"("termination": "none")",
              R"("termination": "none", "size": "5", "elementsDefaultable": true)"})
        {
            const std::string json = fmt::format(R"([{{"name": "BULK", "sections": "all", "data": {}}},
                                {{"name": "TOKENS", "sections": "all", "data": {}}}])",
                                                 Shape(kind, list.c_str()), Shape(kind, (list + detector).c_str()));
            const TableInForce table(json);
            const LooseKeyword bulk(table.Syntax("BULK"), "X");
            const LooseKeyword tokens(table.Syntax("TOKENS"), "X");
            const bool held = rc::check(std::string("a list of ") + kind + " with " + list, [&] {
                const std::string text = *Text() + "\n7 8 /\n";
                const bool withVariables = *rc::gen::arbitrary<bool>();
                const Outcome fast = ReadText(bulk, text, withVariables);
                const Outcome slow = ReadText(tokens, text, withVariables);
                RC_ASSERT(fast.tree == slow.tree);
                RC_ASSERT(fast.messages == slow.messages);
                RC_ASSERT(fast.takenEnd == slow.takenEnd);
            });
            EXPECT_TRUE(held);
        }
    }
}

TEST(BulkNumbers, BlocksJoin)
{
    // More numbers than a block holds, broken by what no block takes.
    std::string text;
    std::string tree = "[";
    for (int i = 0; i < 5000; ++i) {
        text += fmt::format("{}{}", i, i % 10 == 9 ? "\n" : " ");
        tree += fmt::format("{} ", i);
        if (i % 1500 == 1499) {
            text += "2* +5\n";
            tree += "1* 1* 5 ";
        }
    }
    tree.back() = ']';
    EXPECT_EQ(
        ReadShape(R"({"type": "list", "elementsDefaultable": true, "element": {"type": "real"}})", text + "/").tree,
        tree);
    EXPECT_EQ(
        ReadShape(R"({"type": "list", "elementsDefaultable": true, "element": {"type": "integer"}})", text + "/").tree,
        tree);
}
