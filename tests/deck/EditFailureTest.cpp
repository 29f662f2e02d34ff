#include "tests/support/DeckTest.h"
#include <deckmanager/DataTextEditor.h>
#include <deckmanager/IKeywordVariablesResolver.h>
#include <deckmanager/SetCommentAbove.h>
#include <tarn/keywords/IKeywordData.h>

// Edits while a file can't be read: each is done as ever, or refused, and nothing of the deck is lost by it.

namespace {

using namespace DeckTests;

/// False where the editor refuses.
using Edit = std::function<bool(const TestDeck&, IDeckKeywordsEditor&)>;

const TestDeck::Texts texts = {
    {"TOP.DATA", "-- head\n\nRUNSPEC\n-- above\nDIMENS -- beside\n-- below\n 1 2 3 / behind\n-- of tabdims\n"
                 "--@@@TABDIMS\n--@@@-- in it\n--@@@ 1 $N /\nTITLE\na title\nINCLUDE\n'A.INC' /\nPROPS\nDENSITY  -- "
                 "Generated\n 1 2 3 /\n-- end\n"},
    {"A.INC", "-- Generated\nEQLDIMS\n-- note\n $N 2 /\n-- of oil\nOIL\n"}};

std::string TextsOf(const TestDeck& deck)
{
    return deck.Dir().Read("TOP.DATA") + deck.Dir().Read("A.INC");
}

struct One final : IKeywordVariablesResolver
{
    bool Resolve(const Keywords::IKeywordData*, const Keywords::IKeywordVariables*, std::string& text) override
    {
        text.replace(text.find("$N"), 2, "1");
        return true;
    }
};

struct NamedEdit
{
    const char* name;
    Edit edit;
};

std::vector<NamedEdit> Edits()
{
    using Editor = IDeckKeywordsEditor;
    return {
        {"set an item",
         [](const TestDeck& deck, Editor& editor) {
             const KeywordIterator position = deck.At("DIMENS");
             const auto text = deck.Keywords().GetDataText(*position);
             const auto result = DataTextEditor::ForKeyword(deck.Keywords(), **position)
                                     .Set(*text, {1}, DataTextEditor::Value::Integer(7));
             return result.IsDone() && editor.SetDataText(position, result.text);
         }},
        {"set data",
         [](const TestDeck& deck, Editor& editor) {
             const KeywordIterator position = deck.At("DIMENS");
             return editor.SetData(position, deck.Keywords().GetKeywordData(*position)->CloneSafely());
         }},
        {"set text",
         [](const TestDeck& deck, Editor& editor) { return editor.SetDataText(deck.At("DIMENS"), " 7 8 9 /"); }},
        {"insert",
         [](const TestDeck& deck, Editor& editor) {
             return editor.InsertKeywordText(SyntaxOf("GAS"), deck.At("DIMENS"), "GAS\n") != nullptr;
         }},
        {"insert with data",
         [](const TestDeck& deck, Editor& editor) {
             return editor.InsertKeyword(SyntaxOf("WELLDIMS"), deck.At("OIL"), nullptr, "") != nullptr;
         }},
        {"move",
         [](const TestDeck& deck, Editor& editor) { return editor.MoveKeyword(deck.At("DIMENS"), deck.At("OIL")); }},
        {"move an include", [](const TestDeck& deck,
                               Editor& editor) { return editor.MoveKeyword(deck.At("INCLUDE"), deck.At("DIMENS")); }},
        {"remove", [](const TestDeck& deck, Editor& editor) { return editor.RemoveKeyword(deck.At("DIMENS")); }},
        {"remove many", [](const TestDeck& deck,
                           Editor& editor) { return editor.RemoveKeywords(deck.At("EQLDIMS"), deck.At("PROPS")); }},
        {"comment below",
         [](const TestDeck& deck, Editor& editor) { return editor.SetComment(deck.At("DIMENS"), "new"); }},
        {"comment above",
         [](const TestDeck& deck, Editor& editor) { return SetCommentAbove(editor, deck.At("OIL"), "new"); }},
        {"comment at the head",
         [](const TestDeck& deck, Editor& editor) { return SetCommentAbove(editor, deck.At("RUNSPEC"), "new"); }},
        {"comment out", [](const TestDeck& deck, Editor& editor) { return editor.CommentOut(deck.At("DIMENS")); }},
        {"suppress", [](const TestDeck& deck, Editor& editor) { return editor.Suppress(deck.At("DIMENS")); }},
        {"unsuppress", [](const TestDeck& deck, Editor& editor) { return editor.Unsuppress(deck.At("TABDIMS")); }},
        {"header",
         [](const TestDeck& deck, Editor& editor) { return editor.SetHeaderComment(&deck.TopFile(), "new"); }},
        {"tag",
         [](const TestDeck& deck, Editor& editor) {
             editor.TagKeyword(*deck.At("DIMENS"));
             return true;
         }},
        {"untag",
         [](const TestDeck& deck, Editor& editor) {
             editor.UntagKeyword(*deck.At("DENSITY"));
             return true;
         }},
        {"resolve",
         [](const TestDeck& deck, Editor& editor) {
             One one;
             return editor.ResolveVariables(deck.At("EQLDIMS"), one);
         }},
        {"section",
         [](const TestDeck&, Editor& editor) {
             return editor.GetOrCreateSection(Keywords::SectionType::GRID, nullptr) != nullptr;
         }},
        {"sort",
         [](const TestDeck&, Editor& editor) {
             editor.SortKeywords();
             return true;
         }},
    };
}

TEST(EditFailureTest, AnEditThatCannotReadIsRefusedOrDoneAllTheSame)
{
    const TestSupport::CleanEnvironment environment;
    Environment::Instance().EnableKeywordSuppression(true);
    LineEnds::SetPolicy(LineEnds::Policy::Keep);
    const TestSupport::LogRecorder log;
    for (const auto& [name, edit] : Edits()) {
        const TestDeck whole(texts);
        whole.Walk();
        IDeckKeywordsEditor& editor = *whole.Manager().GetEditor(&whole.Deck());
        const std::string old = TextsOf(whole);
        EXPECT_TRUE(edit(whole, editor)) << name;
        editor.Commit();
        const std::string expected = TextsOf(whole);
        EXPECT_NE(expected, old) << name;
        for (const auto call : {Call::Open, Call::Read}) {
            for (const bool forever : {false, true}) {
                int n = 1;
                for (bool failed = true; failed; ++n) {
                    SCOPED_TRACE(testing::Message() << name << ", operation " << n << " of kind "
                                                    << static_cast<int>(call) << ", forever " << forever);
                    const TestDeck deck(texts);
                    deck.Walk();
                    IDeckKeywordsEditor& edits = *deck.Manager().GetEditor(&deck.Deck());
                    FailingFileSystem files;
                    files.FailAt(n, {call}, EIO, forever);
                    bool refused = false;
                    try {
                        refused = !edit(deck, edits);
                    } catch (const DeckManagerException&) {
                        refused = true;
                    }
                    failed = files.HasFailed();
                    files.Pass();
                    edits.Commit();
                    EXPECT_EQ(TextsOf(deck), refused ? old : expected);
                }
            }
        }
    }
}

} // namespace
