#include "tests/keywords/DataReading.h"

using namespace DataReading;

namespace {

LooseKeyword BuiltIn(std::string_view name)
{
    return LooseKeyword(DeckManager::Environment::Instance().GetSyntaxTable()->FindSyntax(name, true));
}

} // namespace

TEST(CustomReaders, ViscosityCoefficientsAreSplitByTheFormula)
{
    ExpectReads(
        BuiltIn("OILVISCC"),
        {
            {"ASTM CORRELATION 1 2 3\n4 5 6 7 8 /\n/\nlog formula 1 2 3 4 /\n",
             "[[{ASTM CORRELATION [[1 2 3] [4 5 6] [7 8]]}] [{LOG FORMULA [[1 2] [3 4]]}]]"},
            {"VOGEL CORRELATION 1 2 3 4 5 6 7 /", "[[{VOGEL CORRELATION [[1 2] [3 4] [5]]}]]"},
            {"VOGEL CORRELATION 1 /", "[[{VOGEL CORRELATION [[1]]}]]"},
            {"ASTM FORMULA 3*1.5 3* /", "[[{ASTM FORMULA [[1.5 1.5] [1.5 1*] [1* 1*]]}]]"},
            {"ANDRADE CORRELATION 1 2 3 4 5 /\nANDRADE FORMULA 1 2 3 /",
             "[[{ANDRADE CORRELATION [[1 2 3] [4 5]]} {ANDRADE FORMULA [[1] [2]]}]]"},
            {"LOG CORRELATION 1 1* 3 4 /", "[[{LOG CORRELATION [[1 1*] [3 4]]}]]"},
            {"LOG FORMULA /", "[[{LOG FORMULA []}]]"},
            // A bad value ends the run, and what follows makes no record.
            {"LOG FORMULA 1 2 x 3 /\nLOG FORMULA 5 6 /", "[[{LOG FORMULA [[1] [2]]}] [{LOG FORMULA [[5] [6]]}]]"},
            {"LOG /\n/\n", "[]"},
            {"900000000*X /", "[]", {"3 Keyword OILVISCC has more data than can be held; the rest is left out."}},
        });

    Outcome outcome = ReadText(BuiltIn("OILVISCC"), "ASTM FORMULA 1 $A 2 2*$B 3 /", true);
    EXPECT_EQ(outcome.tree, "[[{ASTM FORMULA [[1 1*] [2 1*] [1* 3]]}]]");
    const auto& tables = static_cast<const Core::Keywords::IKeywordListData&>(*outcome.data);
    const auto& records = static_cast<const Core::Keywords::IKeywordListData&>(tables.GetContainer(0));
    const auto& record = static_cast<const Core::Keywords::IKeywordRecordData&>(records.GetContainer(0));
    const auto& groups = static_cast<const Core::Keywords::IKeywordListData&>(record.GetContainer(2));
    auto* const variables = dynamic_cast<Core::Keywords::IKeywordListDataVariables*>(
        outcome.variables.GetDataVariables(&groups.GetContainer(2)));
    ASSERT_NE(variables, nullptr);
    EXPECT_EQ(variables->GetVariableIndices(), std::list<int>{0});
    EXPECT_EQ(variables->GetVariable(0).GetString(), "$B");
}

TEST(CustomReaders, ADefinitionTakesItsLine)
{
    ExpectReads(BuiltIn("UDQ"),
                {
                    {"DEFINE WUX A / B /\nASSIGN WUY P1 2.5 /\n/", "[{DEFINE WUX [A / B]} {ASSIGN WUY [P1 2.5]}]"},
                    {"define wux WOPR*2+3,4 'a b' / text\n/", "[{DEFINE WUX [WOPR * 2+3,4 a b]}]"},
                    {"DEFINE WUX 1 + 2\n/", "[{DEFINE WUX [1 + 2]}]"},
                    {"DEFINE WUX 2*3 --2\n/", "[{DEFINE WUX [2 * 3]}]"},
                    {"DEFINE\n/", "[{DEFINE - []}]"},
                    {"DEFINE WUX (A) /\nDEFINE WUZ B /",
                     "[{DEFINE WUX [(A)]} {DEFINE WUZ [B]}]",
                     {"2 List in keyword UDQ is not properly terminated"}},
                });
    Outcome outcome = ReadText(BuiltIn("UDQ"), "DEFINE WUX A * $B /\n/", true);
    EXPECT_EQ(outcome.tree, "[{DEFINE WUX [A * 1*]}]");
    EXPECT_TRUE(outcome.variables.HasVariables());
}

TEST(CustomReaders, ATableHasTheRowsOfItsDimensions)
{
    const char* line = "{{TUFL 1} [{LC [1 2 3]}] [{[10 20 30]}]}";
    ExpectReads(BuiltIn("UDT"), {
                                    {"'TUFL' 1 /\nLC 1 2 3 /\n10 20 30 /\n/\n/", line},
                                    {"T 2 /\nLC 1 2 /\nNV 5 6 7 /\n1 2 /\n3 4 /\n2*5 /\n/\n/\n",
                                     "{{T 2} [{LC [1 2]} {NV [5 6 7]}] [{[1 2]} {[3 4]} {[5 5]} {[]}]}"},
                                    {"T 3 /\nLC 1 /\nNV 5 /\nNV 8 9 /\n1 /\n/\n2 /\n/\n/\n/\n",
                                     "{{T 3} [{LC [1]} {NV [5]} {NV [8 9]}] [{[1]} {[]} {[2]} {[]} {[]}]}"},
                                    {"T", "{{T -} [] []}"},
                                });
    // A table that doesn't fit is refused where it stands, and the generic reader goes on from there.
    ExpectReads(BuiltIn("UDT"), {
                                    {"T 1 /\nLC 1 2 3 /\n10 20 /\n/\n/", "{{T 1} [{LC [1 2 3]}] [{[10 20]}]}"},
                                    {"T 1 /\nLC 1 2 3 /\n10 x 30 /\n/\n/", "{{30 1} [{LC [1 2 3]}] [{[10]}]}"},
                                    {"T 1 /\nLC 1 2 3 /\n10 20 30 /\n/\n", "{{T 1} [{LC [1 2 3]}] [{[10 20 30]}]}"},
                                    {"T 5 /\nLC 1 /\n/\n", "{{T 5} [{LC [1]}] []}"},
                                });
    DeckManager::DeserializeState::DefaultLimits() = {1000, 1000, 1000, 10};
    const Outcome outcome = ReadText(BuiltIn("UDT"), "T 2 /\nLC 1 /\nNV 999999999*1 /\n999999999*'/'\n/\n/");
    DeckManager::DeserializeState::DefaultLimits() = {};
    EXPECT_EQ(outcome.messages[0], "3 Keyword UDT has more data than can be held; the rest is left out.");
}

TEST(CustomReaders, AreThoseOfTheTableInForce)
{
    const char* viscosity = R"([{"name": "OILVISCC", "sections": "all", "data": {"type": "list", "termination": "none",
        "element": {"type": "list", "element": {"type": "record", "items": [
            {"name": "A", "type": "option", "options": ["LOG", "OTHER"]},
            {"name": "B", "type": "option", "options": ["FORMULA", "TABLE"]},
            {"name": "C", "type": "list", "termination": "none", "element":
                {"type": "list", "termination": "none", "element": {"type": "real"}}}]}}}}])";
    {
        const TableInForce table(viscosity);
        const LooseKeyword keyword(table.Syntax("OILVISCC"));
        EXPECT_EQ(ReadText(keyword, "LOG FORMULA 1 2 /").tree, "[[{LOG FORMULA [[1] [2]]}]]");
        for (const char* text : {"OTHER FORMULA 1 /", "LOG TABLE 1 /"})
            EXPECT_EQ(Thrown<DeckManager::DeckManagerException>([&] { ReadText(keyword, text); }),
                      "DeckManager::CustomDeserializerOILVISCC: unhandled type");
    }
    const struct
    {
        const char* keyword;
        const char* shape;
        const char* message;
    } mismatches[] = {
        {"OILVISCC", R"({"type": "list", "element": {"type": "real"}})",
         "DeckManager::CustomDeserializerOILVISCC: syntax mismatch"},
        {"UDQ", R"({"type": "list", "element": {"type": "real"}})",
         "DeckManager::CustomDeserializerUDQRecord: unrecognized metadata"},
        {"UDQ", R"({"type": "list", "element": {"type": "record", "items": [{"name": "A", "type": "real"}]}})",
         "DeckManager::CustomDeserializerUDQRecord: syntax mismatch"},
        {"UDT", R"({"type": "record", "items": [{"name": "A", "type": "real"}]})",
         "DeckManager::CustomDeserializerUDTRecord: syntax mismatch"},
    };
    for (const auto& mismatch : mismatches) {
        const TableInForce table(fmt::format(
            R"([{{"name": "{}", "sections": "all", "data": {}}}, {{"name": "X", "sections": "all", "data":
                {{"type": "list", "element": {{"type": "string"}}}}}}])",
            mismatch.keyword, mismatch.shape));
        EXPECT_EQ(Thrown<DeckManager::DeckManagerException>([&] { ReadText(LooseKeyword(table.Syntax("X")), "A /"); }),
                  mismatch.message);
    }
    // The built-in table is back.
    EXPECT_EQ(ReadText(BuiltIn("UDQ"), "DEFINE WUX A*B /\n/").tree, "[{DEFINE WUX [A * B]}]");
}
