#include "tests/support/DeckTest.h"
#include <deckmanager/Exporter.h>

// What a deck's text is after edits of its list: comments stay with the keyword that they stand above, and where that
// goes away they stay where they are. What comes of inserts, removals and moves of keywords with data, in one file and
// between two, EditedListPropertyTest tells; here is what it doesn't try.

namespace {

using namespace DeckTests;

class EditedListTest : public testing::Test
{
protected:
    using Edit = std::function<bool(IDeckKeywordsEditor&, const TestDeck&)>;

    /// The text of the file after the edit, in a copy of the deck.
    static std::string Edited(const TestDeck::Texts& files, const Edit& edit, const std::string& name)
    {
        LineEnds::SetPolicy(LineEnds::Policy::Keep);
        const TestDeck deck(files);
        deck.Walk(true);
        IDeckKeywordsEditor& editor = *deck.Manager().GetEditor(&deck.Deck());
        EXPECT_TRUE(edit(editor, deck));
        const std::string directory = deck.Dir().Path("copy");
        EXPECT_TRUE(deck.Keywords().ExportToDirectory(directory, Keywords::SimulatorType::Any, false));
        return deck.Dir().Read("copy/" + name);
    }

    static IKeyword* Insert(IDeckKeywordsEditor& editor, const KeywordIterator& place, const std::string& text)
    {
        return editor.InsertKeywordText(SyntaxOf(text.substr(0, text.find('\n'))), place, text);
    }

    TestSupport::CleanEnvironment m_environment;
};

TEST_F(EditedListTest, CommentsStayWithTheKeywordBelow)
{
    const std::string text = "-- header\nRUNSPEC\n\n-- above O\nTABDIMS\n1 2 /\n\n-- above DIMENS\nDIMENS\n1 2 3 / "
                             "x\n-- above G\nEQLDIMS\n2 /\n-- end\n";
    struct Case
    {
        const char* what;
        Edit edit;
        const char* expected;
    };
    const std::vector<Case> cases = {
        {"inserted ahead of the comment",
         [](auto& editor, auto& deck) { return Insert(editor, deck.At("EQLDIMS"), "WATER\n") != nullptr; },
         "-- header\nRUNSPEC\n\n-- above O\nTABDIMS\n1 2 /\n\n-- above DIMENS\nDIMENS\n1 2 3 / x\nWATER\n\n-- above "
         "G\nEQLDIMS\n2 /\n-- end\n"},
        {"inserted ahead of the first",
         [](auto& editor, auto& deck) { return Insert(editor, deck.At("RUNSPEC"), "WATER\n") != nullptr; },
         "-- header\nWATER\n\nRUNSPEC\n\n-- above O\nTABDIMS\n1 2 /\n\n-- above DIMENS\nDIMENS\n1 2 3 / x\n-- above "
         "G\nEQLDIMS\n2 /\n-- end\n"},
        {"inserted at the end",
         [](auto& editor, auto& deck) { return Insert(editor, deck.Keywords().End(), "WATER\n") != nullptr; },
         "-- header\nRUNSPEC\n\n-- above O\nTABDIMS\n1 2 /\n\n-- above DIMENS\nDIMENS\n1 2 3 / x\n-- above "
         "G\nEQLDIMS\n2 /\nWATER\n\n-- end\n"},
        {"all removed",
         [](auto& editor, auto& deck) { return editor.RemoveKeywords(deck.At("RUNSPEC"), deck.Keywords().End()); },
         "-- header\n\n-- above O\n\n-- above DIMENS\n-- above G\n-- end\n"},
        {"new ones come and go",
         [](auto& editor, auto& deck) {
             return Insert(editor, deck.At("EQLDIMS"), "WATER\n") != nullptr && editor.RemoveKeyword(deck.At("WATER"));
         },
         text.c_str()},
        {"changed, with another behind it",
         [](auto& editor, auto& deck) {
             return editor.SetDataText(deck.At("DIMENS"), " 4 5 6 /") &&
                    Insert(editor, deck.At("EQLDIMS"), "WATER\n") != nullptr;
         },
         "-- header\nRUNSPEC\n\n-- above O\nTABDIMS\n1 2 /\n\n-- above DIMENS\nDIMENS\n 4 5 6 /\nWATER\n\n-- above "
         "G\nEQLDIMS\n2 /\n-- end\n"},
        {"commented out, with another behind it",
         [](auto& editor, auto& deck) {
             return editor.CommentOut(deck.At("DIMENS")) && Insert(editor, deck.At("EQLDIMS"), "WATER\n") != nullptr;
         },
         "-- header\nRUNSPEC\n\n-- above O\nTABDIMS\n1 2 /\n\n-- above DIMENS\n--DIMENS\n--1 2 3 / x\nWATER\n\n-- "
         "above G\nEQLDIMS\n2 /\n-- end\n"},
    };
    for (const Case& test : cases) {
        EXPECT_EQ(Edited({{"TOP.DATA", text}}, test.edit, "TOP.DATA"), test.expected) << test.what;
    }
}

/// A range holds what stands between its keywords, and the comment above its first one once.
TEST_F(EditedListTest, RangesOfAnEditedList)
{
    LineEnds::SetPolicy(LineEnds::Policy::Keep);
    const TestDeck deck(TestDeck::Texts{
        {"TOP.DATA", "DIMENS\n1 2 3 /\n-- above T\nTABDIMS\n1 /\n-- above I\nINCLUDE\nA.INC /\n-- above G\nGAS\n"},
        {"A.INC", "-- head\nEQLDIMS\n1 /\n-- above W\nWELLDIMS\n1 2 3 /\n-- end\n"}});
    deck.Walk(true);
    IDeckKeywordsEditor& editor = *deck.Manager().GetEditor(&deck.Deck());
    ASSERT_TRUE(editor.RemoveKeyword(deck.At("DIMENS")) && editor.RemoveKeyword(deck.At("EQLDIMS")));
    const auto flat = [&](const std::string& name) {
        const KeywordIterator end = deck.Keywords().PhysicalEnd();
        EXPECT_TRUE(Exporter::ExportToSingleFile(deck.Keywords(), deck.At(name), end, deck.Dir().Path("FLAT"),
                                                 ExportOptions(), nullptr));
        return deck.Dir().Read("FLAT");
    };
    const std::string included = "WELLDIMS\n1 2 3 /\n-- end\n-- above G\nGAS\n";
    EXPECT_EQ(flat("TABDIMS"), "-- above T\nTABDIMS\n1 /\n-- above I\n-- head\n-- above W\n" + included);
    EXPECT_EQ(flat("WELLDIMS"), "-- above W\n" + included);

    // Where nothing around it has changed, an extent goes whole, as it does in a list that nobody has edited.
    const auto part = [&](const std::string& first) {
        const KeywordFileIterator begin = deck.Keywords().GetFileIterator(deck.At(first));
        const KeywordFileIterator end = deck.Keywords().GetFileIterator(deck.At("GAS"));
        EXPECT_TRUE(Exporter::ExportToSingleFile(deck.Keywords(), begin, end, deck.Dir().Path("PART"),
                                                 Keywords::SimulatorType::Any));
        return deck.Dir().Read("PART");
    };
    EXPECT_EQ(part("TABDIMS"), "-- above T\nTABDIMS\n1 /\n-- above I\n-- above G\n");
    EXPECT_EQ(part("INCLUDE"), "-- above G\n");
    editor.Discard();
    EXPECT_EQ(part("TABDIMS"), "TABDIMS\n1 /\n-- above I\n-- above G\n");
}

/// What no keyword owns goes with the comments: a section keyword that recurs, a region that is skipped.
TEST_F(EditedListTest, TextOfNoKeywordStays)
{
    const std::string recurring = "RUNSPEC\nTABDIMS\n1 /\n-- again\nRUNSPEC\n-- above GAS\nGAS\n";
    const Edit insert = [](auto& editor, auto& deck) { return Insert(editor, deck.At("GAS"), "WATER\n") != nullptr; };
    EXPECT_EQ(Edited({{"TOP.DATA", recurring}}, insert, "TOP.DATA"),
              "RUNSPEC\nTABDIMS\n1 /\nWATER\n\n-- again\nRUNSPEC\n-- above GAS\nGAS\n");
    const Edit remove = [](auto& editor, auto& deck) { return editor.RemoveKeyword(deck.At("TABDIMS")); };
    EXPECT_EQ(Edited({{"TOP.DATA", recurring}}, remove, "TOP.DATA"), "RUNSPEC\n-- again\nRUNSPEC\n-- above GAS\nGAS\n");

    Environment::Instance().EnableSKIPENDSKIP(true, Keywords::SimulatorType::S100);
    const std::string skipped = "RUNSPEC\nOIL\nSKIP\n-- in it\nWATER\nENDSKIP\n-- above GAS\nGAS\n";
    const Edit move = [](auto& editor, auto& deck) { return editor.MoveKeyword(deck.At("GAS"), deck.At("OIL")); };
    EXPECT_EQ(Edited({{"TOP.DATA", skipped}}, move, "TOP.DATA"),
              "RUNSPEC\nGAS\nOIL\nSKIP\n-- in it\nWATER\nENDSKIP\n-- above GAS\n");
}

} // namespace
