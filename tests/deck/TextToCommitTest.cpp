#include <cstdlib>

#include "tests/support/DeckTest.h"
#include <deckmanager/SetCommentAbove.h>
#include <deckmanager/TextToCommit.h>

// The text that a commit would write, against the one that it writes.

namespace {

using namespace DeckTests;

class TextToCommitTest : public testing::Test
{
protected:
    TextToCommitTest() { LineEnds::SetPolicy(LineEnds::Policy::Keep); }
    IDeckKeywordsEditor& Editor() { return *m_deck.Manager().GetEditor(&m_deck.Deck()); }

    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
    TestDeck m_deck{TestDeck::Texts{
        {"TOP.DATA",
         "-- head\r\nRUNSPEC\r\n-- size\r\nDIMENS\r\n1 2 3 /\r\n\r\n-- phases\r\nOIL\r\nWATER\r\nINCLUDE\r\n"
         "'A.INC' /\r\nPROPS\r\nDENSITY\r\n1 2 3 /\r\nEND"},
        {"A.INC", "GAS\n-- tables\nTABDIMS\n1 2 /\nEQLDIMS\n3 /\n-- end\n"}}};
};

TEST_F(TextToCommitTest, IsWhatACommitWrites)
{
    m_deck.Walk(true);
    IDeckKeywordsEditor& editor = Editor();
    EXPECT_TRUE(editor.MoveKeyword(m_deck.At("WATER"), m_deck.At("DIMENS")));
    EXPECT_TRUE(editor.MoveKeyword(m_deck.At("DIMENS"), m_deck.At("TABDIMS")));
    EXPECT_TRUE(editor.RemoveKeyword(m_deck.At("OIL")));
    EXPECT_TRUE(editor.SetDataText(m_deck.At("DENSITY"), "4 5 6 /\n"));
    EXPECT_TRUE(SetCommentAbove(editor, m_deck.At("PROPS"), "-- two\n-- lines\n"));
    EXPECT_TRUE(editor.SetComment(m_deck.At("EQLDIMS"), "below"));
    EXPECT_TRUE(editor.CommentOut(m_deck.At("GAS")));
    EXPECT_TRUE(editor.Suppress(m_deck.At("TABDIMS")));
    EXPECT_TRUE(editor.SetHeaderComment(&m_deck.TopFile(), "made by hand"));
    const Keywords::IKeywordSyntax& rock = *Environment::Instance().GetSyntaxTable()->FindSyntax("ROCK", true);
    ASSERT_NE(editor.InsertKeywordText(rock, m_deck.At("END"), "1 2 /\n"), nullptr);

    const std::string top = m_deck.Dir().Read("TOP.DATA");
    const TextToCommit ofTop = TextToCommit::Of(m_deck.TopFile());
    const TextToCommit ofIncluded = TextToCommit::Of(m_deck.File("A.INC"));
    EXPECT_EQ(m_deck.Dir().Read("TOP.DATA"), top);
    EXPECT_TRUE(m_deck.TopFile().IsModified());

    editor.Commit();
    EXPECT_NE(m_deck.Dir().Read("TOP.DATA"), top);
    EXPECT_EQ(ofTop.text, m_deck.Dir().Read("TOP.DATA"));
    EXPECT_EQ(ofIncluded.text, m_deck.Dir().Read("A.INC"));
    const auto linesOf = [](const KeywordFile& file) {
        std::vector<int> lines;
        for (KeywordFileIterator place = file.Begin(); place != file.End(); ++place)
            lines.push_back(place->GetLine());
        return lines;
    };
    EXPECT_EQ(ofTop.lines, linesOf(m_deck.TopFile()));
    // The keyword that was commented out stood in the list, and does so no more.
    std::vector<int> included = ofIncluded.lines;
    EXPECT_EQ(std::erase(included, -1), 1U);
    EXPECT_EQ(included, linesOf(m_deck.File("A.INC")));
    EXPECT_TRUE(m_log.Empty());
}

TEST_F(TextToCommitTest, LeavesNoFileAndTellsWhenItCannotBeMade)
{
    m_deck.Walk(true);
    const std::string folder = m_deck.Dir().Path("scratch");
    std::filesystem::create_directory(folder);
    const char* const former = std::getenv("TMPDIR");
    const std::string formerFolder = former != nullptr ? former : "";
    ::setenv("TMPDIR", folder.c_str(), 1);
    EXPECT_EQ(TextToCommit::Of(m_deck.TopFile()).text, m_deck.Dir().Read("TOP.DATA"));
    EXPECT_TRUE(std::filesystem::is_empty(folder));
    std::filesystem::remove(folder);
    EXPECT_THROW(TextToCommit::Of(m_deck.TopFile()), DeckManagerException);
    former != nullptr ? ::setenv("TMPDIR", formerFolder.c_str(), 1) : ::unsetenv("TMPDIR");
    std::filesystem::remove(m_deck.Dir().Path("TOP.DATA"));
    EXPECT_THROW(TextToCommit::Of(m_deck.TopFile()), DeckManagerException);
}

} // namespace
