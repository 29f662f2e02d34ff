#include "keywords/KeywordDataStore.h"
#include "keywords/KeywordDataDeserializer.h"
#include "tests/keywords/DataReading.h"

using namespace DataReading;

namespace {

constexpr const char* names =
    R"([{"name": "BRINE", "sections": "all", "data": {"type": "list", "element": {"type": "string"}}},
    {"name": "OTHER", "sections": "all", "data": {"type": "list", "element": {"type": "string"}}},
    {"name": "ARRAY", "sections": "all", "data": {"type": "list", "element": {"type": "integer"}}},
    {"name": "MARKS", "sections": "all", "data": {"type": "map", "entries": ["A", "B"]}},
    {"name": "TITLE", "sections": "all", "data":
        {"type": "record", "termination": "eol", "items": [{"name": "T", "type": "restOfLine"}]}}])";

constexpr const char* unbalanced = "3 Unbalanced quote while reading keyword data: '";

std::string Failed(const std::string& rest)
{
    return "3 Failed to read data of keyword " + rest;
}

} // namespace

TEST(KeywordDataStore, ReadsNoFurtherThanTheExtent)
{
    const TableInForce table(names);
    const struct
    {
        const char* keyword;
        std::string file;
        const char* tree;
        std::vector<std::string> messages;
    } cases[] = {
        {"OTHER", "OTHER\n A B /\n~", "[A B]", {}},
        {"OTHER", "OTHER\n A B\n~ARRAY\n 1 /\n", "[A B]", {"2 List in keyword OTHER is not properly terminated"}},
        {"OTHER", "OTHER\n-- none\n~ARRAY  \n 1 /\n", "[]", {Failed("OTHER: keyword is not properly terminated.")}},
        {"OTHER", "OTHER\n~array\n 1 /\n", "[]", {Failed("OTHER: attempting to read beyond keyword boundary.")}},
        {"OTHER", "OTHER\n~", "[]", {Failed("OTHER: keyword has no valid data line.")}},
        {"OTHER", "~", "[]", {Failed("OTHER: can not read keyword name.")}},
        // A few keywords may do without data.
        {"BRINE", "BRINE\n~ARRAY\n 1 /\n", "[]", {}},
        {"BRINE", "BRINE\n~\n  ARRAY\n", "[]", {Failed("BRINE: attempting to read beyond keyword boundary.")}},
        {"BRINE", "BRINE\n NACL /\n~ARRAY\n", "[NACL]", {}},
        // Starting on the line again begins with a line of the keyword's own, or with none.
        {"MARKS", "MARKS\n'\n~B=1 /\n", "{}", {unbalanced, unbalanced}},
    };
    for (const auto& c : cases) {
        std::string file = c.file;
        const std::size_t end = file.find('~');
        file.erase(end, 1);
        const Outcome outcome = ReadExtent(LooseKeyword(table.Syntax(c.keyword)), file, 0, static_cast<long long>(end));
        EXPECT_EQ(outcome.tree, c.tree) << c.file;
        EXPECT_EQ(outcome.messages, c.messages) << c.file;
    }
    const LooseKeyword other(table.Syntax("OTHER"));
    EXPECT_EQ(ReadExtent(other, "OTHER\n A /\n", -1, 5).messages,
              std::vector<std::string>{Failed("OTHER: data store has not been properly initialized.")});
    const TestSupport::LogRecorder log;
    DeckManager::KeywordDataStore store(nullptr);
    EXPECT_FALSE(store.Open(other, 0, 5, false));
    EXPECT_EQ(log.Count(3), 1);
    EXPECT_TRUE(store.IsAtEnd());
}

TEST(KeywordDataStore, TellsWhereTheTextThatWasTakenEnds)
{
    const TableInForce table(names);
    // The place is marked in the text.
    const struct
    {
        const char* keyword;
        std::string file;
    } cases[] = {
        {"OTHER", "OTHER\n A B /\n~\n-- above the next\n"},
        {"OTHER", "OTHER\r\n A\r\n-- inside\r\n/ more\r\n~ B\r\n"},
        {"OTHER", "OTHER\n A B\n~-- above the next\n"},
        {"OTHER", "OTHER\n A B /~"},
        {"ARRAY", "ARRAY\n 1 2\n 3\n~-- above\n"},
        {"ARRAY", "ARRAY\n 1 2 x /\n~9\n"},
        {"ARRAY", "ARRAY\n 1 2\n/\n~-- above\n"},
        {"TITLE", "TITLE\nA title\n~-- above\nmore\n"},
        {"MARKS", "MARKS\nA B\n/\n~A\n"},
    };
    for (const auto& c : cases) {
        std::string file = c.file;
        const std::size_t end = file.find('~');
        file.erase(end, 1);
        const Outcome outcome =
            ReadExtent(LooseKeyword(table.Syntax(c.keyword)), file, 0, static_cast<long long>(file.size()));
        EXPECT_EQ(outcome.takenEnd, static_cast<long long>(end)) << c.file;
    }
    EXPECT_EQ(ReadExtent(LooseKeyword(table.Syntax("BRINE")), "BRINE\nNEXT\n", 0, 6).takenEnd, -1);
}

TEST(KeywordDataStore, NoFaultOfADeckThatEndsInAKeywordWithoutData)
{
    const TableInForce table(names);
    for (const char* name : {"BRINE", "OTHER"}) {
        const std::string text = std::string(name) + "\n-- the end\n";
        const LooseKeyword keyword(table.Syntax(name));
        DeckManager::LineStringReader reader(text);
        DeckManager::KeywordDataStore store(&reader);
        const TestSupport::LogRecorder log;
        store.Open(keyword, 0, static_cast<long long>(text.size()), true);
        ASSERT_EQ(log.Count(), 1) << name;
        EXPECT_EQ(log.Messages()[0].text,
                  "Failed to read data of keyword " + std::string(name) + ": keyword has no valid data line.");
        EXPECT_EQ(log.Messages()[0].probe, std::string(name) == "BRINE");
    }
}

TEST(KeywordDataStore, PutsTheReaderBackAndPlacesMessages)
{
    const TableInForce table(names);
    const LooseKeyword keyword(table.Syntax("ARRAY"), {}, 10);
    DeckManager::LineStringReader reader("-- head\nARRAY\n-- comment\n\n 1 x\n 2 y /\n");
    const auto data = Core::Keywords::KeywordDataFactory::Instance().ConstructSafely(keyword.GetSyntax());
    reader.Seek(3, 0);
    const TestSupport::LogRecorder log;
    DeckManager::KeywordDataDeserializer::Deserialize(keyword, *data, reader, 8, 32, DeckManager::Context(), true,
                                                      nullptr);
    EXPECT_EQ(reader.Tell(), 3);
    ASSERT_EQ(log.Count(), 2);
    EXPECT_EQ(log.Messages()[0].line, 13);
    EXPECT_EQ(log.Messages()[1].line, 14);
    EXPECT_EQ(Describe(*data), "[1 2]");
}

TEST(KeywordDataStore, TokensAndCounts)
{
    const TableInForce table(names);
    const LooseKeyword keyword(table.Syntax("OTHER"));
    DeckManager::LineStringReader reader("A 2*B\n'\n  C / D\n5*E 'F'\n");
    DeckManager::KeywordDataStore store(&reader);
    const TestSupport::LogRecorder log;
    ASSERT_TRUE(store.Open(keyword, 0, 100, false));
    std::string token;
    bool quoted = true;
    EXPECT_TRUE(store.PeekToken(token, false, &quoted));
    EXPECT_FALSE(quoted);
    EXPECT_FALSE(store.ExpectToken("B", true, true));
    EXPECT_TRUE(store.ExpectToken("A", true, true));
    EXPECT_EQ(store.CountTokensToTerminator(), -2);
    EXPECT_EQ(store.CountTokensToTerminator(), 0);
    EXPECT_FALSE(store.PeekToken(token, true, nullptr));
    EXPECT_TRUE(store.ExpectToken("C", false, false)); // passes the line without a token
    EXPECT_EQ(store.CurrentLine(), "  C / D");
    EXPECT_EQ(store.CountTokensToTerminator(), 2);
    EXPECT_TRUE(store.NextToken(token, true, false, nullptr));
    EXPECT_EQ(token, "D");
    store.ResetLine();
    EXPECT_TRUE(store.ExpectToken("C", true, true));
    EXPECT_TRUE(store.AdvanceLine());
    EXPECT_EQ(store.CountTokensToTerminator(), -6);
    EXPECT_FALSE(store.NextToken(token, false, false, nullptr));
    EXPECT_TRUE(store.IsAtEnd());
}
