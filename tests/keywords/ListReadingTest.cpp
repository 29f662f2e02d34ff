#include <deckmanager/IDeckKeywords.h>

#include "tests/keywords/DataReading.h"

using namespace DataReading;

namespace {

constexpr const char* tooMany = "2 List in keyword X has too many items";
constexpr const char* notTerminated = "2 List in keyword X is not properly terminated";
constexpr const char* noDefault = "3 Defaulted value \"1*\" used but item is not defaultable (has no default value).";
constexpr const char* truncated = "3 Keyword X has more data than can be held; the rest is left out.";

std::string Thrown(const DeckManager::IKeyword& keyword, const char* text, const DeckManager::Context& context)
{
    return TestSupport::Thrown<DeckManager::DeckManagerException>([&] { ReadText(keyword, text, false, context); });
}

/// Narrower limits until the end of the scope.
struct Limits
{
    Limits(std::int64_t elements, std::int64_t containers)
    {
        DeckManager::DeserializeState::DefaultLimits() = {containers, containers, elements, 10};
    }
    ~Limits() { DeckManager::DeserializeState::DefaultLimits() = {}; }
};

} // namespace

TEST(ListReading, Items)
{
    ExpectReads(R"({"type": "list", "element": {"type": "integer"}})",
                {
                    {"1 2 3 /", "[1 2 3]"},
                    {"1 2\n  -- comment\n3\n/", "[1 2 3]"},
                    {"1 2--x\n3/ 4", "[1 2 3]"},
                    {"/", "[]"},
                    {"3*5 3.7 +8 12abc -99999999999 -2147483648/", "[5 5 5 3 8 12 -2147483647 -2147483647]"},
                    {"1 1* 2* 3 '1*' /", "[1 3]", {noDefault}},
                    {"1 x 2*y 4 /",
                     "[1 4]",
                     {"3 \"x\" can not be converted into int", "3 \"y\" can not be converted into int",
                      "3 \"y\" can not be converted into int"}},
                    {"1, 2,,3 /", "[1 2 3]", {noDefault}},
                    {"1 2 '/' 3", "[1 2]"},
                    {"1 2", "[1 2]", {notTerminated}},
                    {"0*5\n'\n1 /", "[1]", {"3 Unbalanced quote while reading keyword data: '"}},
                });
    ExpectReads(R"({"type": "list", "element": {"type": "real"}, "elementsDefaultable": true})",
                {
                    {"1 2.5e1 1.5D1 /", "[1 25 15]"},
                    {"2* 3*0.5 '1*' 1 /", "[1* 1* 0.5 0.5 0.5 1* 1]"},
                    {"1 12abc '' 1--2\n3 /", "[1 0 1 3]", {"3 \"12abc\" can not be converted into double"}},
                    {"2000000000*1.0 1/", "[1]", {"3 \"2000000000*1.0\" can not be converted into double"}},
                });
    ExpectReads(R"({"type": "list", "element": {"type": "yesNo"}})",
                {{"Y no NO /", "[yes no no]"}, {"Q /", "[]", {"3 \"Q\" can not be converted into bool"}}});
    ExpectReads(R"({"type": "list", "element": {"type": "option", "options": ["ONE", "TWO"]}})",
                {{"two 2*ONE /", "[TWO ONE ONE]"}, {"Q /", "[]", {"3 \"Q\" can not be converted into int"}}});
    ExpectReads(R"({"type": "list", "element": {"type": "string"}})", {{"a,b 'c d' 2*'e f' /", "[A B C D E F E F]"}});
    ExpectReads(R"({"type": "list", "element": {"type": "string", "allowsCommas": true, "preservesCase": true}})",
                {{"a,b ,c /", "[a,b ,c]"}});
}

TEST(ListReading, WithoutATerminator)
{
    ExpectReads(R"({"type": "list", "termination": "none", "element": {"type": "integer"}})",
                {{"1 2\n3", "[1 2 3]"}, {"1 2 /\n3", "[1 2]"}});

    // A size, written in digits here, or a word ends a nested list.
    ExpectReads(R"({"type": "record", "items": [
              {"name": "L", "type": "list", "termination": "none", "size": "2", "element": {"type": "integer"}},
              {"name": "M", "type": "list", "termination": "none", "size": "0", "element": {"type": "integer"}},
              {"name": "N", "type": "list", "termination": "none", "end": {"tokens": ["STOP"], "consume": true},
               "element": {"type": "integer"}},
              {"name": "O", "type": "string"}]})",
                {
                    {"1 2 3 4 STOP end /", "{[1 2] [] [3 4] END}"},
                    {"1\n2\nSTOP end /", "{[1 2] [] [] END}"},
                    {"5*7 STOP end /", "{[7 7] [] [7 7 7] END}"},
                    {"1 x 2 STOP end /", "{[1] [] [2] END}", {"3 \"x\" can not be converted into int"}},
                    {"1 2 3 /", "{[1 2] [] [3] -}"},
                });
}

TEST(ListReading, RecordsToALoneTerminator)
{
    ExpectReads(
        R"({"type": "list", "element": {"type": "record", "items":
              [{"name": "A", "type": "string"}, {"name": "B", "type": "integer"}]}})",
        {
            {"w1 1 /\nw2 2 /\n/", "[{W1 1} {W2 2}]"},
            {"w1 1 /\n/\nw2 2 /\n/", "[{W1 1}]"},
            {"w1 /  text\nw2 2 / -- text\n/ text", "[{W1 -} {W2 2}]"},
            {"/", "[]"},
            {"w1 1 /", "[{W1 1}]", {notTerminated}},
            {"w1 1 2 /\n/", "[{W1 1}]", {"2 Record in keyword X has too many items"}},
            {"2*w1 /\n/",
             "[{W1 -}]",
             {"3 A problem was encountered when parsing the keyword X. Item value \"w1\" is not valid. Must be a whole "
              "number."}},
        });
    ExpectReads(R"({"type": "list", "element": {"type": "record", "items":
              [{"name": "A", "type": "integer", "default": 3}, {"name": "B", "type": "integer"}]}})",
                {
                    {"1 2 /\n/\n3 4 /\n/", "[{1 2} {- -} {3 4}]"},
                    {"1 2 /\n/", "[{1 2}]"},
                    {"1 2 /\n/\n/", "[{1 2} {- -}]"},
                    {"/", "[]"},
                });
}

TEST(ListReading, TablesAndLists)
{
    const std::string table = R"({"type": "list", "termination": "none", "autoFill": true, "element":
        {"type": "list", "element": {"type": "record", "termination": "none", "items":
            [{"name": "A", "type": "real"}, {"name": "B", "type": "real"}]}}})";
    ExpectReads(table, {
                           {"1 2\n3 4 /\n/\n5 6 /", "[[{1 2} {3 4}] [{1 2} {3 4}] [{5 6}]]"},
                           {"/\n1 2 /\n/\n/", "[[] [{1 2}] [{1 2}] [{1 2}]]"},
                           {"1 2 3 4\n/", "[[{1 2} {3 4}]]"},
                           {"1 2\n3 /", "[[{1 2} {3 -}]]"},
                       });
    {
        const TableInForce inForce(TableOf(table));
        DeckManager::Environment::Instance().AutoFillEmptyListElements(false);
        EXPECT_EQ(ReadText(LooseKeyword(inForce.Syntax("X")), "1 2 /\n/\n").tree, "[[{1 2}] []]");
    }

    ExpectReads(R"({"type": "list", "element": {"type": "list", "element": {"type": "string"}}})",
                {
                    {"A B /\nC /\n/", "[[A B] [C]]"},
                    {"A B /\n/\nC /\n/", "[[A B] [] [C]]"},
                    {"A B /\nC /", "[[A B] [C]]", {notTerminated}},
                });
    ExpectReads(R"({"type": "list", "element": {"type": "list", "element": {"type": "record", "items":
              [{"name": "A", "type": "string"}]}}})",
                {
                    {"A /\nB /\n/\nC /\n/\n/", "[[{A} {B}] [{C}]]"},
                    {"/", "[]"},
                });
    ExpectReads(R"({"type": "list", "termination": "none", "element": {"type": "record", "items":
              [{"name": "A", "type": "real"}, {"name": "B", "type": "real"}]}})",
                {{"1 2 /\n3 /", "[{1 2} {3 -}]"}});
}

TEST(ListReading, ElementsThatTakeNothingEndTheList)
{
    const std::string record = R"({"type": "record", "termination": "none", "items":
        [{"name": "A", "type": "integer", "optionalOnRead": true}, {"name": "B", "type": "real", "optionalOnRead": true}]})";
    ExpectReads(fmt::format(R"({{"type": "list", "termination": "none", "element": {}}})", record),
                {{"1 2.5 3 word 4", "[{1 2.5} {3 -}]"}, {"word", "[]"}});
    ExpectReads(fmt::format(R"({{"type": "list", "element": {}}})", record),
                {{"1 2.5 word 4 /", "[{1 2.5}]", {tooMany}}});
}

TEST(ListReading, LongRepeatsAreBounded)
{
    const Limits limits(1000, 100);
    const Outcome items = ReadShape(R"({"type": "list", "element": {"type": "real"}, "elementsDefaultable": true})",
                                    "999999999*1.5 999999999* 2 /");
    EXPECT_EQ(items.messages, std::vector<std::string>{truncated});
    EXPECT_EQ(std::count(items.tree.begin(), items.tree.end(), ' '), 999);

    const char* records = R"({"type": "list", "termination": "none", "element":
        {"type": "record", "termination": "none", "items": [{"name": "A", "type": "integer"}]}})";
    const Outcome containers = ReadShape(records, "5 100*1 100*2 999999999*3 4");
    EXPECT_EQ(containers.messages, std::vector<std::string>{truncated});
    EXPECT_EQ(std::count(containers.tree.begin(), containers.tree.end(), '{'), 302);
    EXPECT_TRUE(containers.tree.ends_with("{3} {4}]"));

    const Outcome references =
        ReadShape(R"({"type": "list", "element": {"type": "integer"}})", "999999999*$A 7 /", true);
    EXPECT_EQ(references.messages, std::vector<std::string>{truncated});

    const Outcome bad = ReadShape(R"({"type": "list", "element": {"type": "integer"}})", "999999999*x 7 /");
    EXPECT_EQ(bad.tree, "[7]");
    EXPECT_EQ(bad.messages.size(), 10u);

    // Across the containers that the repeat makes, and anew for the next repeat.
    EXPECT_EQ(ReadShape(records, "50*x 20*y 3*z").messages.size(), 23u);
    EXPECT_EQ(ReadShape(R"({"type": "list", "element": {"type": "list", "termination": "none", "size": "2", "element":
                            {"type": "integer"}}})",
                        "50*x /")
                  .messages.size(),
              10u);
}

TEST(ListReading, ReferencesCountRemovedElements)
{
    const TableInForce table(TableOf(R"({"type": "list", "element": {"type": "integer"}})"));
    Outcome outcome = ReadText(LooseKeyword(table.Syntax("X")), "1 x $A 2*$B 4 /", true);
    EXPECT_EQ(outcome.tree, "[1 1* 1* 1* 4]");
    auto* const variables = dynamic_cast<Core::Keywords::IKeywordListDataVariables*>(
        outcome.variables.GetDataVariables(outcome.data.get()));
    ASSERT_NE(variables, nullptr);
    EXPECT_EQ(variables->GetVariableIndices(), (std::list<int>{2, 3, 4}));
    EXPECT_EQ(variables->GetVariable(4).GetString(), "$B");
}

TEST(ListReading, SizesOfTheKeywordItself)
{
    // A deck that nothing is asked of.
    const char noDeck = 0;
    const DeckManager::Context context(reinterpret_cast<const DeckManager::IDeckKeywords*>(&noDeck));
    const char* lift =
        R"([{"name": "VFPPROD", "names": ["VFPX"], "sections": "all", "data": {"type": "record", "items": [
        {"name": "N", "type": "integer"},
        {"name": "F", "type": "list", "element": {"type": "real"}}, {"name": "T", "type": "list", "element": {"type": "real"}},
        {"name": "W", "type": "list", "element": {"type": "real"}}, {"name": "G", "type": "list", "element": {"type": "real"}},
        {"name": "A", "type": "list", "element": {"type": "real"}},
        {"name": "V", "type": "list", "termination": "none", "size": "self:SIZEVALUESLIST", "element":
            {"type": "list", "termination": "none", "size": "self:SIZEFLOVALUES", "element": {"type": "real"}}},
        {"name": "E", "type": "string"}]}}])";
    const TableInForce table(lift);
    const LooseKeyword keyword(table.Syntax("VFPPROD"));
    EXPECT_EQ(ReadText(keyword, "1 10 20 /\n1 2 /\n1 /\n1 /\n1 /\n5 6 7 8 end /", false, context).tree,
              "{1 [10 20] [1 2] [1] [1] [1] [[5 6] [7 8]] END}");
    // A product beyond all bounds is no size: the list then takes what there is.
    EXPECT_EQ(ReadText(keyword, "1 10 /\n65536*1 /\n65536*1 /\n65536*1 /\n65536*1 /\n5 6 /", false, context).messages,
              std::vector<std::string>{});
    EXPECT_EQ(
        Thrown(LooseKeyword(table.Syntax("VFPX"), "VFPX"), "1 1 /\n1 /\n1 /\n1 /\n1 /\n5 /", context),
        "DeckManager::KeywordDataDeserializer(): unhandled size \"self:SIZEVALUESLIST\" while parsing keyword VFPX. ");
    // The same names in a table that gives the keyword another shape.
    const std::string sized = R"({"type": "list", "termination": "none", "size": "self:SIZEFLOVALUES", "element":
        {"type": "real"}})";
    for (const std::string& shape : {fmt::format(R"({{"type": "list", "element": {}}})", sized),
                                     fmt::format(R"({{"type": "record", "items": [{{"name": "N", "type": "integer"}},
                          {{"name": "F", "type": "integer"}}, {{"name": "V", "use": "V"}}]}})"),
                                     std::string(R"({"type": "record", "items": [{"name": "V", "use": "V"}]})")})
    {
        const TableInForce other(fmt::format(
            R"({{"shapes": {{"V": {}}}, "keywords": [{{"name": "VFPINJ", "sections": "all", "data": {}}}]}})", sized,
            shape));
        EXPECT_EQ(Thrown(LooseKeyword(other.Syntax("VFPINJ")), "1 2 3 /", context),
                  "DeckManager::KeywordDataDeserializer(): unhandled size \"self:SIZEFLOVALUES\" while parsing keyword "
                  "VFPINJ. ");
    }
    // Without a deck no expression can be answered.
    EXPECT_THROW(ReadText(keyword, "1 1 /\n1 /\n1 /\n1 /\n1 /\n5 /"), DeckManager::DeckManagerException);
}
