#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>

#include <rapidcheck/gtest.h>

#include "keywords/ISerializer.h"
#include "keywords/KeywordDataSerializer.h"
#include "tests/keywords/DataReading.h"
#include "tests/support/DeckTest.h"
#include "text/LineStringWriter.h"

namespace {

using namespace DeckTests;
using DeckManager::KeywordDataSerializer;
using DeckManager::LineStringWriter;

std::string WriteTree(const Keywords::IKeywordData& data,
                      Keywords::SimulatorType simulator = Keywords::SimulatorType::Any, bool useVariables = false)
{
    LineStringWriter writer;
    KeywordDataSerializer::Serialize(data, writer, useVariables, simulator);
    return writer.GetText();
}

/// Reads a text by a shape, and writes what was read.
std::string Rewritten(std::string_view shape, const std::string& text)
{
    const DataReading::TableInForce table(DataReading::TableOf(shape));
    const DataReading::LooseKeyword keyword(table.Syntax("X"));
    return WriteTree(*DataReading::ReadText(keyword, text).data);
}

/// Fills a fresh tree of a keyword of the built-in catalogue and writes it.
std::string Filled(std::string_view name, const std::function<void(Keywords::IKeywordData&)>& fill,
                   Keywords::SimulatorType simulator = Keywords::SimulatorType::Any, bool useVariables = false)
{
    const auto* const syntax = DeckManager::Environment::Instance().GetSyntaxTable()->FindSyntax(name, true);
    const auto data = Keywords::KeywordDataFactory::Instance().ConstructSafely(*syntax);
    fill(*data);
    return WriteTree(*data, simulator, useVariables);
}

Keywords::IKeywordListData& List(Keywords::IKeywordData& data)
{
    return static_cast<Keywords::IKeywordListData&>(data);
}

Keywords::IKeywordRecordData& Record(Keywords::IKeywordData& data)
{
    return static_cast<Keywords::IKeywordRecordData&>(data);
}

Keywords::IKeywordRecordData& Add(Keywords::IKeywordListData& list)
{
    list.AddElement();
    return Record(list.GetContainer(list.GetElementCount() - 1));
}

std::string Real(double value, const char* format = nullptr)
{
    KeywordDataSerializer::NumberBuffer buffer;
    return std::string(KeywordDataSerializer::FormatReal(value, format, buffer));
}

/// The same by the C library's formatting, step by step.
std::string LiteralReal(double value)
{
    char text[400];
    std::snprintf(text, sizeof text, "%.15G", value);
    std::string result = text;
    const std::size_t mark = result.find('E');
    if (mark != std::string::npos) {
        std::string mantissa = result.substr(0, mark);
        if (mantissa.find('.') == std::string::npos) mantissa += ".0";
        std::string digits = result.substr(mark + 2);
        while (digits.size() > 1 && digits[0] == '0')
            digits.erase(0, 1);
        result = mantissa + "E" + result[mark + 1] + digits;
    }
    return result == "0" ? "0.0" : result;
}

TEST(DataWriting, RealsAreSpelt)
{
    const std::vector<std::pair<double, std::string>> cases = {
        {0.0, "0.0"},
        {-0.0, "-0"},
        {5, "5"},
        {-5, "-5"},
        {0.25, "0.25"},
        {1e20, "1.0E+20"},
        {1.5e-5, "1.5E-5"},
        {-2.5e-105, "-2.5E-105"},
        {1e-4, "0.0001"},
        {1234567.5, "1234567.5"},
        {1e15, "1.0E+15"},
        {1e14, "100000000000000"},
        {1.0 / 3, "0.333333333333333"},
        {0.1 + 0.2, "0.3"},
        {999999999.999999, "999999999.999999"},
        {999999999999999.4, "999999999999999"},
        {999999999999999.5, "1.0E+15"},
        {100000000000000.5, "100000000000000"},
        {100000000000001.5, "100000000000002"},
        {0.99999999999999989, "1"},
        {0.00099999999999999998, "0.001"},
        {0.000099999999999999991, "0.0001"},
        {9.9999e-5, "9.9999E-5"},
        {std::numeric_limits<double>::infinity(), "INF"},
        {-std::numeric_limits<double>::infinity(), "-INF"},
        {std::numeric_limits<double>::quiet_NaN(), "NAN"},
        {5e-324, "4.94065645841247E-324"},
    };
    for (const auto& [value, text] : cases) {
        EXPECT_EQ(Real(value), text);
        EXPECT_EQ(LiteralReal(value), text);
    }
    EXPECT_EQ(Real(2.5, "%10.3f"), "     2.500");
    EXPECT_EQ(Real(2.5, "%100.3f"), "2.5"); // too long
    EXPECT_EQ(Real(2.5, ""), "2.5");
    EXPECT_EQ(Real(2.5, "%"), "2.5");
    KeywordDataSerializer::NumberBuffer buffer;
    EXPECT_EQ(KeywordDataSerializer::FormatInteger(-2147483647, nullptr, buffer), "-2147483647");
    EXPECT_EQ(KeywordDataSerializer::FormatInteger(7, "%03d", buffer), "007");
    EXPECT_EQ(KeywordDataSerializer::FormatInteger(7, "", buffer), "7");
}

RC_GTEST_PROP(DataWritingProperty, RealsAreSpeltAsTheCLibraryDoes, ())
{
    const auto check = [](double value) { RC_ASSERT(Real(value) == LiteralReal(value)); };
    for (int i = 0; i < 500; ++i) {
        check(std::bit_cast<double>(*rc::gen::arbitrary<std::uint64_t>()));
        // What gets no exponent: any bits, and few of them, so that the sixteenth digit is a tie at times.
        const auto mantissa = *rc::gen::inRange<std::int64_t>(1, std::int64_t(1) << 53);
        const int unused = *rc::gen::inRange(0, 53);
        check(std::ldexp(static_cast<double>(mantissa >> unused << unused), *rc::gen::inRange(-70, 0)));
        check(static_cast<double>(mantissa % 1000000000000000) + 0.5);
        // Few digits, and what is one bit beside them.
        const double value = static_cast<double>(mantissa >> unused) / std::pow(10.0, *rc::gen::inRange(0, 19));
        check(-value);
        check(std::nextafter(value, 1e300));
    }
}

TEST(DataWriting, WordsAreQuotedWhereTheyMust)
{
    struct Case
    {
        std::string text, bare, withCommas;
    };
    const std::vector<Case> cases = {
        {"ABC", "ABC", "ABC"},
        {"", "''", "''"},
        {"12A", "'12A'", "'12A'"},
        {"A*", "'A*'", "'A*'"},
        {"A B", "'A B'", "'A B'"},
        {"A/B", "'A/B'", "'A/B'"},
        {"A\\B", "'A\\B'", "'A\\B'"},
        {"A,B", "'A,B'", "A,B"},
        {"A--B", "'A--B'", "'A--B'"},
        {"A-B", "A-B", "A-B"},
        {"'A B", "'A B'", "'A B'"},
        {"A B'", "'A B'", "'A B'"},
        {"'A B'", "'A B'", "'A B'"},
        {"O'NEIL", "O'NEIL", "O'NEIL"},
        {"A\tB", "'A\tB'", "'A\tB'"},
        {std::string(130, 'A'), "'" + std::string(130, 'A') + "'", "'" + std::string(130, 'A') + "'"},
    };
    std::string scratch;
    for (const Case& c : cases) {
        EXPECT_EQ(KeywordDataSerializer::QuoteIfNeeded(c.text, false, scratch), c.bare);
        EXPECT_EQ(KeywordDataSerializer::QuoteIfNeeded(c.text, true, scratch), c.withCommas);
    }
}

/// Shapes as catalogue JSON, made of their fields.
std::string ListShape(const std::string& fields)
{
    return R"({"type": "list", )" + fields + "}";
}

std::string ListOf(const std::string& element, const std::string& fields = {})
{
    return ListShape(fields + R"("element": )" + element);
}

std::string RecordOf(const std::string& items, const std::string& fields = {})
{
    return R"({"type": "record", )" + fields + R"("items": [)" + items + "]}";
}

/// An integer of each name of one letter.
std::string Integers(const std::string& names)
{
    std::string items;
    for (const char name : names)
        items += fmt::format(R"({}{{"name": "{}", "type": "integer"}})", items.empty() ? "" : ", ", name);
    return items;
}

TEST(DataWriting, LayoutOfContainers)
{
    const TestSupport::CleanEnvironment clean;
    const std::string open = R"("termination": "none", )";
    const std::string reals = R"("element": {"type": "real", "name": "R"})";
    const std::string row = RecordOf(R"({"name": "W", "type": "string"}, )"
                                     R"({"name": "N", "type": "integer", "defaultable": true}, )"
                                     R"({"name": "X", "type": "real", "defaultable": true}, )"
                                     R"({"name": "Y", "type": "yesNo", "defaultable": true})");
    const std::string openRow =
        RecordOf(R"({"name": "A", "type": "real"}, {"name": "B", "type": "real", "defaultable": true})", open);
    const std::string defaultable =
        R"({"name": "D", "type": "integer", "default": 1}, {"name": "E", "type": "integer", "default": 1})";
    const std::string head = RecordOf(defaultable, R"("name": "H", )");
    const std::string list = ListShape(R"("name": "L", )" + reals);
    const std::string onLine = ListShape(R"("name": "L", "startsOnNewLine": false, )" + reals);
    const std::string onLineToo = ListShape(R"("name": "M", "startsOnNewLine": false, )" + reals);
    const std::string openList = ListShape(R"("name": "F", )" + open + reals);
    const std::string openDefaults = ListShape(R"("name": "F", "elementsDefaultable": true, )" + open + reals);
    struct Case
    {
        std::string shape, in, out;
    };
    const std::vector<Case> cases = {
        // A record: "/" behind its last value, defaults at its end left out.
        {row, "W1 2 3.5 Y /", "  W1 2 3.5 YES /"},
        {row, "W1 2 /", "  W1 2 /"},
        {row, "W1 1* 2 /", "  W1 1* 2 /"},
        {row, "1* /", "  /"},
        {RecordOf(Integers("ABCDE")), "5*7 /", "  5*7 /"},
        // A record without termination writes them.
        {openRow, "1.5", "  1.5 1*"},
        // Records to a lone "/", which stands on a line of its own.
        {ListOf(row), "W1 2 /\nW2 3 /\n/", "  W1 2 /\n  W2 3 /\n  /"},
        {ListOf(row), "/", "  /"},
        // All unset, but a lone "/" would end the list.
        {ListOf(row), "W1 /\n1* /\nW2 /\n/", "  W1 /\n  1* /\n  W2 /\n  /"},
        {ListOf(RecordOf(Integers("A") + ", " + list)), "1*\n/\n/\n2\n1 /\n/\n/",
         "  1*\n  /\n  /\n  2\n  1 /\n  /\n  /"},
        {ListOf(RecordOf(defaultable)), "2 /\n/\n/\n/", "  2 /\n  /\n  /\n  /"},
        {ListOf(row, open), "W1 2 /\nW2 3 /", "  W1 2 /\n  W2 3 /"},
        // Lists of items: "/" behind the last value, or on a new line where the metadata say so of containers only.
        {ListShape(reals), "1 2 3 3 3 3 3 /", "  1 2 5*3 /"},
        {ListShape(reals), "3 3 3 3 /", "  3 3 3 3 /"},
        {ListShape(reals), "/", "  /"},
        {ListShape(R"("elementsDefaultable": true, )" + reals), "1 7* /", "  1 7* /"},
        {ListShape(R"("elementsDefaultable": true, )" + reals), "1 2* /", "  1 1* 1* /"},
        {ListOf(row, R"("terminatorOnNewLine": false, )"), "W1 /\n/", "  W1 / /"},
        {ListShape(R"("terminatorOnNewLine": true, )" + reals), "1 /", "  1 /"},
        // A table of open rows, and a list of such tables.
        {ListOf(ListOf(openRow), open), "1 2 3 4 /\n5 /", "  1 2\n  3 4\n  /\n  5 1*\n  /"},
        // A record with a record and lists in it.
        {RecordOf(head + ", " + list + ", " + Integers("N"), open), "2 /\n1 2 /\n5", "  2 /\n  1 2 /\n  5"},
        {RecordOf(head + ", " + list), "2 /\n1 2 /\n/", "  2 /\n  1 2 /\n  /"},
        {RecordOf(onLine + ", " + onLineToo), "1 /\n2 /\n/", "  1 / 2 /\n  /"},
        // What stands ahead of a list on its line isn't the last of the record.
        {RecordOf(defaultable + ", " + onLine), "3 1* /\n/", "  3 1* /\n  /"},
        // A list without termination of its own at the end of a record: its defaults count.
        {RecordOf(R"({"name": "W", "type": "string"}, )" + openDefaults), "W1 1 2* /", "  W1\n  1 1* 1* /"},
        // A row without values is no end of the rows.
        {ListOf(RecordOf(openDefaults)), "1 2 /\nx /\n3 /\n/", "  1 2 /\n  1* /\n  3 /\n  /"},
        {ListOf(RecordOf(openList)), "1 2 /\nx /\n3 /\n/", "  1 2 /\n  1* /\n  3 /\n  /"},
        // One line for a record that ends with its line, and a text for one that has nothing to show.
        {ListOf(RecordOf(defaultable, R"("termination": "eol", )"), open), "1 2\n1* 1*\n3", "  1 2\n  1*\n  3"},
        // What its metadata make optional isn't written while unset.
        {RecordOf(R"({"name": "A", "type": "integer", "optionalOnRead": true, "optionalOnWrite": true}, )"
                  R"({"name": "B", "type": "string"})"),
         "X /", "  X /"},
        {ListOf(R"({"name": "W", "type": "string"})"), "'A B' 5*'C D' E 12 /", "  'A B' 5*'C D' E '12' /"},
        {ListOf(R"({"name": "O", "type": "option", "options": ["YES", "2P"]})"), "yes 2P /", "  YES '2P' /"},
        {RecordOf(R"({"name": "T", "type": "restOfLine"})", open), "A title  of many  words",
         "A title  of many  words"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Rewritten(c.shape, c.in), c.out) << c.shape << "\n" << c.in;
}

TEST(DataWriting, UnsetElementsAreDefaults)
{
    const TestSupport::CleanEnvironment clean;
    const auto fill = [](Keywords::IKeywordData& data) {
        Keywords::IKeywordListData& list = List(data);
        list.AddElement();
        list.AppendRealRun(2.0, 1);
        list.AppendDefaults(1);
        list.AddElement();
    };
    EXPECT_EQ(Filled("PORO", fill), "  1* 2 1* 1* /");
    const auto unset = [](Keywords::IKeywordData& data) {
        for (int i = 0; i < 3; ++i)
            List(data).AddElement();
    };
    for (const char* type : {R"("string")", R"("integer")", R"("real")", R"("yesNo")", R"("option", "options": ["A"])"})
    {
        const DataReading::TableInForce table(
            DataReading::TableOf(fmt::format(R"({{"type": "list", "element": {{"name": "E", "type": {}}}}})", type)));
        EXPECT_EQ(Filled("X", unset), "  1* 1* 1* /") << type;
    }
}

/// A record that hasn't got as many items as its metadata tell.
class OddRecord : public Keywords::IKeywordRecordData
{
public:
    OddRecord(const Keywords::IKeywordMD& md, int count) : IKeywordRecordData(md), m_count(count) {}

    int GetItemCount() const noexcept override { return m_count; }
    Keywords::Slot GetItem(int index) override { return Keywords::Slot(*this, index); }
    Keywords::ConstSlot GetItem(int index) const override { return Keywords::ConstSlot(*this, index); }
    Keywords::IKeywordData& GetContainer(int) override { return *this; }
    const Keywords::IKeywordData& GetContainer(int) const override { return *this; }
    bool HasSameItems(const Keywords::IKeywordRecordData& other) const override { return &other == this; }
    std::unique_ptr<Keywords::IKeywordData> CloneSafely() const override { return nullptr; }

protected:
    const Keywords::IKeywordMD* MDAt(int) const override { return GetMetaData(); }
    const void* ValueAt(int, Keywords::MDType) const override { return nullptr; }
    void* MutableValueAt(int, Keywords::MDType, bool) override { return nullptr; }
    bool IsDefaultedAt(int) const override { return true; }
    const Keywords::IKeywordData* ContainerAt(int) const override { return nullptr; }
    Keywords::IKeywordData* MutableContainerAt(int) override { return nullptr; }
    void AssignContainerAt(int, const Keywords::IKeywordData&) override {}

private:
    int m_count;
};

TEST(DataWriting, WhatCannotBeWrittenIsThrown)
{
    const TestSupport::CleanEnvironment clean;
    const auto* const table = DeckManager::Environment::Instance().GetSyntaxTable();
    const auto& record =
        static_cast<const Keywords::IKeywordRecordMD&>(*table->FindSyntax("DIMENS", true)->GetMetaData());
    LineStringWriter writer;
    const auto write = [&](const Keywords::IKeywordData& data) {
        KeywordDataSerializer::Serialize(data, writer, false, Keywords::SimulatorType::Any);
    };
    for (const int count : {0, 2, 4}) {
        try {
            write(OddRecord(record, count));
            FAIL() << count;
        } catch (const char* text) {
            EXPECT_STREQ(text, "KeywordDataSerializer::Serialize: mismatch number of item records between data & "
                               "metadata");
        }
    }
    const auto said = [](const auto& action) {
        const std::string text = Thrown<DeckManager::DeckManagerException>(action);
        return text.substr(0, text.find('"') + 1);
    };
    const auto* const map = table->FindSyntax("RPTSCHED", true)->GetMetaData();
    EXPECT_EQ(said([&] { write(OddRecord(*record.GetItemMD(0), 0)); }),
              "DeckManager::KeywordDataSerializer::Serialize(IKeywordData &, ...): unhandled keyword data type \"");
    EXPECT_EQ(said([&] { KeywordDataSerializer::SerializeOptionalItem({}, map, writer, false, false); }),
              "DeckManager::KeywordDataSerializer::SerializeOptionalItem(): unhandled metadata type \"");
    EXPECT_EQ(said([&] { KeywordDataSerializer::IsDefaultItem({}, map); }),
              "DeckManager::KeywordDataSerializer::IsDefaultItem(): unhandled metadata type \"");
    EXPECT_FALSE(KeywordDataSerializer::IsDefaultItem({}, nullptr));
    KeywordDataSerializer::SerializeOptionalItem({}, nullptr, writer, true, false);
    EXPECT_EQ(writer.GetText(), "");
}

TEST(DataWriting, RepeatOptionsAreFour)
{
    const TestSupport::CleanEnvironment clean;
    const std::string list = ListOf(Integers("N"), R"("name": "L", "elementsDefaultable": true, )");
    const std::string shape = RecordOf(Integers("ABCDE") + ", " + list);
    const auto written = [&](DeckManager::KeywordItemRepeatOptions options) {
        const DataReading::TableInForce table(DataReading::TableOf(shape));
        DeckManager::Environment::Instance().SetKeywordItemRepeatOptions(options);
        return Filled("X", [](Keywords::IKeywordData& data) {
            for (int i = 0; i < 2; ++i)
                Record(data).GetItem(i).SetInteger(7);
            Record(data).GetItem(4).SetInteger(8);
            List(Record(data).GetContainer(5)).AppendIntegerRun(3, 2);
            List(Record(data).GetContainer(5)).AppendDefaults(2);
        });
    };
    EXPECT_EQ(written({1, 0, 0, 0}), "  7 7 1* 1* 8\n  2*3 1* 1* /\n  /");
    EXPECT_EQ(written({0, 1, 0, 0}), "  7 7 1* 1* 8\n  3 3 2* /\n  /");
    EXPECT_EQ(written({0, 0, 1, 0}), "  2*7 1* 1* 8\n  3 3 1* 1* /\n  /");
    EXPECT_EQ(written({0, 0, 0, 1}), "  7 7 2* 8\n  3 3 1* 1* /\n  /");
    EXPECT_EQ(written({2, 2, 2, 2}), "  7 7 1* 1* 8\n  3 3 1* 1* /\n  /");
}

TEST(DataWriting, Maps)
{
    const TestSupport::CleanEnvironment clean;
    const DataReading::TableInForce table(DataReading::TableOf(
        R"({"type": "map", "entries": ["PRES", {"name": "FIP*"}, {"name": "ONLY100", "simulators": ["S100"]}, "BIG", )"
        R"({"name": "VAL", "valueNames": {"2": ["TWO"]}}]})"));
    const auto fill = [](Keywords::IKeywordData& data) {
        auto& map = static_cast<Keywords::IKeywordMapData&>(data);
        map.SetEntry(0, 1);
        map.SetEntry(1, 3);
        map.SetEntry(2, -1);
        map.SetEntry(3, 0);
        map.SetEntry(4, 2);
    };
    EXPECT_EQ(Filled("X", fill), "  PRES FIP=3 ONLY100=-1 TWO=2 /");
    EXPECT_EQ(Filled("X", fill, Keywords::SimulatorType::S100), "  PRES FIP=3 ONLY100=-1 TWO=2 /");
    EXPECT_EQ(Filled("X", fill, Keywords::SimulatorType::S300), "  PRES FIP=3 TWO=2 /");
    EXPECT_EQ(Filled("X", [](Keywords::IKeywordData&) {}), "  /");
}

TEST(DataWriting, RawText)
{
    const TestSupport::CleanEnvironment clean;
    const auto text = [](const char* content) {
        return [content](Keywords::IKeywordData& data) {
            static_cast<Keywords::IKeywordRawTextData&>(data).SetText(content);
        };
    };
    EXPECT_EQ(Filled("PYINPUT", text("a = 1\n  b(a)\n")), "a = 1\r\n  b(a)\r\nPYEND");
    EXPECT_EQ(Filled("PYINPUT", text("a = 1")), "a = 1\nPYEND");
    EXPECT_EQ(Filled("PYINPUT", text("")), "PYEND");
}

TEST(DataWriting, ALongListFillsItsLines)
{
    const TestSupport::CleanEnvironment clean;
    std::string text;
    for (int i = 0; i < 30; ++i)
        text += std::to_string(1000 + i) + "\n";
    EXPECT_EQ(Rewritten(ListOf(Integers("N")), text + "/"),
              "  1000 1001 1002 1003 1004 1005 1006 1007 1008 1009 1010 1011 1012 1013\n"
              "  1014 1015 1016 1017 1018 1019 1020 1021 1022 1023 1024 1025 1026 1027\n"
              "  1028 1029 /");
}

TEST(CustomWriters, DefinitionsStandOnOneLine)
{
    const TestSupport::CleanEnvironment clean;
    const DataReading::LooseKeyword keyword(
        DeckManager::Environment::Instance().GetSyntaxTable()->FindSyntax("UDQ", true));
    const std::string text = "  DEFINE WUX ( WOPR * 2 ) / ( WWPR + 1.5 ) + 1234567 * 1234567 - 7654321 + 'A*B' /\n"
                             "  ASSIGN WUY 'W 1' 2.5 /\n"
                             "  /";
    const auto outcome = DataReading::ReadText(keyword, text);
    EXPECT_EQ(outcome.messages, std::vector<std::string>());
    EXPECT_EQ(WriteTree(*outcome.data),
              "  DEFINE WUX ( WOPR * 2 ) / ( WWPR + 1.5 ) + 1234567 * 1234567 - 7654321 + 'A*B' /\n"
              "  ASSIGN WUY\n  'W 1' '2.5' /\n"
              "  /");
    const auto expression = [](std::vector<std::string> tokens) {
        return [tokens](Keywords::IKeywordData& data) {
            Keywords::IKeywordRecordData& record = Add(List(data));
            record.GetItem(0).SetOption(
                static_cast<const Keywords::IKeywordOptionMD*>(record.GetRecordMD()->GetItemMD(0))
                    ->GetOptionIndex("DEFINE"));
            record.GetItem(1).SetString("WUX");
            for (const std::string& token : tokens)
                List(record.GetContainer(2)).AppendStringRun(token, 1);
        };
    };
    EXPECT_EQ(Filled("UDQ", expression({"(", "(", "(", "(", "(", "(", "A B", "/", "A/B", "A--B", "", "-", "*", ")"})),
              "  DEFINE WUX ( ( ( ( ( ( 'A B' / 'A/B' 'A--B' '' - * ) /\n  /");
    // 132 characters fit.
    const std::string ofSixty(60, 'A');
    EXPECT_NO_THROW(Filled("UDQ", expression({ofSixty, std::string(56, 'B')})));
    EXPECT_THROW(Filled("UDQ", expression({ofSixty, std::string(57, 'B')})), DeckManager::DeckManagerException);
}

TEST(CustomWriters, TablesOfUpToFourDimensions)
{
    const TestSupport::CleanEnvironment clean;
    const DataReading::LooseKeyword keyword(
        DeckManager::Environment::Instance().GetSyntaxTable()->FindSyntax("UDT", true));
    for (const std::string text : {
             "  TABLE 1 /\n  NV 1 2 3 /\n  5 5 5 /\n  /\n  /",
             "  TABLE 2 /\n  NV 1 2 3 /\n  LC 4 5 /\n  5 6 7 /\n  8 9 10 /\n  /\n  /",
             "  TABLE 3 /\n  NV 1 2 /\n  NV 1 2 /\n  NV 1 2 /\n  1 2 /\n  3 4 /\n  /\n  5 6 /\n  7 8 /\n  /\n  /\n  /",
         })
    {
        const auto outcome = DataReading::ReadText(keyword, text);
        EXPECT_EQ(outcome.messages, std::vector<std::string>()) << text;
        EXPECT_EQ(WriteTree(*outcome.data), text);
        EXPECT_EQ(DataReading::ReadText(keyword, WriteTree(*outcome.data)).tree, outcome.tree);
        // A row too many, and the form can't hold it: the generic writer takes over from the beginning.
        Add(List(Record(*outcome.data).GetContainer(2)));
        EXPECT_EQ(WriteTree(*outcome.data).substr(0, 11), "  TABLE " + text.substr(8, 1) + " /");
        EXPECT_EQ(WriteTree(*outcome.data).find("TABLE", 9), std::string::npos);
    }
}

TEST(CustomWriters, NamesOfIncludedFilesAreQuoted)
{
    const TestSupport::CleanEnvironment clean;
    const auto include = [](const char* name, bool useVariables = false) {
        return Filled(
            "INCLUDE", [name](Keywords::IKeywordData& data) { Record(data).GetItem(0).SetString(name); },
            Keywords::SimulatorType::Any, useVariables);
    };
    EXPECT_EQ(include("a/b.inc"), "'a/b.inc' /");
    EXPECT_EQ(include("ab.inc"), "'ab.inc' /");
    EXPECT_EQ(include("'ab.inc'"), "  'ab.inc' /");
    EXPECT_EQ(include("$DIR.inc", true), "  $DIR.inc /");
    EXPECT_EQ(include("$DIR.inc", false), "'$DIR.inc' /");
    EXPECT_EQ(Filled("INCLUDE", [](Keywords::IKeywordData&) {}), "  /");
}

TEST(CustomWriters, AnotherShapeIsRefused)
{
    const TestSupport::CleanEnvironment clean;
    const std::vector<std::pair<std::string, std::string>> cases = {
        {R"("INCLUDE", "data": {"type": "record", "items": [{"name": "N", "type": "integer"}]})",
         "DeckManager::CustomSerializerINCLUDERecord: unrecognized metadata"},
        {R"("INCLUDE", "data": {"type": "list", "element": {"type": "string"}})",
         "DeckManager::CustomSerializerINCLUDERecord: unrecognized metadata"},
        {R"("UDQ", "data": {"type": "list", "element": {"type": "string"}})",
         "DeckManager::CustomDeserializerUDQRecord: unrecognized metadata"},
        {R"("UDT", "data": {"type": "list", "element": {"type": "string"}})",
         "DeckManager::CustomDeserializerUDTRecord: syntax mismatch"},
    };
    for (const auto& [keyword, message] : cases) {
        const DataReading::TableInForce table(R"([{"sections": "all", "name": )" + keyword + "}]");
        EXPECT_EQ(Thrown<DeckManager::DeckManagerException>([] { DeckManager::CustomSerializers::InForce(); }),
                  message);
    }
}

} // namespace
