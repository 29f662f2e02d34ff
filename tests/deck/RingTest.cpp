#include "tests/support/DeckTest.h"
#include <deckmanager/Exporter.h>

// Rings of files that edits close and open, and what is done to a deck that has one.

namespace {

using namespace DeckTests;
using Strings = std::vector<std::string>;

class RingTest : public testing::Test
{
protected:
    RingTest() { LineEnds::SetPolicy(LineEnds::Policy::Keep); }

    static IDeckKeywordsEditor& EditorOf(const TestDeck& deck) { return *deck.Manager().GetEditor(&deck.Deck()); }
    static IKeyword* InsertInclude(const TestDeck& deck, const KeywordIterator& place, const std::string& name)
    {
        return EditorOf(deck).InsertKeywordText(SyntaxOf("INCLUDE"), place, "INCLUDE\n'" + name + "' /\n");
    }
    Strings Told()
    {
        const Strings texts = m_log.Texts(3);
        m_log.Clear();
        return texts;
    }

    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
};

std::string Refusal(const std::string& path, const std::string& ring)
{
    return "The INCLUDE path \"" + path + "\" closes a ring of files: " + ring + ".";
}

TEST_F(RingTest, OtherDataAreLookedAtAgain)
{
    const TestDeck deck({{"T.DATA", "RUNSPEC\nINCLUDE\n'A.INC' /\nGRID\n"},
                         {"A.INC", "INCLUDE\n'A.INC' /\nOIL\n"},
                         {"B.INC", "GAS\n"}});
    const std::string before = "RUNSPEC INCLUDE INCLUDE OIL GRID";
    const Strings refusal{Refusal("A.INC", "A.INC -> A.INC")};
    EXPECT_EQ(deck.Walk(), before);
    EXPECT_EQ(Told(), refusal);
    IDeckKeywordsEditor& editor = EditorOf(deck);
    ASSERT_TRUE(editor.SetDataText(deck.At("INCLUDE", 2), "'B.INC' /"));
    EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE INCLUDE GAS OIL GRID");
    // The way into a ring by an edit is told like that of a load, once.
    ASSERT_TRUE(editor.SetDataText(deck.At("INCLUDE", 2), "'T.DATA' /"));
    EXPECT_EQ(deck.Walk(), before);
    EXPECT_EQ(deck.Walk(), before);
    EXPECT_EQ(Told(), Strings{Refusal("T.DATA", "A.INC -> T.DATA -> A.INC")});
    ASSERT_TRUE(editor.SetDataText(deck.At("INCLUDE", 2), "'B.INC' /"));
    EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE INCLUDE GAS OIL GRID");
    EXPECT_EQ(Told(), Strings());
    editor.Discard();
    EXPECT_EQ(deck.Walk(), before);
    EXPECT_EQ(Told(), refusal);
}

TEST_F(RingTest, AnotherOwnerIsLookedAtAgain)
{
    const TestDeck deck({{"T.DATA", "RUNSPEC\nINCLUDE\n'A.INC' /\nGRID\n"}, {"A.INC", "INCLUDE\n'A.INC' /\nOIL\n"}});
    EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE INCLUDE OIL GRID");
    EXPECT_EQ(Told().size(), 1u);
    ASSERT_TRUE(EditorOf(deck).MoveKeyword(deck.At("INCLUDE", 2), deck.At("GRID")));
    EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE OIL INCLUDE OIL GRID");
    // Back into its own tree it doesn't go, however it is asked for.
    EXPECT_FALSE(EditorOf(deck).MoveKeyword(deck.At("INCLUDE", 2), deck.At("OIL")));
    EXPECT_EQ(Told(), Strings());
    EditorOf(deck).Discard();
    EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE INCLUDE OIL GRID");
    EXPECT_EQ(Told(), Strings{Refusal("A.INC", "A.INC -> A.INC")});
}

TEST_F(RingTest, AMoveDeepIntoTheTreeIsRefused)
{
    const TestDeck deck({{"T.DATA", "RUNSPEC\nINCLUDE\n'A.INC' /\nGRID\n"},
                         {"A.INC", "INCLUDE\n'B.INC' /\n"},
                         {"B.INC", "INCLUDE\n'C.INC' /\n"},
                         {"C.INC", "OIL\n"}});
    const std::string before = deck.Walk();
    EXPECT_FALSE(EditorOf(deck).MoveKeyword(deck.At("INCLUDE"), deck.At("OIL")));
    EXPECT_FALSE(EditorOf(deck).MoveKeyword(deck.At("INCLUDE", 2), deck.At("OIL")));
    EXPECT_EQ(deck.Walk(), before);
    EXPECT_FALSE(deck.TopFile().IsModified() || deck.File("A.INC").IsModified());
    EXPECT_TRUE(m_log.Empty());
}

TEST_F(RingTest, AnInsertedIncludeThatClosesARingStays)
{
    const TestDeck deck({{"T.DATA", "RUNSPEC\nINCLUDE\n'A.INC' /\nGRID\n"}, {"A.INC", "OIL\n"}});
    const IKeyword* include = InsertInclude(deck, deck.At("OIL"), "T.DATA");
    ASSERT_NE(include, nullptr);
    EXPECT_EQ(deck.Keywords().GetIncludedFile(include), nullptr);
    EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE INCLUDE OIL GRID");
    EXPECT_EQ(Told(), Strings{Refusal("T.DATA", "A.INC -> T.DATA -> A.INC")});
    EditorOf(deck).Commit();
    EXPECT_EQ(deck.Dir().Read("A.INC"), "INCLUDE\n'T.DATA' /\nOIL\n");
    EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE INCLUDE OIL GRID");
    EXPECT_EQ(Told(), Strings());
}

TEST_F(RingTest, ARefusedLinkIsWholeWhileTheOtherIsGone)
{
    const TestDeck deck({{"T.DATA", "RUNSPEC\nINCLUDE\n'A.INC' /\nINCLUDE\n'B.INC' /\nGRID\n"},
                         {"A.INC", "OIL\nINCLUDE\n'B.INC' /\n"},
                         {"B.INC", "GAS\nINCLUDE\n'A.INC' /\n"}});
    const std::string before = "RUNSPEC INCLUDE OIL INCLUDE GAS INCLUDE INCLUDE GAS INCLUDE GRID";
    const Strings refusal{Refusal("A.INC", "B.INC -> A.INC -> B.INC")};
    EXPECT_EQ(deck.Walk(), before);
    EXPECT_EQ(Told(), refusal);
    IDeckKeywordsEditor& editor = EditorOf(deck);
    for (const bool removes : {true, false}) {
        if (removes)
            ASSERT_TRUE(editor.RemoveKeyword(deck.At("INCLUDE", 2)));
        else
            ASSERT_TRUE(editor.SetDataText(deck.At("INCLUDE", 2), "'C.INC' /"));
        EXPECT_EQ(deck.Walk(), removes ? "RUNSPEC INCLUDE OIL INCLUDE GAS INCLUDE OIL GRID"
                                       : "RUNSPEC INCLUDE OIL INCLUDE INCLUDE GAS INCLUDE OIL INCLUDE GRID");
        EXPECT_EQ(Told(), Strings());
        editor.Discard();
        // What comes back finds the other link made.
        EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE OIL INCLUDE INCLUDE GAS INCLUDE OIL INCLUDE GRID");
        EXPECT_EQ(Told(), Strings{Refusal("B.INC", "A.INC -> B.INC -> A.INC")});
        deck.Manager().RefreshDeck("Test");
        EXPECT_EQ(deck.Walk(), before);
        EXPECT_EQ(Told(), refusal);
    }
}

/// What comes back may close a ring that wasn't there when it went.
TEST_F(RingTest, ADiscardIsLookedAtToo)
{
    enum Way
    {
        Removed,
        Renamed,
        Moved
    };
    for (const Way way : {Removed, Renamed, Moved}) {
        SCOPED_TRACE(way);
        const TestDeck deck({{"T.DATA", "RUNSPEC\nINCLUDE\n'A.INC' /\nINCLUDE\n'B.INC' /\nGRID\n"},
                             {"A.INC", "OIL\nINCLUDE\n'B.INC' /\n"},
                             {"B.INC", "GAS\n"}});
        EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE OIL INCLUDE GAS INCLUDE GAS GRID");
        IDeckKeywordsEditor& editor = EditorOf(deck);
        const KeywordIterator inner = deck.At("INCLUDE", 2);
        ASSERT_TRUE(way == Removed   ? editor.RemoveKeyword(inner)
                    : way == Renamed ? editor.SetDataText(inner, "'C.INC' /")
                                     : editor.MoveKeyword(inner, deck.At("RUNSPEC")));
        deck.Dir().Write("B.INC", "GAS\nINCLUDE\n'A.INC' /\n");
        deck.File("B.INC").Reload();
        deck.Walk();
        EXPECT_EQ(Told(), Strings());
        editor.Discard();
        // Either of the two is refused.
        EXPECT_EQ(Told().size(), 1u);
        EXPECT_EQ(deck.Keywords().GetFiles().size(), 3u);
        EXPECT_EQ(TestDeck::Extents(deck.File("A.INC")), "OIL@0+4 INCLUDE@4+18");
        int count = 0;
        for (KeywordIterator place = deck.Keywords().Begin(); *place != nullptr; ++place)
            ASSERT_LT(++count, 20);
        EXPECT_EQ(deck.WalkBack().size(), deck.Walk().size());
    }
}

/// Each of these goes over all files of a deck.
TEST_F(RingTest, WhatIsDoneToADeckWithARingEnds)
{
    const std::string tag = Environment::Instance().GetKeywordGeneratedTag();
    const TestDeck::Texts texts{
        {"T.DATA", "RUNSPEC   " + tag + "\nINCLUDE   " + tag + "\n'A.INC' /\nGRID   " + tag + "\nPORO\n1 /\n"},
        {"A.INC", "OIL\nINCLUDE\n'B.INC' /\nDIMENS\n1 2 3 /\n"},
        {"B.INC", "INCLUDE\n'A.INC' /\nGAS\nINCLUDE\n'T.DATA' /\n"}};
    const std::string walk = "RUNSPEC INCLUDE OIL INCLUDE INCLUDE GAS INCLUDE DIMENS GRID PORO";
    const TestDeck deck(texts);
    IDeckKeywordsEditor& editor = EditorOf(deck);
    EXPECT_EQ(deck.Walk(true), walk);
    EXPECT_EQ(deck.WalkBack(), "PORO GRID DIMENS INCLUDE GAS INCLUDE INCLUDE OIL INCLUDE RUNSPEC");
    EXPECT_EQ(deck.Keywords().GetFiles().size(), 3u);
    EXPECT_EQ(deck.Keywords().GetIncludingKeyword(&deck.File("A.INC")), *deck.At("INCLUDE"));
    EXPECT_EQ(deck.File("A.INC").GetStartSection(), Keywords::SectionType::RUNSPEC);
    EXPECT_EQ(deck.TopFile().EndSection(), Keywords::SectionType::GRID);
    EXPECT_EQ(Told(), (Strings{Refusal("A.INC", "B.INC -> A.INC -> B.INC"),
                               Refusal("T.DATA", "B.INC -> T.DATA -> A.INC -> B.INC")}));

    deck.Manager().RefreshDeck("Test");
    EXPECT_EQ(deck.Walk(true), walk);
    EXPECT_EQ(Told().size(), 2u);

    ASSERT_TRUE(editor.SetDataText(deck.At("DIMENS"), "4 5 6 /"));
    ASSERT_TRUE(editor.RemoveKeyword(deck.At("GAS")));
    editor.SortKeywords();
    editor.TagAllKeywords();
    editor.UntagAllKeywords();
    editor.Discard();
    EXPECT_EQ(deck.Walk(true), walk);
    ASSERT_TRUE(editor.SetDataText(deck.At("DIMENS"), "4 5 6 /"));
    editor.Commit();
    EXPECT_EQ(deck.Dir().Read("A.INC"), "OIL\nINCLUDE\n'B.INC' /\nDIMENS\n4 5 6 /\n");
    EXPECT_EQ(deck.Walk(true), walk);

    EXPECT_TRUE(Exporter::ExportToSingleFile(deck.Keywords(), deck.Dir().Path("flat.DATA")));
    EXPECT_NE(deck.Dir().Read("flat.DATA").find("GAS\n"), std::string::npos);
    EXPECT_TRUE(deck.Keywords().ExportToDirectory(deck.Dir().Path("out"), Keywords::SimulatorType::Any, false));
    EXPECT_EQ(deck.Dir().Read("out/B.INC"), deck.Dir().Read("B.INC"));
    Strings failed;
    EXPECT_NE(Exporter::CopyToSameDir(deck.Keywords(), "_X", failed), "");

    // As the source and as the target of a merge.
    const TestDeck target({{"T.DATA", "RUNSPEC   " + tag + "\nINCLUDE   " + tag + "\n'A.INC' /\nGRID   " + tag + "\n"},
                           {"A.INC", "INCLUDE   " + tag + "\n'A.INC' /\n"}});
    std::set<KeywordIterator> replaced;
    EditorOf(target).MergeUserKeywords(deck.Deck(), replaced, {}, {});
    EditorOf(target).MergeComments(deck.Deck(), {}, {});
    const std::string merged = target.Walk(true);
    for (const char* name : {"OIL", "DIMENS", "PORO"})
        EXPECT_TRUE(merged.find(name) != std::string::npos) << name << " in " << merged;
}

} // namespace
