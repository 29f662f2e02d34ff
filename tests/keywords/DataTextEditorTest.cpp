#include <chrono>

#include <deckmanager/DataTextEditor.h>

#include "tests/keywords/DataReading.h"
#include "tests/support/DeckTest.h"

using namespace DataReading;
using DeckManager::DataTextEditor;
using Path = DataTextEditor::Path;
using Value = DataTextEditor::Value;
using Outcome_ = DataTextEditor::Outcome;

namespace {

constexpr const char* items =
    R"({"type": "record", "items": [{"name": "N", "type": "string", "defaultable": true}, {"name": "I", "type": "integer"},
        {"name": "R", "type": "real"}, {"name": "O", "type": "option", "options": ["OPEN", "SHUT", "TWO WORDS"]},
        {"name": "Y", "type": "yesNo"}]})";
constexpr const char* reals = R"({"type": "list", "element": {"type": "real"}, "elementsDefaultable": true})";
constexpr const char* integers = R"({"type": "list", "element": {"type": "integer"}})";
constexpr const char* strings = R"({"type": "list", "element": {"type": "string"}})";
constexpr const char* commas = R"({"type": "list", "element": {"type": "string", "allowsCommas": true}})";
constexpr const char* map = R"({"type": "map", "entries": ["A", "B", "C", "D"]})";
constexpr const char* records =
    R"({"type": "list", "element": {"type": "record", "items": [{"name": "WELL", "type": "string"},
        {"name": "I", "type": "integer"}, {"name": "R", "type": "real"}]}})";
constexpr const char* lines =
    R"({"type": "list", "termination": "none", "element": {"type": "record", "termination": "eol", "items": [
        {"name": "A", "type": "integer"}, {"name": "B", "type": "integer"}]}})";
constexpr const char* filled =
    R"({"type": "list", "termination": "none", "autoFill": true, "element": {"type": "record", "items": [
        {"name": "A", "type": "integer", "defaultable": true}, {"name": "B", "type": "integer"}]}})";
constexpr const char* title =
    R"({"type": "record", "termination": "none", "items": [{"name": "T", "type": "restOfLine"}]})";
constexpr const char* tables =
    R"({"type": "list", "termination": "none", "element": {"type": "list", "element": {"type": "real"}}})";

enum class Edit
{
    Set,
    Element,
    Remove
};

struct Case
{
    const char* shape;
    const char* text;
    Path path;
    const char* value;
    const char* result; ///< the new text; null for a refusal
    const char* reason = "";
};

struct Refusal
{
    const char* shape;
    const char* text;
    Path path;
    const char* value;
    const char* reason;
};

std::string Table(std::string_view shape)
{
    return fmt::format(R"([{{"name": "X", "sections": "all", "data": {}}}, {{"name": "PORO", "sections": "all"}}])",
                       shape);
}

DataTextEditor::Result Run(const Case& c, Edit edit, bool variables)
{
    const TableInForce table(Table(c.shape));
    DataTextEditor::Settings settings;
    settings.allowsVariables = variables;
    const DataTextEditor editor(*table.Syntax("X"), "X", settings);
    if (edit == Edit::Set) return editor.Set(c.text, c.path, Value::Text(c.value));
    if (edit == Edit::Remove) return editor.Remove(c.text, c.path);
    Path list(c.path.begin(), c.path.end() - 1);
    return editor.InsertElement(c.text, list, c.path.back().index, Value::Text(c.value));
}

void Check(const std::vector<Case>& cases, Edit edit = Edit::Set, bool variables = false)
{
    for (const Case& c : cases) {
        const TestSupport::LogRecorder log;
        const DataTextEditor::Result result = Run(c, edit, variables);
        EXPECT_EQ(result.IsDone(), c.result != nullptr) << c.text << "\n" << c.value << "\n" << result.reason;
        EXPECT_EQ(result.text, c.result ? c.result : "") << c.text;
        EXPECT_EQ(result.reason, c.reason) << c.text;
        EXPECT_TRUE(log.Messages().empty()) << c.text;
    }
}

void CheckRefused(const std::vector<Refusal>& refusals, bool variables = false)
{
    std::vector<Case> cases;
    for (const Refusal& c : refusals)
        cases.push_back({c.shape, c.text, c.path, c.value, nullptr, c.reason});
    Check(cases, Edit::Set, variables);
}

constexpr const char* elsewhere = "With the change in its text X would be read in another way.";

} // namespace

TEST(DataTextEditor, ItemsOfARecord)
{
    Check({
        {items, " A  1  2.5 OPEN /", {1}, "5", " A  5  2.5 OPEN /"},
        {items, " A  1  2.5 OPEN /", {"R"}, "31", " A  1  31 OPEN /"},
        {items, "A 1 -- one\n  2.5 -- two\n OPEN / three\n", {2}, "1E3", "A 1 -- one\n  1E3 -- two\n OPEN / three\n"},
        {items, "'A B' 1 /", {0}, "C", "'C' 1 /"},
        {items, "A 1 /", {0}, "B C", "'B C' 1 /"},
        {items, "A 1 /", {0}, "'1*'", "'1*' 1 /"},
        {items, "A 1 /", {0}, "'C'", "'C' 1 /"},     // as it was given
        {items, "A 1 /", {0}, "PORO", "'PORO' 1 /"}, // at a line's head it would be a keyword
        {items, " A 1 /", {0}, "PORO", " PORO 1 /"},
        {items, "A 1 2 shut YES /", {3}, "open", "A 1 2 open YES /"},
        {items, "A 1 2 shut YES /", {3}, "two words", "A 1 2 'two words' YES /"},
        {items, "A 1 2 shut YES /", {"y"}, "n", "A 1 2 shut n /"},
        {items, "A 1 2 /", {1}, "1*", "A 1* 2 /"},
        {items, "A 1 2 /", {1}, "1", "A 1 2 /"},
        {items, "A 1 2 /", {4}, "1*", "A 1 2 /"},
        // Defaults and repeats.
        {items, "A 3* YES /", {2}, "5", "A 1* 5 1* YES /"},
        {items, "A 3* /", {1}, "5", "A 5 2* /"},
        {items, "A 3* /", {3}, "SHUT", "A 2* SHUT /"},
        {items, "A 9* /", {3}, "SHUT", "A 2* SHUT 6* /"},
        {items, "A 1* 2 /", {1}, "5", "A 5 2 /"},
        {items, "A 2*7 /", {2}, "5", "A 7 5 /"},
        {items, "A 1*7 /", {1}, "5", "A 5 /"},
        {items, "A /", {1}, "5", "A 5 /"},
        {items, "A /", {3}, "SHUT", "A 2* SHUT /"},
        {items, "A   -- well\n   / end\n", {2}, "5", "A 1* 5   -- well\n   / end\n"},
        {items, "A/", {2}, "5", "A 1* 5/"},
        {items, " /", {2}, "5", " 2* 5 /"},
        {items, "A 1", {2}, "5", "A 1 5"},
        {items, "A 1\n", {3}, "OPEN", "A 1 1* OPEN\n"},
        {items, "", {2}, "5", " 2* 5 /\n"},
        {items, "-- only a comment", {1}, "5", "-- only a comment\n 1* 5 /\n"},
        {items, "-- a comment\n\n-- above the next\n", {1}, "5", "-- a comment\n 1* 5 /\n\n-- above the next\n"},
        {items, ",1,,OPEN /", {0}, "A", "A,1,,OPEN /"},
        {items, ",1,,OPEN /", {2}, "4", ",1,4,OPEN /"},
        {items, "A,1,2 /", {1}, "4", "A,4,2 /"},
        {items, "A 1\r\n 2 -- two\r\n OPEN /\r\n", {2}, "3", "A 1\r\n 3 -- two\r\n OPEN /\r\n"},
        {items, "A\t1\t2 /", {1}, "30", "A\t30\t2 /"},
        {title, "An old title, 'with' / marks  \n\n", {0}, "A new one -- here", "A new one -- here  \n\n"},
        {title, "", {0}, "A new one", "A new one\n"},
    });
}

TEST(DataTextEditor, ElementsOfLists)
{
    Check({
        {reals, "3*30.5 /", {1}, "31", "30.5 31 30.5 /"},
        {reals, "3* /", {1}, "5", "1* 5 1* /"},
        {reals, "4*2.50 /", {0}, "1", "1 3*2.50 /"},
        {reals, "4*2.50 /", {3}, "1", "3*2.50 1 /"},
        {reals, " 1 2 3\n 4 -- four\n 5 /", {3}, "40", " 1 2 3\n 40 -- four\n 5 /"},
        {reals, "1 2 3 /", {2}, "1*", "1 2 1* /"},
        {reals, "1.0 x 3.0 /", {1}, "4", "1.0 x 4 /"}, // what is no number holds no place
        {reals, "1 0*7 2 /", {1}, "4", "1 0*7 4 /"},
        {reals, "1 2 3", {2}, "4", "1 2 4"},
        {integers, "2*7 1 /", {1}, "-3", "7 -3 1 /"},
        {strings, "A 'B C' 2*'D E' /", {3}, "F", "A 'B C' 'D E' F /"},
        {strings, "A 'B C' /", {1}, "D", "A 'D' /"},
        {strings, "A B /", {1}, "C,D", "A 'C,D' /"},
        {commas, "A B,C /", {1}, "C,D", "A C,D /"},
        {tables, "1 2 /\n3 4 5 /\n", {1, 1}, "7", "1 2 /\n3 7 5 /\n"},
        {records, "A 1 /\n B 2 3 / b\n/", {1, 2}, "4", "A 1 /\n B 2 4 / b\n/"},
        {records, "A 1 /\n B 2 / b\n/", {1, "R"}, "4", "A 1 /\n B 2 4 / b\n/"},
        {lines, "1 2 -- a\n3\n", {1, 1}, "4", "1 2 -- a\n3 4\n"},
    });
    Check(
        {
            {reals, "1 2 /", {2}, "3", "1 2 3 /"},
            {reals, "1 2 /", {-1}, "3", "1 2 3 /"},
            {reals, "1 2/", {0}, "3", "3 1 2/"},
            {reals, "3*2 /", {1}, "3", "2 3 2*2 /"},
            {reals, "/", {-1}, "3", "3 /"},
            {reals, "", {-1}, "3", " 3 /\n"},
            {reals, "1 -- one\n/", {-1}, "3", "1 3 -- one\n/"},
            {strings, "A /", {0}, "PORO", " PORO A /"},
            {tables, "1 2 /\n3 /\n", {0, -1}, "7", "1 2 7 /\n3 /\n"},
        },
        Edit::Element);
    Check(
        {
            {reals, "1 2 3 /", {1}, "", "1 3 /"},
            {reals, "1 2 3 /", {0}, "", "2 3 /"},
            {reals, "1 2\n 3 -- three\n/", {2}, "", "1 2\n -- three\n/"},
            {reals, "1 2\n 3\n/", {2}, "", "1 2\n/"},
            {reals, "3*5 /", {1}, "", "2*5 /"},
            {reals, "2* 5 /", {1}, "", "1* 5 /"},
            {reals, "2*7 5 /", {1}, "", "7 5 /"},
            {reals, "1,2,3 /", {1}, "", "1,3 /"},
            {records, "A 1 /\n-- b\n B 2\n -- inside\n 3 / b\n C /\n/", {1}, "", "A 1 /\n-- b\n -- inside\n C /\n/"},
            {records, "A 1 /\n/", {0}, "", "/"},
        },
        Edit::Remove);
}

TEST(DataTextEditor, EntriesOfMaps)
{
    Check({
        {map, "A=3 B /", {0}, "4", "A=4 B /"},
        {map, "A=3 b /", {"B"}, "4", "A=3 b=4 /"},
        {map, "A = 3 B= 1 /", {0}, "4", "A =4 B= 1 /"},
        {map, "A = 3 B= 1 /", {1}, "4", "A = 3 B=4 /"},
        {map, "A = 3 B /", {0}, "1*", "B /"},
        {map, "A=3 B /", {"c"}, "1", "A=3 B C /"},
        {map, "A=3 B /", {3}, "2", "A=3 B D=2 /"},
        {map, "A=3 B -- ab\n/", {0}, "1*", "B -- ab\n/"},
        {map, "1 2 3 /", {1}, "4", "1 4 3 /"},
        {map, "1 2* 3 /", {2}, "4", "1 1* 4 3 /"},
        {map, "1 /", {3}, "4", "1 2* 4 /"},
        {map, "1 2 /", {0}, "1*", "1* 2 /"},
        {map, "'A=3' 'B' /", {0}, "4", "'A=4' 'B' /"},
        {map, "'A=3' 'B' /", {1}, "4", "'A=3' 'B=4' /"},
        {map, "/", {1}, "2", " B=2 /"},
        {map, "", {1}, "1", " B /\n"},
    });
}

TEST(DataTextEditor, ReferencesToVariables)
{
    Check(
        {
            {items, "A $I 2 /", {1}, "5", "A 5 2 /"},
            {items, "A 1 2 /", {1}, "$I", "A $I 2 /"},
            {items, "A 3 /", {2}, "$R", "A 3 $R /"},
            {reals, "3*$R /", {1}, "2", "$R 2 $R /"},
            {reals, "1 2 /", {1}, "$R", "1 $R /"},
            {map, "A=$V B /", {0}, "2", "A=2 B /"},
            {items, "A 1 2 /", {0}, "$A B", "'$A B' 1 2 /"},
        },
        Edit::Set, true);
    CheckRefused(
        {{items, "A 1 2 /", {0}, "$A' B", "The value \"$A' B\" is not valid. A reference can not hold a quote."}},
        true);
    CheckRefused({{items, "A 1 2 /", {1}, "$I", "The value \"$I\" is not valid. Must be a whole number."}});
}

TEST(DataTextEditor, RefusalsSayWhy)
{
    CheckRefused({
        {items, "A 1 2 /", {1}, "x", "The value \"x\" is not valid. Must be a whole number."},
        {items, "A 1 2 /", {1}, "3.5", "The value \"3.5\" is not valid. Must be a whole number."},
        {items,
         "A 1 2 /",
         {1},
         "3000000000",
         "The value \"3000000000\" is not valid. Must be between -2147483647 and 2147483647."},
        {items, "A 1 2 /", {2}, "", "The value \"\" is not valid. Must be a real number."},
        {items, "A 1 2 /", {4}, "maybe", "The value \"maybe\" is not valid. Must be either YES or NO."},
        {items, "A 1 2 /", {0}, "it's", "The value \"it's\" is not valid. A string can not hold a quote."},
        {items, "A 1 2 /", {0}, "a\nb", "The value \"a\nb\" is not valid. Must stand on one line."},
        {items, "A 1 2 /", {7}, "x", "There is no item 7 in X."},
        {items, "A 1 2 /", {"Q"}, "x", "There is no item Q in X."},
        {items, "A 1 2 /", {0, 1}, "x", "X[0] is a single value and has no items."},
        {items, "A 1 2 /", {}, "x", "X is no single value."},
        {items, "A 1 2 /", {0}, "/", elsewhere}, // a terminator in quotes too
        {reals, "1 2 /", {2}, "x", "The value \"x\" is not valid. Must be a real number."},
        {reals, "1 2 /", {2}, "3", "There is no element 2 in X, which has 2."},
        {integers, "1 2 /", {1}, "1*", "The elements of X can not be left to a default."},
        {records, "A 1 /\n/", {3, 0}, "B", "There is no element 3 in X, which has 1."},
        {records, "A 1 /\n/", {0}, "B", "X[0] is no single value."},
        {map, "A /", {"Q"}, "1", "There is no entry Q in X."},
        {map, "A /", {"B"}, "x", "The value \"x\" is not valid. Must be a whole number."},
        {R"({"type": "rawText", "terminator": "E"})",
         "a\nE\n",
         {0},
         "b",
         "The data of X are text as it stands, and have no items."},
        {title, "A title", {0}, "", "The value would be read as something else where it stands."},
    });
    const TableInForce table(Table(items));
    const DataTextEditor editor(*table.Syntax("X"));
    EXPECT_EQ(editor.Set("A 1 /", {1}, Value::Real(3)).outcome, Outcome_::BadValue);
    EXPECT_EQ(editor.Set("A 1 /", {1}, Value::String("3")).outcome, Outcome_::BadValue);
    EXPECT_EQ(editor.Set("A 1 /", {3}, Value::String("3")).outcome, Outcome_::BadValue);
    EXPECT_EQ(editor.Set("A 1 /", {9}, Value::Integer(3)).outcome, Outcome_::NoSuchItem);
    EXPECT_EQ(editor.Set("A 1 /", {0}, Value::String("/")).outcome, Outcome_::NotInText);
    EXPECT_EQ(editor.Set("A 1 /", {1}, Value::Integer(1)).outcome, Outcome_::Unchanged);
    EXPECT_EQ(editor.Set("A 1 /", {2}, Value::Real(0.1 + 0.2)).text, "A 1 0.30000000000000004 /");
    EXPECT_EQ(editor.Set("A 1 /", {2}, Value::Real(1e20)).text, "A 1 1.0E+20 /");
    EXPECT_EQ(editor.Set("A 1 /", {4}, Value::YesNo(true)).text, "A 1 2* YES /");
    EXPECT_EQ(editor.Set("A 1 /", {0}, Value::String("1*")).text, "'1*' 1 /");
    EXPECT_EQ(editor.Set("A 1 /", {0}, Value::Default()).text, "1* 1 /");
}

TEST(DataTextEditor, RecordsAreAddedInTheMannerOfTheirNeighbours)
{
    using Values = std::vector<Value>;
    const auto b = Value::Text("B");
    const Values whole{b, Value::Integer(3), Value::Real(4)};
    const Values wide{Value::Text("LONGNAME"), Value::Integer(3)};
    const Values quoted{Value::Text("PORO"), Value::Default(), Value::Real(1.5)};
    const std::tuple<const char*, const char*, int, Values, const char*> cases[] = {
        {records, "  A    1   2.5   /\n/\n", -1, whole, "  A    1   2.5   /\n  B    3   4     /\n/\n"},
        {records, "  A    1   2.5   / -- a\n/\n", 0, wide, "  LONGNAME 3     /\n  A    1   2.5   / -- a\n/\n"},
        {records, "A 1\n 2 / a\n-- c\nC 2 /\n/\n", 1, quoted, "A 1\n 2 / a\n'PORO' 1* 1.5 /\n-- c\nC 2 /\n/\n"},
        {records, "/\n", 0, {b}, " B /\n/\n"},
        {records, "", 0, {b}, " B /\n/\n"},
        {records, "A /\r\n/\r\n", -1, {b}, "A /\r\nB /\r\n/\r\n"},
        {records, "A /", -1, {b}, "A /\nB /"},
        {lines, " 1 2\n 3\n", 1, {Value::Integer(7)}, " 1 2\n 7\n 3\n"},
    };
    for (const auto& [shape, text, index, values, expected] : cases) {
        const TableInForce table(Table(shape));
        const auto result = DataTextEditor(*table.Syntax("X")).InsertRecord(text, {}, index, values);
        EXPECT_EQ(result.text, expected) << text << result.reason;
    }
    const TableInForce table(Table(records));
    const DataTextEditor editor(*table.Syntax("X"));
    EXPECT_EQ(editor.InsertRecord("A /\n/", {}, 2, {Value::Text("B")}).reason,
              "There is no element 2 in X, which has 1.");
    EXPECT_EQ(editor.InsertRecord("A /\n/", {}, 0, {Value::Default(), Value::Text("B")}).reason,
              "The value \"B\" is not valid. Must be a whole number.");
    EXPECT_EQ(editor.InsertRecord("A /\n/", {0}, 0, {}).reason, "X[0] is no list of records.");
}

TEST(DataTextEditor, RowsOfTablesComeAndGo)
{
    const TestSupport::CleanEnvironment clean;
    const auto* const syntax = DeckManager::Environment::Instance().GetSyntaxTable()->FindSyntax("PVTO", true);
    ASSERT_NE(syntax, nullptr);
    const DataTextEditor editor(*syntax);
    const std::string text = "  20  40 1.1  1.6 / a\n  60 120 1.2  1.1 -- b\n     200 1.18 1.2 / c\n/\n";
    const auto insert = [&](int index) {
        return editor.InsertRecord(text, {0, 1, "ROWS"}, index, {Value::Integer(150), Value::Real(1.19)}).text;
    };
    EXPECT_EQ(insert(-1),
              "  20  40 1.1  1.6 / a\n  60 120 1.2  1.1 -- b\n     200 1.18 1.2\n     150 1.19 1* / c\n/\n");
    EXPECT_EQ(insert(1), "  20  40 1.1  1.6 / a\n  60 120 1.2  1.1 -- b\n 150 1.19 1*\n     200 1.18 1.2 / c\n/\n");
    EXPECT_EQ(insert(0), "  20  40 1.1  1.6 / a\n  60 150 1.19 1*\n 120 1.2  1.1 -- b\n     200 1.18 1.2 / c\n/\n");
    EXPECT_EQ(editor.Remove(text, {0, 1, 1, 1}).text, "  20  40 1.1  1.6 / a\n  60 120 1.2  1.1 -- b\n     / c\n/\n");
    EXPECT_EQ(editor.Remove(text, {0, 1, 1, 0}).text, "  20  40 1.1  1.6 / a\n  60 -- b\n     200 1.18 1.2 / c\n/\n");
    EXPECT_EQ(editor.Remove(text, {0, 0}).text, "  60 120 1.2  1.1 -- b\n     200 1.18 1.2 / c\n/\n");
    EXPECT_EQ(editor.InsertElement(text, {0}, 0, Value::Integer(1)).reason, "PVTO[0] is no list of single values.");
}

TEST(DataTextEditor, ALineThatWouldPassColumn132IsBrokenAheadOfIt)
{
    const std::string row = fmt::format("  {:9>126}", ""); // ends at column 128
    const std::string remark = row.substr(8);
    const struct
    {
        std::string text;
        int item;
        std::string value;
        std::string result;
    } cases[] = {
        {row + " B\n/\n", 1, "BCD", row + " BCD\n/\n"}, // to column 132
        {row + " B\n/\n", 1, "BCDE", row + "\n  BCDE\n/\n"},
        {row + " B /\r\n/\r\n", 1, "BCDE", row + "\r\n  BCDE /\r\n/\r\n"},
        {row + " /\n", 1, "BCDE", row + "\n  BCDE /\n"},
        {row + " B\n C /", 2, "D", row + " B\n D /"},
        {" A B / x " + remark, 1, "BCDEFG", " A BCDEFG\n / x " + remark},
        {" A B -- " + remark, 1, "BCDEFGHI", " A BCDEFGHI\n -- " + remark},
        {" A B -- " + row, 1, "BC", " A BC -- " + row}, // it was too long before
        {fmt::format("{:A>120} /", ""), 0, fmt::format("{:B>140}", ""), ""},
    };
    const TableInForce table(Table(R"({"type": "record", "items": [
        {"name": "A", "type": "string"}, {"name": "B", "type": "string"}, {"name": "C", "type": "string"}]})"));
    const DataTextEditor editor(*table.Syntax("X"));
    for (const auto& c : cases)
        EXPECT_EQ(editor.Set(c.text, {c.item}, Value::String(c.value)).text, c.result);
}

TEST(DataTextEditor, SuppressedLines)
{
    const TestSupport::CleanEnvironment clean;
    const TableInForce table(Table(records));
    DeckManager::Environment::Instance().EnableKeywordSuppression(true);
    const DataTextEditor editor(*table.Syntax("X"));
    const std::string text = " A 1 /\n--@@@ B 2 /\n C 3 /\n/\n";
    EXPECT_EQ(editor.Set(text, {1, 1}, Value::Integer(5)).text, " A 1 /\n--@@@ B 5 /\n C 3 /\n/\n");
    EXPECT_EQ(editor.Set(text, {1, 2}, Value::Integer(5)).text, " A 1 /\n--@@@ B 2 5 /\n C 3 /\n/\n");
    EXPECT_EQ(editor.InsertRecord(text, {}, 2, {Value::Text("D")}).text, " A 1 /\n--@@@ B 2 /\n D   /\n C 3 /\n/\n");
    EXPECT_EQ(editor.Remove(text, {1}).text, " A 1 /\n C 3 /\n/\n");
    DeckManager::Environment::Instance().EnableKeywordSuppression(false);
    EXPECT_EQ(editor.Set(text, {1, 1}, Value::Integer(5)).text, " A 1 /\n--@@@ B 2 /\n C 5 /\n/\n");
}

TEST(DataTextEditor, KeywordsWithReadersOfTheirOwn)
{
    const TestSupport::CleanEnvironment clean;
    const std::string udq = " DEFINE WU1 WOPR * 2 / twice\n ASSIGN WU2 5 /\n/\n";
    const std::string udt = "T 1 /\nLC 1 2*3 /\n10 20 30 /\n/\n/\n";
    const std::string viscosity = "ASTM FORMULA 2*1 3 -- a\n 3*4 /\n/\n";
    const struct
    {
        const char* keyword;
        std::string text;
        Path path;
        const char* value;
        std::string old, now; ///< what of the text has changed
    } cases[] = {
        {"UDQ", udq, {0, 2, 2}, "3", "* 2", "* 3"},
        {"UDQ", udq, {0, 2, 1}, "-", "* 2", "- 2"},
        {"UDQ", udq, {0, 1}, "WU3", "WU1", "WU3"},
        {"UDQ", udq, {1, 2, 0}, "6", "WU2 5", "WU2 6"},
        {"UDT", udt, {1, 0, 1, 1}, "2.5", "1 2*3", "1 2.5 3"},
        {"UDT", udt, {2, 0, 0, 2}, "31", "20 30", "20 31"},
        {"UDT", udt, {0, 0}, "U", "T 1", "U 1"},
        {"OILVISCC", viscosity, {0, 0, 2, 0, 1}, "7", "2*1 3", "1 7 3"},
        {"OILVISCC", viscosity, {0, 0, 2, 2, 0}, "7", "3*4", "4 7 4"},
        {"OILVISCC", viscosity, {0, 0, 0}, "VOGEL", "ASTM", "VOGEL"},
        {"TITLE", "An old title\n", {0}, "A new title", "An old", "A new"},
        {"WELSPECS", "-- wells\n 'P1' G1 5 6 1* OIL /\n/\n", {0, 4}, "2000", "1*", "2000"},
    };
    for (const auto& c : cases) {
        const auto* const syntax = DeckManager::Environment::Instance().GetSyntaxTable()->FindSyntax(c.keyword, true);
        ASSERT_NE(syntax, nullptr);
        const auto result = DataTextEditor(*syntax).Set(c.text, c.path, Value::Text(c.value));
        std::string expected = c.text;
        expected.replace(expected.find(c.old), c.old.size(), c.now);
        EXPECT_EQ(result.text, expected) << c.keyword << " " << result.reason;
    }
}

TEST(DataTextEditor, TenMillionValuesKeepNoPlaceForEach)
{
    const TableInForce table(Table(reals));
    std::string text;
    for (int row = 0; row < 1000000; ++row)
        text += " 1 2 3 4 5 6 7 8 9 10\n";
    text += "/\n";
    const DataTextEditor editor(*table.Syntax("X"));
    const std::size_t at = 777777 * std::size_t(22) + 7;
    const auto result = editor.Set(text, {7777773}, Value::Integer(44));
    ASSERT_TRUE(result.IsDone()) << result.reason;
    std::string expected = text;
    expected.replace(at, 1, "44");
    EXPECT_TRUE(result.text == expected);
}

TEST(DataTextEditor, TextsOfADeck)
{
    const TestSupport::CleanEnvironment clean;
    const TestSupport::TestDeck deck(TestSupport::TestDeck::Texts{
        {"A.DATA", "RUNSPEC\nTABDIMS\n 1 2 -- two\n/\nPROPS\nPVTW\n 1 2 3 4 5 /\n  6 7 8 9 / b\n-- above\n"
                   "ROCK\n 1 $C /\nROCKTAB\n 1 1 1\n 2 1 1 /\n 3 1 1 /\n"}});
    const auto set = [&](const char* name, Path path, Value value) {
        const auto& keyword = **deck.At(name);
        return DataTextEditor::ForKeyword(deck.Keywords(), keyword)
            .Set(*deck.Keywords().GetDataText(&keyword), path, value);
    };
    EXPECT_EQ(set("TABDIMS", {1}, Value::Integer(3)).text, " 1 3 -- two\n/");
    EXPECT_EQ(set("PVTW", {1, 4}, Value::Real(5)).text, " 1 2 3 4 5 /\n  6 7 8 9 5 / b\n-- above");
    EXPECT_EQ(set("PVTW", {2, 4}, Value::Real(5)).reason, "There is no element 2 in PVTW, which has 2.");
    EXPECT_EQ(set("ROCK", {0, 1}, Value::Text("$D")).text, " 1 $D /");
    EXPECT_EQ(set("ROCK", {0, 1}, Value::Real(0.5)).text, " 1 0.5 /");

    // How many numbers a row has, other keywords of the deck say.
    EXPECT_EQ(set("ROCKTAB", {0, 1, "TRAN_MULTIPLIER"}, Value::Real(0.8)).text, " 1 1 1\n 2 1 0.8 /\n 3 1 1 /");
    const auto* const syntax = DeckManager::Environment::Instance().GetSyntaxTable()->FindSyntax("ROCKTAB", true);
    const auto loose = DataTextEditor(*syntax).Set(" 1 1 1\n 2 1 1 /\n", {0, 1, 2}, Value::Real(0.8));
    EXPECT_EQ(loose.outcome, Outcome_::NotInText);
    EXPECT_TRUE(loose.reason.starts_with("The data of ROCKTAB can not be read: ")) << loose.reason;
}

TEST(DataTextEditor, RecordsThatRepeatTheOneBefore)
{
    Check({
        {filled, "1 2 /\n/\n3 /\n", {2, 1}, "4", "1 2 /\n/\n3 4 /\n"},
        {filled, "1 2 /\n/\n3 /\n", {0, 1}, "4", nullptr, elsewhere}, // the second would change too
        {filled, "1 /\n/\n3 /\n", {1, 0}, "4", "1 /\n4 /\n3 /\n"},
        {filled, "1 2 /\n/\n3 /\n", {1, 0}, "4", nullptr, elsewhere}, // what the second repeats would go
    });
}
