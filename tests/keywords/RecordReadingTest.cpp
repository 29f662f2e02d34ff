#include "tests/keywords/DataReading.h"

using namespace DataReading;

namespace {

constexpr const char* tooMany = "2 Record in keyword X has too many items";
constexpr const char* notTerminated = "2 Record in keyword X not properly terminated";

std::string Bad(const std::string& token, const std::string& reason)
{
    return "3 A problem was encountered when parsing the keyword X. Item value \"" + token + "\" is not valid. " +
           reason + ".";
}

const std::string wholeNumber = "Must be a whole number";
const std::string realNumber = "Must be a real number";

} // namespace

TEST(RecordReading, IntegersAreReadLeniently)
{
    ExpectReads(R"({"type": "record", "items": [{"name": "A", "type": "integer", "defaultable": true},
                                          {"name": "B", "type": "integer"}]})",
                {
                    {"1 2 /", "{1 2}"},
                    {"1 /", "{1 -}"},
                    {"/", "{- -}"},
                    {"1\n-- comment\n  2 -- more\n/", "{1 2}"},
                    {"1--x\n2 /", "{1 2}"},
                    {"3.7 12abc /", "{3 12}"},
                    {"-7 +8 /", "{-7 8}"},
                    {"99999999999 -99999999999 /", "{2147483647 -2147483647}"},
                    {"-2147483648 2 /", "{-2147483647 2}"},
                    {"x 2 /", "{- 2}", {Bad("x", wholeNumber)}},
                    {"'' 2 /", "{- 2}", {Bad("", wholeNumber)}},
                    {"% 2 /", "{- 2}", {Bad("%%", wholeNumber)}},
                    {"1* 2 /", "{- 2}"},
                    {"'1*' 2 /", "{- 2}", {Bad("1*", wholeNumber)}},
                    {"2* /", "{- -}"},
                    {"2*5 /", "{5 5}"},
                    {"0*7 1 2 /", "{1 2}"},
                    {"1 0*7\n2 /", "{1 2}"},
                    {"2*'1*' /", "{- -}"},
                    {",2 /", "{- 2}"},
                    {"1 '/'", "{1 -}"},
                });
}

TEST(RecordReading, SurplusAndMissingTerminators)
{
    ExpectReads(R"({"type": "record", "items": [{"name": "A", "type": "integer"}, {"name": "B", "type": "integer"}]})",
                {
                    {"1 2\n/", "{1 2}"},
                    {"1 2 3 /", "{1 2}", {tooMany}},
                    {"1 2 3\n/", "{1 2}", {tooMany}},
                    {"1 900000000*2 /", "{1 2}", {tooMany}},
                    {"1 2\n3 /", "{1 2}", {notTerminated}},
                    {"1 2", "{1 2}", {notTerminated}},
                    {"1 2 '", "{1 2}", {"3 Unbalanced quote while reading keyword data: 1 2 '", notTerminated}},
                    {"1", "{1 -}", {notTerminated}},
                });
}

TEST(RecordReading, RealsTakeTheWholeToken)
{
    ExpectReads(R"({"type": "record", "items": [{"name": "A", "type": "real"}, {"name": "B", "type": "real"}]})",
                {
                    {"1.5D3 1.5d3 /", "{1500 1500}"},
                    {"+1.5E3 .5 /", "{1500 0.5}"},
                    {"0x10 1e999 /", "{16 inf}"},
                    {"1.5D3D 2 /", "{- 2}", {Bad("1.5D3D", realNumber)}},
                    {"12abc 2 /", "{- 2}", {Bad("12abc", realNumber)}},
                    {"'' '1*' /", "{0 -}", {Bad("1*", realNumber)}},
                });
}

TEST(RecordReading, StringsAndOptions)
{
    const char* shape = R"({"type": "record", "items": [
        {"name": "A", "type": "string", "maxLength": 3}, {"name": "B", "type": "string", "preservesCase": true},
        {"name": "C", "type": "yesNo"}, {"name": "D", "type": "option", "options": ["ONE", "TWO"]}]})";
    ExpectReads(shape, {
                           {"abcd abcd YES two /", "{ABCD abcd yes TWO}"},
                           {"'1*' '' n 1* /", "{1*  no -}"},
                           {"'A''B' N ONE /", "{A B no ONE}"},
                           {"2*'a b' Y ONE /", "{A B a b yes ONE}"},
                           {"A B yES ONE /", "{A B - ONE}", {Bad("yES", "Must be either YES or NO")}},
                       });
    // What is wrong with an option, the metadata say.
    const Outcome outcome = ReadShape(shape, "A B Y SIX /");
    ASSERT_EQ(outcome.messages.size(), 1u);
    EXPECT_NE(outcome.messages[0].find("Item value \"SIX\" is not valid. "), std::string::npos);

    const TableInForce table(TableOf(shape));
    DeckManager::Environment::Instance().SetLimitStringLengthOnRead(true);
    DeckManager::Environment::Instance().SetUppercaseKeywordStringsOnRead(false);
    EXPECT_EQ(ReadText(LooseKeyword(table.Syntax("X")), "abcd abcd Y ONE /").tree, "{abc abcd yes ONE}");
}

TEST(RecordReading, AnOptionalItemLeavesWhatItCannotTake)
{
    ExpectReads(R"({"type": "record", "items": [{"name": "A", "type": "integer", "optionalOnRead": true},
                                          {"name": "B", "type": "string"}]})",
                {
                    {"5 abc /", "{5 ABC}"},
                    {"abc /", "{- ABC}"},
                    {"1* abc /", "{- -}", {tooMany}},
                    {"3*abc /", "{- ABC}", {tooMany}},
                    {"5 /", "{5 -}"},
                });
}

TEST(RecordReading, ALineCanBeARecord)
{
    ExpectReads(R"({"type": "record", "termination": "eol", "items": [{"name": "T", "type": "restOfLine"}]})",
                {
                    {"  a Title, it's / all -- of it   \nmore", "{  a Title, it's / all -- of it}"},
                    {"/", "{-}"},
                });
    ExpectReads(R"({"type": "list", "termination": "none", "element": {"type": "record", "termination": "eol", "items":
              [{"name": "A", "type": "integer"}, {"name": "T", "type": "restOfLine"}]}})",
                {{"1 one\n2 /\n3 three", "[{1 1 one} {2 2 /} {3 3 three}]"}});
    ExpectReads(R"({"type": "list", "element": {"type": "record", "termination": "eol", "items":
              [{"name": "A", "type": "integer"}, {"name": "B", "type": "integer"}]}})",
                {
                    {"1 2\n3\n4 5 6\n/", "[{1 2} {3 -} {4 5}]"},
                    {"1 2\n3 4 /", "[{1 2} {3 4}]"},
                    {"1 2\n3 /", "[{1 2} {3 -}]"},
                });
}

TEST(RecordReading, RecordsAndListsNest)
{
    ExpectReads(R"({"type": "record", "items": [{"name": "A", "type": "integer"},
              {"name": "R", "type": "record", "termination": "none", "items":
                [{"name": "B", "type": "integer"}, {"name": "C", "type": "integer"}]},
              {"name": "L", "type": "list", "element": {"type": "integer"}},
              {"name": "M", "type": "list", "termination": "none", "element": {"type": "string"}}]})",
                {
                    {"1 2 3 4 5 /\nx y /", "{1 {2 3} [4 5] [X Y]}"},
                    {"1 2 3 /\n/", "{1 {2 3} [] []}"},
                    {"1 2 3 4 /\nx y", "{1 {2 3} [4] [X Y]}", {notTerminated}},
                    // The terminator inside the nested record is the outer record's.
                    {"1 2 /\nx /", "{1 {2 -} [] []}"},
                });
}

TEST(RecordReading, References)
{
    const char* shape =
        R"({"type": "record", "items": [{"name": "A", "type": "integer"}, {"name": "B", "type": "string"}]})";
    const Outcome outcome = ReadShape(shape, "$NX 'W${N}' /", true);
    EXPECT_EQ(outcome.tree, "{- -}");
    EXPECT_TRUE(outcome.messages.empty());
    EXPECT_TRUE(outcome.variables.HasVariables());

    // Where a deck allows none they are text.
    const Outcome text = ReadShape(shape, "$NX W$N /");
    EXPECT_EQ(text.tree, "{- W$N}");
    EXPECT_EQ(text.messages, std::vector<std::string>{Bad("$NX", wholeNumber)});
}
