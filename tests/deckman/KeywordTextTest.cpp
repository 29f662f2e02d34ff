#include <deckmanager/Environment.h>
#include <deckmanager/KeywordText.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>
#include <tarn/keywords/KeywordSyntaxTable.h>

#include <gtest/gtest.h>

using namespace Tarn::Fjel::Core::DeckManager;

namespace {

struct Case
{
    const char* what;
    const char* keyword;
    const char* own;   // from the keyword line on
    const char* block; // behind it
};

// OIL has no data, PORO has some; TITLE is text in one line.
const Case cases[] = {
    {"the comment above the next keyword", "PORO", "PORO\n 6*0.2 /\n", "\n-- above\n"},
    {"comments among the data are data", "PORO", "PORO\n-- a\n\n 3*0.2\n-- b\n 3*0.3 /\n", "-- c\n"},
    {"no block", "PORO", "PORO\n 6*0.2 /", ""},
    {"an indented comment in the block", "PORO", "PORO\n 6*0.2 /\n", "   -- above\n\n"},
    {"suppressed rows are live", "PORO", "--@@@PORO\n--@@@ 6*0.2 /\n", "--@@@\n--@@@-- a comment\n"},
    {"what nobody reads stays", "PORO", "PORO\n 6*0.2 /\n\nUNKNOWN\n 1 2 3\n", "\n-- above\n"},
    {"cut off behind its line", "PORO", "PORO\n", "\n-- above\n"},
    {"keyword comment of a keyword without data", "OIL", "OIL\n-- own\n   -- own too\n", "\n-- above\n"},
    {"a comment behind a blank line is the next one's", "OIL", "OIL\n", "\n-- above\n"},
    {"an indented comment is no keyword comment", "OIL", "OIL\n", "  -- above\n"},
    {"tag lines belong to the keyword", "OIL", "OIL\n--!!! Program generated\n", "\n-- above\n"},
    {"tag lines and a comment", "OIL", "OIL\n-- Generated\n-- own\n", "\n"},
    {"the line and nothing else", "OIL", "OIL", ""},
    {"nothing at all", "OIL", "", ""},
    {"a title", "TITLE", "TITLE\nA title\n", "\n-- above\n"},
    {"a title that looks like a comment", "TITLE", "TITLE\n-- A title\n", "-- above\n"},
    {"an empty title", "TITLE", "TITLE\n\n", "\n-- above\n"},
    {"text behind a title", "TITLE", "TITLE\nA title\nmore\n", "\n"},
};

} // namespace

TEST(KeywordText, DividesAnExtentBehindWhatIsTheKeywordsOwn)
{
    const auto* table = Environment::Instance().GetSyntaxTable();
    for (const Case& c : cases) {
        const auto* syntax = table->FindSyntax(c.keyword, true);
        ASSERT_NE(syntax, nullptr) << c.keyword;
        const KeywordText text(*syntax, c.keyword, std::string(c.own) + c.block);
        EXPECT_EQ(text.Own(), c.own) << c.what;
        EXPECT_EQ(text.TrailingBlock(), c.block) << c.what;
        EXPECT_TRUE(text.Own().ends_with(text.Data())) << c.what;
    }
}

TEST(KeywordText, DataBeginBehindKeywordLineAndTagLines)
{
    const auto* syntax = Environment::Instance().GetSyntaxTable()->FindSyntax("PORO", true);
    const auto dataOf = [syntax](const char* text) { return std::string(KeywordText(*syntax, "PORO", text).Data()); };
    EXPECT_EQ(dataOf("PORO   -- Generated\n-- a\n 6*0.2 /\n\n"), "-- a\n 6*0.2 /\n");
    EXPECT_EQ(dataOf("PORO\n\n--!!! Program generated\n 6*0.2 /\n"), " 6*0.2 /\n");
    EXPECT_EQ(dataOf("PORO"), "");
}

TEST(KeywordText, RawTextGoesThroughTheLineOfItsTerminator)
{
    const auto table = Tarn::Fjel::Core::Keywords::KeywordSyntaxTable::FromText(R"({"keywords": [
        {"name": "SCRIPT", "sections": "all", "data": {"type": "rawText", "terminator": "ENDSCR"}},
        {"name": "LETTER", "sections": "all", "data": {"type": "rawText"}}]})");
    const auto blockOf = [&table](const char* name, const std::string& text) {
        return std::string(KeywordText(*table->FindSyntax(name, true), name, text).TrailingBlock());
    };
    EXPECT_EQ(blockOf("SCRIPT", "SCRIPT\n-- a\n\n ENDSCR\nENDSCR -- b\n\n-- above\n"), "\n-- above\n");
    EXPECT_EQ(blockOf("SCRIPT", "--@@@SCRIPT\n--@@@x\n--@@@ENDSCR\n-- above\n"), "-- above\n");
    EXPECT_EQ(blockOf("SCRIPT", "SCRIPT\n-- a\n\n-- above\n"), "") << "without its terminator there is no block";
    EXPECT_EQ(blockOf("LETTER", "LETTER\nx\n\n-- above\n"), "");
}

TEST(KeywordText, SuppressedRowsAreCommentsWhereSuppressionIsOff)
{
    auto& environment = Environment::Instance();
    const auto* syntax = environment.GetSyntaxTable()->FindSyntax("PORO", true);
    environment.EnableKeywordSuppression(false);
    EXPECT_EQ(KeywordText(*syntax, "PORO", "PORO\n 6*0.2 /\n--@@@ 1 /\n").TrailingBlock(), "--@@@ 1 /\n");
    environment.EnableKeywordSuppression(true);
    EXPECT_EQ(KeywordText(*syntax, "PORO", "PORO\n 6*0.2 /\n--@@@ 1 /\n").TrailingBlock(), "");
}
