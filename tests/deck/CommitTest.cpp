#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

#include "files/KeywordFile.h"
#include "keywords/Keyword.h"
#include "tests/support/FailingFileSystem.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/TestDeck.h"
#include "tests/support/UnprivilegedUser.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/DeckManagerFactory.h>
#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/LineEnds.h>
#include <deckmanager/SetCommentAbove.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>
#include <tarn/service/FileStatus.h>
#include <tarn/service/FileSystem.h>

// Edits on the disk: what a commit makes of the files, what it refuses, and what it leaves alone.

namespace {

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;
using Service::FileName;
using TestSupport::TestDeck;

const std::string topText = "-- header\nRUNSPEC\n\n-- above TABDIMS\nTABDIMS\n 1 2 / two\n\n-- above DIMENS\nDIMENS -- "
                            "the grid\n-- inner\n1 2 3 /\n-- above INCLUDE\nINCLUDE\n'A.INC' /\n-- end\n";

class CommitTest : public testing::Test
{
protected:
    using Edit = std::function<void(IDeckKeywordsEditor&, const TestDeck&)>;

    CommitTest() { LineEnds::SetPolicy(LineEnds::Policy::Keep); }

    static IDeckKeywordsEditor& EditorOf(const TestDeck& deck) { return *deck.Manager().GetEditor(&deck.Deck()); }

    static IKeyword* Insert(IDeckKeywordsEditor& editor, const KeywordIterator& place, const std::string& text)
    {
        const std::string name = text.substr(0, text.find('\n'));
        return editor.InsertKeywordText(*Environment::Instance().GetSyntaxTable()->FindSyntax(name, true), place, text);
    }

    static std::string FailureOf(const std::function<void()>& action)
    {
        try {
            action();
        } catch (const DeckManagerException& failure) {
            return failure.what();
        }
        return {};
    }

    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
};

TEST_F(CommitTest, ChangesOnlyWhatWasEdited)
{
    struct Case
    {
        const char* what;
        Edit edit;
        std::string old;
        std::string changed;
    };
    const std::vector<Case> cases = {
        {"data", [](auto& editor, auto& deck) { editor.SetDataText(deck.At("DIMENS"), "4 5 6 /"); },
         "-- inner\n1 2 3 /\n", "-- inner\n4 5 6 /\n"},
        {"a comment", [](auto& editor, auto& deck) { editor.SetComment(deck.At("DIMENS"), "other"); }, "-- inner\n",
         "--other\n"},
        {"a keyword is commented out", [](auto& editor, auto& deck) { editor.CommentOut(deck.At("TABDIMS")); },
         "TABDIMS\n 1 2 / two\n", "--TABDIMS\n-- 1 2 / two\n"},
        {"a suppression", [](auto& editor, auto& deck) { editor.Suppress(deck.At("TABDIMS")); },
         "TABDIMS\n 1 2 / two\n", "--@@@TABDIMS\n--@@@ 1 2 / two\n"},
        {"a tag", [](auto& editor, auto& deck) { editor.TagKeyword(*deck.At("TABDIMS")); }, "\nTABDIMS\n",
         "\nTABDIMS" + std::string(30, ' ') + "-- Generated\n"},
        {"a comment above", [](auto& editor, auto& deck) { SetCommentAbove(editor, deck.At("DIMENS"), "new\n-- two"); },
         "-- above DIMENS\n", "--new\n-- two\n"},
        {"a comment above that would read as something else",
         [](auto& editor, auto& deck) { SetCommentAbove(editor, deck.At("DIMENS"), "--@@@OIL\n--\n-- Generated"); },
         "-- above DIMENS\n", "-- @@@OIL\n--\n--  Generated\n"},
        {"no comment above", [](auto& editor, auto& deck) { SetCommentAbove(editor, deck.At("DIMENS"), ""); },
         "-- above DIMENS\n", ""},
        {"the comment above the first",
         [](auto& editor, auto& deck) { SetCommentAbove(editor, deck.At("RUNSPEC"), "-- other"); }, "-- header\n",
         "-- other\n"},
        {"a comment above one without",
         [](auto& editor, auto& deck) {
             editor.RemoveKeyword(deck.At("TABDIMS"));
             SetCommentAbove(editor, deck.At("DIMENS"), "-- both");
         },
         "-- above TABDIMS\nTABDIMS\n 1 2 / two\n\n-- above DIMENS\n", "-- both\n"},
        {"a header", [](auto& editor, auto& deck) { editor.SetHeaderComment(&deck.TopFile(), "mine\n"); },
         "-- header\n", "-- Generated [\n--mine\n-- Generated ]\n\n-- header\n"},
        {"a new keyword", [](auto& editor, auto& deck) { Insert(editor, deck.At("DIMENS"), "EQLDIMS\n3 /\n"); },
         "\n-- above DIMENS", "EQLDIMS\n3 /\n\n-- above DIMENS"},
        {"nothing", [](auto&, auto&) {}, "", ""},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        const TestDeck deck(TestDeck::Texts{{"TOP.DATA", topText}, {"A.INC", "OIL\n"}});
        deck.Walk(true);
        IDeckKeywordsEditor& editor = EditorOf(deck);
        test.edit(editor, deck);
        const std::string before = deck.Walk(true);
        const std::string inner = deck.Dir().Read("TOP.DATA");
        EXPECT_EQ(inner, topText);
        editor.Commit();
        std::string expected = topText;
        expected.replace(expected.find(test.old), test.old.size(), test.changed);
        EXPECT_EQ(deck.Dir().Read("TOP.DATA"), expected);
        EXPECT_EQ(deck.Walk(true), deck.WalkOfDisk());
        EXPECT_EQ(deck.Dir().Listing(), "A.INC TOP.DATA");
        EXPECT_FALSE(deck.TopFile().IsModified());
        // The header has gone into the text: a second one takes its place.
        if (std::string(test.what) == "a header") {
            editor.SetHeaderComment(&deck.TopFile(), "yours");
            editor.Commit();
            expected.replace(expected.find("mine"), 4, "yours");
            EXPECT_EQ(deck.Dir().Read("TOP.DATA"), expected);
        }
        editor.SetDataText(deck.At("DIMENS"), "7 /");
        editor.Commit();
        EXPECT_NE(deck.Dir().Read("TOP.DATA").find("\n7 /\n"), std::string::npos);
    }
}

TEST_F(CommitTest, ATagThatWasCommittedGoesWithTheOthers)
{
    const TestDeck deck(TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nTABDIMS\n1 /\n"}});
    EditorOf(deck).TagKeyword(*deck.At("TABDIMS"));
    EditorOf(deck).Commit();
    EXPECT_NE(deck.Dir().Read("TOP.DATA").find("-- Generated"), std::string::npos);
    Environment::Instance().WriteGeneratedTags(false);
    EditorOf(deck).SetDataText(deck.At("TABDIMS"), " 2 /");
    EditorOf(deck).Commit();
    EXPECT_EQ(deck.Dir().Read("TOP.DATA"), "RUNSPEC\nTABDIMS\n 2 /\n");
}

TEST_F(CommitTest, AnOpenLastLineStaysOpenWhileNothingFollowsIt)
{
    struct Case
    {
        const char* what;
        std::string text;
        Edit edit;
        std::string expected;
    };
    const Edit data = [](auto& editor, auto& deck) { editor.SetDataText(deck.At("DIMENS"), " 4 5 6 /"); };
    const Edit tag = [](auto& editor, auto& deck) { editor.TagKeyword(*deck.At("OIL")); };
    const std::vector<Case> cases = {
        {"data", "RUNSPEC\nDIMENS\n1 2 3 / -- open", data, "RUNSPEC\nDIMENS\n 4 5 6 /"},
        {"CR LF", "RUNSPEC\r\nDIMENS\r\n1 2 3 /", data, "RUNSPEC\r\nDIMENS\r\n 4 5 6 /"},
        {"the whole text", "DIMENS\n1 2 3 /", data, "DIMENS\n 4 5 6 /"},
        {"blanks at the end", "DIMENS\n1 2 3 /\n ", data, "DIMENS\n 4 5 6 /\n "},
        {"a comment at the end", "DIMENS\n1 2 3 /\n-- end", data, "DIMENS\n 4 5 6 /\n-- end"},
        {"an ended line", "DIMENS\n1 2 3 /\n", data, "DIMENS\n 4 5 6 /\n"},
        {"a keyword behind", "DIMENS\n1 2 3 /\nOIL", data, "DIMENS\n 4 5 6 /\nOIL"},
        {"a tag", "RUNSPEC\nOIL", tag, "RUNSPEC\nOIL" + std::string(34, ' ') + "-- Generated"},
        {"a suppression", "RUNSPEC\nOIL", [](auto& editor, auto& deck) { editor.Suppress(deck.At("OIL")); },
         "RUNSPEC\n--@@@OIL"},
        {"commented out", "RUNSPEC\nOIL", [](auto& editor, auto& deck) { editor.CommentOut(deck.At("OIL")); },
         "RUNSPEC\n--OIL"},
        {"moved up", "RUNSPEC\nOIL\nGAS",
         [](auto& editor, auto& deck) { editor.MoveKeyword(deck.At("GAS"), deck.At("OIL")); }, "RUNSPEC\nGAS\nOIL\n"},
        {"one behind it", "RUNSPEC\nDIMENS\n1 2 3 /",
         [&](auto& editor, auto& deck) {
             data(editor, deck);
             Insert(editor, deck.Keywords().PhysicalEnd(), "OIL\n");
         },
         "RUNSPEC\nDIMENS\n 4 5 6 /\nOIL\n\n"},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        const TestDeck deck(TestDeck::Texts{{"TOP.DATA", test.text}});
        deck.Walk(true);
        test.edit(EditorOf(deck), deck);
        EditorOf(deck).Commit();
        EXPECT_EQ(deck.Dir().Read("TOP.DATA"), test.expected);
        EXPECT_EQ(deck.Walk(true), deck.WalkOfDisk());
        // Its keywords know where they stand now.
        SetCommentAbove(EditorOf(deck), deck.Keywords().Begin(), "-- above");
        EditorOf(deck).Commit();
        EXPECT_EQ(deck.Dir().Read("TOP.DATA").substr(0, 8), "-- above");
        EXPECT_EQ(deck.Dir().Read("TOP.DATA").substr(test.expected.find('\r') == std::string::npos ? 9 : 10),
                  test.expected);
    }
}

/// A keyword that comes to stand behind data without an end would be read as one of them.
TEST_F(CommitTest, DataAreEndedWhereAKeywordFollows)
{
    struct Case
    {
        const char* what;
        std::string text;
        Edit edit;
        std::string expected;
    };
    const std::string wells = "SCHEDULE\nWELSPECS\n 'P' 'G' 1 1 1* OIL /\n";
    const auto append = [](auto& editor, auto& deck) { Insert(editor, deck.Keywords().PhysicalEnd(), "NOECHO\n"); };
    const auto set = [](const std::string& name, const std::string& data) -> Edit {
        return [name, data](auto& editor, auto& deck) { editor.SetDataText(deck.At(name), data); };
    };
    const std::vector<Case> cases = {
        {"a list", wells + "-- end\n", append, wells + "/\nNOECHO\n\n-- end\n"},
        {"an ended list", wells + "/\n", append, wells + "/\nNOECHO\n\n"},
        {"a record", "SCHEDULE\nRPTSCHED\n PRES", append, "SCHEDULE\nRPTSCHED\n PRES\n/\nNOECHO\n\n"},
        {"a list whose last record is open", "SCHEDULE\nACTIONX\n A 1 /\n WOPR W > 1\n", append,
         "SCHEDULE\nACTIONX\n A 1 /\n WOPR W > 1\n/\n/\nNOECHO\n\n"},
        {"a title without its line", "RUNSPEC\nTITLE", append, "RUNSPEC\nTITLE\n\nNOECHO\n\n"},
        {"raw text", "RUNSPEC\nPYINPUT\nimport x\n", append, "RUNSPEC\nPYINPUT\nimport x\nPYEND\nNOECHO\n\n"},
        {"suppressed and moved", "SCHEDULE\nNOECHO\n--@@@RPTSCHED\n--@@@ PRES",
         [](auto& editor, auto& deck) { editor.MoveKeyword(deck.At("RPTSCHED"), deck.At("NOECHO")); },
         "SCHEDULE\n--@@@RPTSCHED\n--@@@ PRES\n--@@@/\nNOECHO\n"},
        {"gone ahead", wells,
         [&](auto& editor, auto& deck) {
             editor.TagKeyword(*deck.At("SCHEDULE"));
             editor.CommitFile(&deck.TopFile());
             append(editor, deck);
         },
         "SCHEDULE" + std::string(29, ' ') + "-- Generated" + wells.substr(8) + "/\nNOECHO\n\n"},
        {"set text", wells + "/\nNOECHO\n", set("WELSPECS", " 'I' 'G' 1 1 1* GAS /"),
         "SCHEDULE\nWELSPECS\n 'I' 'G' 1 1 1* GAS /\n/\nNOECHO\n"},
        {"where none follows", "SCHEDULE\nRPTSCHED\n PRES", set("RPTSCHED", " SWAT"), "SCHEDULE\nRPTSCHED\n SWAT"},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        const TestDeck deck(TestDeck::Texts{{"TOP.DATA", test.text}});
        deck.Walk(true);
        test.edit(EditorOf(deck), deck);
        EditorOf(deck).Commit();
        EXPECT_EQ(deck.Dir().Read("TOP.DATA"), test.expected);
        EXPECT_EQ(deck.Walk(true), deck.WalkOfDisk());
    }
}

TEST_F(CommitTest, CommentsThatAreSetShowAndGoWithADiscard)
{
    const TestDeck deck(TestDeck::Texts{{"TOP.DATA", topText}, {"A.INC", "OIL\n"}});
    IDeckKeywordsEditor& editor = EditorOf(deck);
    const auto commentAt = [&](const std::string& name) { return deck.Keywords().GetComment(deck.At(name), true); };
    EXPECT_TRUE(SetCommentAbove(editor, deck.At("DIMENS"), "-- new"));
    EXPECT_TRUE(SetCommentAbove(editor, deck.At("RUNSPEC"), "-- top"));
    EXPECT_EQ(commentAt("DIMENS") + commentAt("RUNSPEC"), "-- new\n-- top\n");
    editor.Discard();
    EXPECT_EQ(commentAt("DIMENS") + commentAt("RUNSPEC"), "-- above DIMENS\n-- header\n");
    EXPECT_FALSE(deck.TopFile().IsModified());
    // A header is no edit of the keywords: it waits for the next commit.
    EXPECT_TRUE(editor.SetHeaderComment(&deck.TopFile(), "mine"));
    editor.Discard();
    EXPECT_TRUE(deck.TopFile().IsModified());
    editor.Commit();
    EXPECT_EQ(deck.Dir().Read("TOP.DATA"), "-- Generated [\n--mine\n-- Generated ]\n\n" + topText);
    EXPECT_EQ(commentAt("RUNSPEC"), "-- header\n");
}

/// Also behind a keyword without data, whose own comment would stand there.
TEST_F(CommitTest, ACommentThatIsPutAboveAKeywordIsThatOne)
{
    const TestDeck deck(TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nOIL\nGAS\n-- of GAS\nWATER\n"}});
    deck.Walk(true);
    IDeckKeywordsEditor& editor = EditorOf(deck);
    for (const std::string text : {"one", "two"}) {
        for (const char* name : {"GAS", "WATER"}) {
            EXPECT_TRUE(SetCommentAbove(editor, deck.At(name), text));
            editor.Commit();
            EXPECT_EQ(deck.Keywords().GetComment(deck.At(name), false), "--" + text + "\n");
        }
    }
    EXPECT_EQ(deck.Dir().Read("TOP.DATA"), "RUNSPEC\nOIL\n\n--two\nGAS\n-- of GAS\n\n--two\nWATER\n");
    EXPECT_TRUE(editor.RemoveKeyword(deck.At("OIL")));
    ASSERT_NE(Insert(editor, deck.At("GAS"), "TABDIMS\n 1 /\n"), nullptr);
    const Keywords::IKeywordSyntax* const syntax = (*deck.At("TABDIMS"))->GetSyntax();
    ASSERT_NE(editor.InsertKeywordText(*syntax, deck.At("WATER"), "-- of TABDIMS\nTABDIMS\n 1 /\n"), nullptr);
    editor.Commit();
    EXPECT_EQ(deck.Dir().Read("TOP.DATA"),
              "RUNSPEC\nTABDIMS\n 1 /\n\n--two\nGAS\n-- of GAS\n\n-- of TABDIMS\nTABDIMS\n "
              "1 /\n\n--two\nWATER\n");
    EXPECT_EQ(deck.Keywords().GetComment(deck.At("TABDIMS", 2), false), "-- of TABDIMS\n");
}

/// What is put ahead of a keyword's line is written once, and belongs to the keyword ahead.
TEST_F(CommitTest, WhatWasPutAheadOfAKeywordIsNoPartOfIt)
{
    for (const bool isNew : {false, true}) {
        const TestDeck deck(TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nOIL\nTABDIMS\n1 /\n"}});
        IDeckKeywordsEditor& editor = EditorOf(deck);
        if (isNew) Insert(editor, deck.At("OIL"), "EQLDIMS\n 3 /\n");
        auto& keyword = const_cast<Keyword&>(static_cast<const Keyword&>(**deck.At(isNew ? "EQLDIMS" : "OIL")));
        keyword.AddLeadingComment(" ahead", false, true);
        EXPECT_EQ(*keyword.GetText(), isNew ? "-- ahead\nEQLDIMS\n 3 /\n" : "-- ahead\nOIL\n");
        const std::string own = isNew ? "EQLDIMS\n 3 /\n" : "";
        const std::string apart = isNew ? "\n" : "";
        for (int i = 0; i < 2; ++i) {
            editor.Commit();
            EXPECT_EQ(deck.Dir().Read("TOP.DATA"), "RUNSPEC\n" + apart + "-- ahead\n" + own + "OIL\nTABDIMS\n1 /\n");
            EXPECT_EQ(TestDeck::Extents(deck.TopFile()), isNew ? "RUNSPEC@0+18 EQLDIMS@18+13 OIL@31+4 TABDIMS@35+12"
                                                               : "RUNSPEC@0+17 OIL@17+4 TABDIMS@21+12");
            EXPECT_FALSE(deck.TopFile().IsModified());
        }
    }
}

TEST_F(CommitTest, TextOfNoKeywordAheadOfACommentStays)
{
    // The words of a keyword that nobody knows belong to nobody.
    const TestDeck deck(TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nOIL\n NOSUCH 1 2\n\n-- old\n-- two\n\nWATER\n"}});
    EXPECT_TRUE(SetCommentAbove(EditorOf(deck), deck.At("WATER"), "-- new"));
    EditorOf(deck).Commit();
    EXPECT_EQ(deck.Dir().Read("TOP.DATA"), "RUNSPEC\nOIL\n NOSUCH 1 2\n\n-- new\n\nWATER\n");
}

/// The heads of files, and what no keyword owns there, through a commit and a second one.
TEST_F(CommitTest, WhatStandsAheadOfTheFirstKeywordStaysThere)
{
    struct Case
    {
        const char* what;
        std::string text; ///< of the included file
        Edit edit;
        std::string expected;
    };
    const std::string mark = "\xEF\xBB\xBF";
    const std::string two = "-- head\nTABDIMS\n1 /\n\n-- above E\nEQLDIMS\n 2 /\n";
    const auto insertFirst = [](IDeckKeywordsEditor& editor, const TestDeck& deck) {
        const auto* gas = Environment::Instance().GetSyntaxTable()->FindSyntax("GAS", true);
        EXPECT_NE(editor.InsertKeywordText(*gas, deck.File("A.INC").Begin(), "GAS\n"), nullptr);
    };
    const auto remove = [](auto& editor, auto& deck) { EXPECT_TRUE(editor.RemoveKeyword(deck.At("TABDIMS"))); };
    const auto down = [](IDeckKeywordsEditor& editor, const TestDeck& deck) {
        const KeywordFileIterator first = deck.Keywords().GetFileIterator(deck.At("TABDIMS"));
        EXPECT_TRUE(editor.MoveKeyword(first, deck.File("A.INC").End()));
    };
    const auto up = [](auto& editor, auto& deck) {
        EXPECT_TRUE(editor.MoveKeyword(deck.At("EQLDIMS"), deck.At("TABDIMS")));
    };
    const auto data = [](auto& editor, auto& deck) { EXPECT_TRUE(editor.SetDataText(deck.At("EQLDIMS"), " 9 /")); };
    const std::string tags = "\n-- Generated\n  --!!! Program generated\n\n";
    const std::vector<Case> cases = {
        {"a file of comments", "-- a\n\n-- b\n", insertFirst, "-- a\n\n-- b\nGAS\n"},
        {"the numbers of an array", " 1 2*3\n-- b\n 4 /", insertFirst, " 1 2*3\n-- b\n 4 /\nGAS\n"},
        {"a mark and nothing else", mark, insertFirst, mark + "GAS\n"},
        {"a mark, and another keyword first", mark + two, insertFirst,
         mark + "-- head\nGAS\nTABDIMS\n1 /\n\n-- above E\nEQLDIMS\n 2 /\n"},
        {"a mark, and the first moved", mark + "TABDIMS\n1 /\nEQLDIMS\n 2 /\n", down,
         mark + "EQLDIMS\n 2 /\nTABDIMS\n1 /\n"},
        {"a mark, and the first removed", mark + "TABDIMS\n1 /\nEQLDIMS\n 2 /\n", remove, mark + "EQLDIMS\n 2 /\n"},
        {"the header, and the first moved ahead of the last words", two + "-- end\n", down,
         "-- head\n\n-- above E\nEQLDIMS\n 2 /\nTABDIMS\n1 /\n-- end\n"},
        {"the header, and another moved ahead", two, up, "-- head\n\n-- above E\nEQLDIMS\n 2 /\nTABDIMS\n1 /\n"},
        {"a section keyword that recurs", "-- head\nRUNSPEC\n-- behind it\n" + two, data,
         "-- head\nRUNSPEC\n-- behind it\n-- head\nTABDIMS\n1 /\n\n-- above E\nEQLDIMS\n 9 /\n"},
        {"the tags of the file as they stand", tags + two, data,
         tags + "-- head\nTABDIMS\n1 /\n\n-- above E\nEQLDIMS\n 9 /\n"},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        const TestDeck deck(TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'A.INC' /\nOIL\n"}, {"A.INC", test.text}});
        deck.Walk(true);
        IDeckKeywordsEditor& editor = EditorOf(deck);
        test.edit(editor, deck);
        editor.Commit();
        // A keyword that is new may end with an empty line.
        std::string written = deck.Dir().Read("A.INC");
        if (const std::size_t at = written.find("GAS\n\n"); at != std::string::npos) written.erase(at + 4, 1);
        EXPECT_EQ(written, test.expected);
        EXPECT_EQ(deck.Walk(true), deck.WalkOfDisk());
        // Where all has come to stand is known: a second commit changes what it is about.
        written = deck.Dir().Read("A.INC");
        EXPECT_TRUE(editor.SetComment(deck.At("OIL"), "beside"));
        const KeywordFileIterator first = deck.File("A.INC").Begin();
        const std::string line = first->GetName() + "\n";
        EXPECT_TRUE(editor.SetComment(first, "below"));
        editor.Commit();
        const std::size_t at = written.find(line) + line.size();
        EXPECT_EQ(deck.Dir().Read("A.INC"), written.insert(at, "--below\n"));
    }
}

TEST_F(CommitTest, RefusesBeforeAnythingIsTouched)
{
    const TestDeck deck(TestDeck::Texts{{"TOP.DATA", topText}, {"A.INC", "OIL\nTABDIMS\n3 /\n"}});
    deck.Walk(true);
    IDeckKeywordsEditor& editor = EditorOf(deck);
    editor.SetDataText(deck.At("TABDIMS", 1), " 7 /");
    editor.SetDataText(deck.At("TABDIMS", 2), " 8 /");

    // Somebody else has written the one file meanwhile, with another size, or with a new file of the same size.
    for (const char* other : {"OIL\n", "OIL\nTABDIMS\n4 /\n"}) {
        deck.Dir().Write("A.INC", other);
        EXPECT_EQ(FailureOf([&] { editor.Commit(); }),
                  "The file " + deck.Dir().Path("A.INC") + " has been changed on disk since it was read.");
        EXPECT_EQ(FailureOf([&] { editor.CommitFile(&deck.File("A.INC")); }),
                  "The file " + deck.Dir().Path("A.INC") + " has been changed on disk since it was read.");
    }
    EXPECT_EQ(deck.Dir().Read("TOP.DATA"), topText);
    EXPECT_EQ(deck.Dir().Listing(), "A.INC TOP.DATA");

    // In place, and with the time set back. Another mode is no change.
    deck.File("A.INC").Reload();
    editor.SetDataText(deck.At("TABDIMS", 2), " 8 /");
    const std::string path = deck.Dir().Path("A.INC");
    const auto rewrite = [&](const std::string& text) {
        const Service::FileStatus status = Service::FileStatus::Of(path);
        std::ofstream(path) << text;
        Service::FileSystem::ErrorCode error;
        Service::FileSystem::Instance().SetTimeLastModified(path, status.modifiedNanoseconds, error);
        Service::FileSystem::Instance().SetMode(path, 0600, error);
    };
    const std::string message = "The file " + path + " has been changed on disk since it was read.";
    for (const char* other : {"OIL\n\nTABDIMS\n4/\n", "OIL\nTABDIMS\n4 /\n-- and more\n"}) {
        rewrite(other);
        EXPECT_EQ(FailureOf([&] { editor.Commit(); }), message);
        EXPECT_EQ(deck.Dir().Read("A.INC"), other);
    }
    // Another file of that size and time is another text, wherever its keywords stand.
    rewrite("OIL\nTABDIMS\n4 /\n");
    Service::FileSystem::ErrorCode error;
    Service::FileSystem& files = Service::FileSystem::Instance();
    const std::int64_t time = Service::FileStatus::Of(path).modifiedNanoseconds;
    ASSERT_TRUE(files.Rename(path, deck.Dir().Path("old"), error));
    deck.Dir().Write("A.INC", "OIL\nTABDIMS\n5 /\n");
    ASSERT_TRUE(files.SetTimeLastModified(path, time, error));
    EXPECT_EQ(FailureOf([&] { editor.Commit(); }), message);
    EXPECT_EQ(deck.Dir().Read("A.INC"), "OIL\nTABDIMS\n5 /\n");
    ASSERT_TRUE(files.Rename(deck.Dir().Path("old"), path, error));
    EXPECT_EQ(FailureOf([&] { editor.Commit(); }), "");
    EXPECT_EQ(deck.Dir().Read("A.INC"), "OIL\nTABDIMS\n 8 /\n");
}

TEST_F(CommitTest, NamesWhatCannotBeWritten)
{
    const TestDeck deck(TestDeck::Texts{{"TOP.DATA", topText}, {"sub/A.INC", "OIL\n"}});
    IDeckKeywordsEditor& editor = EditorOf(deck);
    editor.SetDataText(deck.At("TABDIMS"), " 7 /");
    editor.SetDataText(deck.At("INCLUDE"), "'sub/A.INC' /");
    editor.Commit();
    Insert(editor, deck.At("OIL"), "WATER\n");
    editor.SetDataText(deck.At("TABDIMS"), " 8 /");
    const std::string before = deck.Dir().Read("TOP.DATA");
    const TestSupport::UnprivilegedUser user(deck.Dir());
    Service::FileSystem::ErrorCode error;
    ASSERT_TRUE(Service::FileSystem::Instance().SetMode(deck.Dir().Path("sub"), 0555, error));
    EXPECT_EQ(FailureOf([&] { editor.Commit(); }),
              "Fails to commit changes due to insufficient privileges to create/modify:\n" +
                  deck.Dir().Path("sub/A.INC") + "\n");
    EXPECT_EQ(deck.Dir().Read("TOP.DATA"), before);
    EXPECT_TRUE(deck.TopFile().IsModified());
    Service::FileSystem::Instance().SetMode(deck.Dir().Path("sub"), 0755, error);
}

TEST_F(CommitTest, KeepsWhatTheFileSystemKnows)
{
    const TestDeck deck(TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nINCLUDE\nlink.inc /\nINCLUDE\nB.INC /\n"},
                                        {"real/a.inc", "OIL\n"},
                                        {"B.INC", "GAS\n"},
                                        {"real/a_inc__.tmp", "not ours"}});
    Service::FileSystem& files = Service::FileSystem::Instance();
    Service::FileSystem::ErrorCode error;
    ASSERT_TRUE(files.MakeLink("real/a.inc", deck.Dir().Path("link.inc"), error));
    // Only the privileged may give a file to another, and set him as the owner of the new one.
    const bool isPrivileged = geteuid() == 0;
    if (isPrivileged) {
        ASSERT_TRUE(files.SetOwner(deck.Dir().Path("real/a.inc"), 1234, 5678, error));
    }
    ASSERT_TRUE(files.SetMode(deck.Dir().Path("real/a.inc"), 0640, error));
    deck.Walk(true);
    const Service::FileStatus untouched = Service::FileStatus::Of(deck.Dir().Path("B.INC"));
    IDeckKeywordsEditor& editor = EditorOf(deck);
    Insert(editor, deck.At("OIL"), "WATER\n");
    editor.Commit();
    EXPECT_EQ(deck.Dir().Read("real/a.inc"), "WATER\n\nOIL\n");
    EXPECT_EQ(files.Status(deck.Dir().Path("link.inc"), false, error).kind, Service::FileStatus::Kind::Link);
    const Service::FileStatus status = Service::FileStatus::Of(deck.Dir().Path("real/a.inc"));
    EXPECT_EQ(status.mode, 0640U);
    if (isPrivileged) {
        EXPECT_EQ(std::pair(status.owner, status.group), std::pair(1234U, 5678U));
    }
    EXPECT_EQ(Service::FileStatus::Of(deck.Dir().Path("B.INC")).inode, untouched.inode);
    // A foreign file of the temporary's name stays: another process may be writing it.
    EXPECT_EQ(deck.Dir().Listing(), "B.INC TOP.DATA link.inc real/ real/a.inc real/a_inc__.tmp");
    EXPECT_EQ(deck.Dir().Read("real/a_inc__.tmp"), "not ours");
    // The file is still one object, whatever it is called by.
    Insert(editor, deck.At("OIL"), "GAS\n");
    const auto again = deck.Manager().GetEditor(&deck.Deck());
    EXPECT_EQ(again, &editor);
    editor.SetDataText(deck.At("INCLUDE"), "'real/a.inc' /");
    EXPECT_EQ(deck.Walk(true), "RUNSPEC INCLUDE WATER GAS OIL INCLUDE GAS");
}

TEST_F(CommitTest, FilesThatAreMissingAreMadeUnlessThatIsOff)
{
    for (const bool prevents : {false, true}) {
        Environment::Instance().SetPreventEmptyFileCreation(prevents);
        const TestDeck deck(TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'sub/NEW.INC' /\nINCLUDE\nFULL.INC /\n"}});
        IDeckKeywordsEditor& editor = EditorOf(deck);
        deck.Walk(true);
        IKeyword* oil = editor.InsertKeywordText(*Environment::Instance().GetSyntaxTable()->FindSyntax("OIL", true),
                                                 deck.File("FULL.INC").End(), "");
        ASSERT_NE(oil, nullptr);
        editor.Commit();
        EXPECT_EQ(deck.Dir().Listing(), prevents ? "FULL.INC TOP.DATA" : "FULL.INC TOP.DATA sub/ sub/NEW.INC");
        EXPECT_EQ(deck.Dir().Read("FULL.INC"), "OIL\n\n");
        EXPECT_EQ(deck.Walk(true), "RUNSPEC INCLUDE INCLUDE OIL");
    }
}

TEST_F(CommitTest, AMissingFileThatNobodyChangedStopsNothing)
{
    // No such folder can be made.
    const TestDeck deck(
        TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'no/NEW.INC' /\nTABDIMS\n1 /\n"}, {"no", "a file"}});
    deck.Walk(true);
    IDeckKeywordsEditor& editor = EditorOf(deck);
    editor.SetDataText(deck.At("TABDIMS"), " 7 /");
    EXPECT_EQ(FailureOf([&] { editor.Commit(); }), "");
    EXPECT_EQ(deck.Dir().Read("TOP.DATA"), "RUNSPEC\nINCLUDE\n'no/NEW.INC' /\nTABDIMS\n 7 /\n");
    EXPECT_TRUE(m_log.Empty());
    // One with keywords is what somebody has asked for.
    const auto* oil = Environment::Instance().GetSyntaxTable()->FindSyntax("OIL", true);
    ASSERT_NE(editor.InsertKeywordText(*oil, deck.File("no/NEW.INC").End(), ""), nullptr);
    EXPECT_EQ(FailureOf([&] { editor.Commit(); }),
              "Fails to commit changes due to insufficient privileges to create/modify:\n" +
                  deck.Dir().Path("no/NEW.INC") + "\n");
    EXPECT_EQ(deck.Dir().Listing(), "TOP.DATA no");
}

TEST_F(CommitTest, ReadsAnewWhereOtherKeywordsCameToLight)
{
    Environment::Instance().EnableSKIPENDSKIP(true, Keywords::SimulatorType::S100);
    const TestDeck deck(TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nOIL\nWATER\nGAS\nGRID\nPROPS\nGRID\nSOLUTION\n"}});
    IDeckKeywordsEditor& editor = EditorOf(deck);
    EXPECT_EQ(deck.Walk(true), "RUNSPEC OIL WATER GAS GRID PROPS SOLUTION");
    Insert(editor, deck.At("WATER"), "SKIP\n");
    Insert(editor, deck.At("GAS"), "ENDSKIP\n");
    editor.Commit();
    EXPECT_EQ(deck.Walk(true), deck.WalkOfDisk());
    editor.RemoveKeyword(deck.At("GRID"));
    editor.Commit();
    EXPECT_EQ(deck.Walk(true), deck.WalkOfDisk());
}

/// A file that is read later takes a section for one that recurs where the deck has it, and only there.
TEST_F(CommitTest, SectionsThatWereMovedAreFoundWhereTheyAre)
{
    const TestDeck deck(TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'A.INC' /\nINCLUDE\n'B.INC' /\nSCHEDULE\n"},
                                        {"A.INC", "GRID\nNOECHO\n"},
                                        {"B.INC", "ECHO\n"}});
    deck.Walk(true);
    IDeckKeywordsEditor& editor = *deck.Manager().GetEditor(&deck.Deck());
    const auto overwrite = [&](const std::string& name, const std::string& text) {
        std::istringstream stream(text);
        editor.OverwriteFile(&deck.File(name), stream, true, false, false);
        EXPECT_EQ(deck.Walk(true), deck.WalkOfDisk());
    };
    ASSERT_TRUE(editor.RemoveKeyword(deck.At("GRID")));
    editor.Commit();
    overwrite("B.INC", "GRID\nECHO\n");
    ASSERT_TRUE(editor.RemoveKeyword(deck.At("GRID")));
    ASSERT_NE(editor.GetOrCreateSection(Keywords::SectionType::GRID, nullptr), nullptr);
    ASSERT_TRUE(editor.MoveKeyword(deck.At("GRID"), deck.At("NOECHO")));
    editor.Commit();
    // To another file, and nothing recurs: no keyword is made anew.
    const IKeyword* const moved = *deck.At("GRID");
    ASSERT_TRUE(editor.MoveKeyword(deck.At("GRID"), deck.At("ECHO")));
    editor.Commit();
    EXPECT_EQ(*deck.At("GRID"), moved);
    ASSERT_TRUE(editor.MoveKeyword(deck.At("GRID"), deck.At("NOECHO")));
    editor.Commit();
    EXPECT_EQ(*deck.At("GRID"), moved);
    overwrite("B.INC", "GRID\nECHO\n");
    EXPECT_EQ(deck.Walk(true), "RUNSPEC INCLUDE GRID NOECHO INCLUDE ECHO SCHEDULE");
}

/// Words are keywords in one section and none in another. Where an edit changes the section, the list says what the
/// text says, and a file that reads alike keeps its keywords.
TEST_F(CommitTest, ReadsAnewWhatReadsOtherwiseInItsNewSection)
{
    struct Case
    {
        const char* what;
        Edit edit;
        std::string walk;
    };
    const auto insert = [](IDeckKeywordsEditor& editor, const KeywordFileIterator& place, const std::string& name) {
        const auto* syntax = Environment::Instance().GetSyntaxTable()->FindSyntax(name, true);
        ASSERT_NE(editor.InsertKeywordText(*syntax, place, ""), nullptr);
    };
    const std::string head = "RUNSPEC GRID INCLUDE ";
    const std::string end = " INCLUDE ECHO PROPS END";
    const std::vector<Case> cases = {
        {"nothing but a value", [](auto& editor, auto& deck) { editor.SetDataText(deck.At("PORO"), " 2 /"); },
         head + "PORO" + end},
        {"a section goes", [](auto& editor, auto& deck) { editor.RemoveKeyword(deck.At("GRID")); },
         "RUNSPEC INCLUDE OIL PORO GAS INCLUDE ECHO WATER PROPS END"},
        {"a section is commented out", [](auto& editor, auto& deck) { editor.CommentOut(deck.At("GRID")); },
         "RUNSPEC INCLUDE OIL PORO GAS INCLUDE ECHO WATER PROPS END"},
        {"a section moves behind the first file",
         [](auto& editor, auto& deck) { editor.MoveKeyword(deck.At("GRID"), deck.At("INCLUDE", 2)); },
         "RUNSPEC INCLUDE OIL PORO GAS GRID INCLUDE ECHO PROPS END"},
        {"the file that follows a section moves ahead of it",
         [](auto& editor, auto& deck) { editor.MoveKeyword(deck.At("INCLUDE"), deck.At("GRID")); },
         "RUNSPEC INCLUDE OIL PORO GAS GRID INCLUDE ECHO PROPS END"},
        {"a section comes into the first file",
         [&](auto& editor, auto& deck) { insert(editor, deck.File("A.INC").End(), "SOLUTION"); },
         head + "PORO SOLUTION" + end},
        {"a keyword comes where it is none",
         [&](auto& editor, auto& deck) { insert(editor, deck.File("A.INC").End(), "METRIC"); }, head + "PORO" + end},
        {"the text behind a keyword comes to stand in another section",
         [](auto& editor, auto& deck) { editor.MoveKeyword(deck.At("PROPS"), deck.At("GRID")); },
         "RUNSPEC PROPS " + head.substr(8) + "PORO INCLUDE ECHO END"},
        {"such text comes ahead of the first keyword",
         [](auto& editor, auto& deck) {
             editor.MoveKeyword(deck.At("END"), deck.At("RUNSPEC"));
             editor.CommentOut(deck.At("END"));
         },
         "WELLDIMS " + head + "PORO INCLUDE ECHO PROPS"},
        {"the text of a file is another",
         [](auto& editor, auto& deck) {
             std::istringstream text("GRID\nRUNSPEC\n");
             editor.RemoveKeyword(deck.At("RUNSPEC"));
             editor.Commit();
             editor.OverwriteFile(&deck.File("A.INC"), text, true, false, false);
         },
         "GRID INCLUDE RUNSPEC INCLUDE ECHO WATER PROPS END"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const TestDeck deck(
            TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nGRID\nINCLUDE\n'A.INC' /\nINCLUDE\n'B.INC' /\nPROPS\n"
                                         "WELLDIMS\n 5 /\nEND\n"},
                            {"A.INC", "OIL\nPORO\n 1 /\nGAS\n"},
                            {"B.INC", "ECHO\nWATER\n"}},
            true, true);
        EXPECT_EQ(deck.Walk(true), head + "PORO" + end);
        const IKeyword* const echo = *deck.At("ECHO");
        c.edit(EditorOf(deck), deck);
        EditorOf(deck).Commit();
        EXPECT_EQ(deck.Walk(true), c.walk);
        EXPECT_EQ(deck.Walk(true), deck.WalkOfDisk());
        // From the cache, too.
        const auto manager = DeckManagerFactory::Create(deck.Dir().Path());
        const IDeckKeywords& cached =
            *manager->ImportDeck("Cached", deck.Dir().Path("TOP.DATA"), false, true, false)->GetDeckKeywords();
        std::string walk;
        for (KeywordIterator place = cached.Begin(); place != cached.PhysicalEnd(); ++place)
            walk += (walk.empty() ? "" : " ") + place->GetName();
        EXPECT_EQ(walk, c.walk);
        const bool readsAlike = c.walk.find("WATER") == std::string::npos;
        EXPECT_EQ(*deck.At("ECHO") == echo, readsAlike);
    }
}

/// As in a reading, a file is not read before something behind its INCLUDE asks for the section.
TEST_F(CommitTest, LeavesUnreadWhatNobodyAsksFor)
{
    const TestDeck deck(TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'A.INC' /\n"}, {"A.INC", "ECHO\n"}});
    ASSERT_NE(Insert(EditorOf(deck), deck.Keywords().Begin(), "OIL\n"), nullptr);
    EditorOf(deck).Commit();
    EXPECT_FALSE(deck.File("A.INC").IsLoaded());
    EXPECT_EQ(deck.Walk(true), deck.WalkOfDisk());
}

/// Where a section recurs, all files are read anew when a section may have changed, once, and else none is.
TEST_F(CommitTest, ReadsAnewOnlyBehindChanges)
{
    const TestDeck deck(TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nGRID\nINCLUDE\n'A.INC' /\nGRID\nPORO\n1 /\nPROPS\n"},
                                        {"A.INC", "ECHO\n"},
                                        {"B.INC", "ECHO\n"}});
    IDeckKeywordsEditor& editor = EditorOf(deck);
    deck.Manager().RefreshDeck("Test");
    const IKeyword* echo = *deck.At("ECHO");
    editor.Discard();
    EXPECT_EQ(*deck.At("ECHO"), echo);
    editor.SetDataText(deck.At("PORO"), " 2 /");
    editor.Commit();
    EXPECT_EQ(*deck.At("ECHO"), echo);
    editor.SetDataText(deck.At("INCLUDE"), "'B.INC' /");
    editor.Discard();
    echo = *deck.At("ECHO");
    editor.Discard();
    EXPECT_EQ(*deck.At("ECHO"), echo);
}

/// A file may be read while an edit has changed its section, and then the edit goes; or a section changes and no list.
TEST_F(CommitTest, FilesAreReadAnewThatWereReadInPassing)
{
    const auto insertGrid = [](IDeckKeywordsEditor& editor, const TestDeck& deck) {
        const IKeyword* grid = Insert(editor, ++deck.Keywords().Begin(), "GRID\n");
        EXPECT_EQ(deck.Walk(true), "RUNSPEC GRID INCLUDE INCLUDE ECHO");
        return deck.TopFile().Find(grid);
    };
    const std::vector<Edit> edits = {
        [&](auto& editor, auto& deck) {
            insertGrid(editor, deck);
            editor.Discard();
        },
        [&](auto& editor, auto& deck) {
            editor.RemoveKeyword(insertGrid(editor, deck));
            editor.Commit();
        },
        [](auto& editor, auto& deck) {
            EXPECT_EQ(deck.Walk(true), "RUNSPEC INCLUDE INCLUDE ECHO WATER");
            editor.SetDataText(deck.At("INCLUDE"), "'GRID.INC' /");
            editor.Commit();
        },
        // Another deck has changed a file that both share.
        [](auto& editor, auto& deck) {
            editor.SetDataText(deck.At("INCLUDE"), "'EMPTY.INC' /");
            editor.Commit();
            EXPECT_EQ(deck.Walk(true), "RUNSPEC INCLUDE INCLUDE ECHO WATER");
            IDeck* other = deck.Manager().ImportDeck("Other", deck.Dir().Path("EMPTY.INC"), false, true, false);
            IDeckKeywordsEditor& otherEditor = *deck.Manager().GetEditor(other);
            Insert(otherEditor, other->GetDeckKeywords()->Begin(), "GRID\n");
            otherEditor.Commit();
            EditorOf(deck).Commit();
        },
    };
    for (std::size_t i = 0; i < edits.size(); ++i) {
        SCOPED_TRACE(i);
        const TestDeck deck(TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'.' /\nINCLUDE\n'B.INC' /\n"},
                                            {"B.INC", "ECHO\nWATER\n"},
                                            {"GRID.INC", "GRID\n"},
                                            {"EMPTY.INC", "-- none\n"}});
        edits[i](EditorOf(deck), deck);
        EXPECT_EQ(deck.Walk(true), deck.WalkOfDisk());
    }
}

/// Such a file may be asked where it ends before it is read to its end.
TEST_F(CommitTest, AFileThatIsIncludedTwiceEndsInItsNewSection)
{
    const TestDeck deck(
        TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'A.INC' /\nINCLUDE\n'A.INC' /\nOIL\n"}, {"A.INC", "NOECHO\n"}});
    deck.Walk(true);
    std::istringstream text("GRID\nECHO\n");
    EditorOf(deck).OverwriteFile(&deck.File("A.INC"), text, true, false, false);
    EXPECT_EQ(deck.Walk(true), "RUNSPEC INCLUDE GRID ECHO INCLUDE GRID ECHO");
}

/// Files that no look at the deck had read before the commit may bring a section ahead of the one that counted.
TEST_F(CommitTest, ASectionMayComeWithAFileOfANewFile)
{
    const TestDeck deck(TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'A.INC' /\nGRID\nECHO\n"},
                                        {"A.INC", "NOECHO\n"},
                                        {"X.INC", "INCLUDE\n'Y.INC' /\nNOECHO\n"},
                                        {"Y.INC", "GRID\nECHO\n"}});
    EXPECT_EQ(deck.Walk(true), "RUNSPEC INCLUDE NOECHO GRID ECHO");
    EditorOf(deck).SetDataText(deck.At("INCLUDE"), "'X.INC' /");
    EditorOf(deck).Commit();
    EXPECT_EQ(deck.Walk(true), deck.WalkOfDisk());
}

/// Whoever hears of a failure may count on the old texts.
TEST_F(CommitTest, FailsOnlyWhereNothingIsWritten)
{
    using Call = TestSupport::FailingFileSystem::Call;
    bool hasFailed = true;
    for (int n = 1; hasFailed; ++n) {
        SCOPED_TRACE(n);
        const TestDeck deck(
            TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nGRID\nINCLUDE\n'A.INC' /\n"}, {"A.INC", "ECHO\nGAS\n"}});
        deck.Walk(true);
        ASSERT_TRUE(EditorOf(deck).RemoveKeyword(deck.At("GRID")));
        TestSupport::FailingFileSystem disk;
        disk.FailAt(n, {Call::Open, Call::Status}, EACCES, true);
        const bool isRefused = !FailureOf([&] { EditorOf(deck).Commit(); }).empty();
        hasFailed = disk.HasFailed();
        disk.Pass();
        EXPECT_EQ(isRefused, deck.Dir().Read("TOP.DATA").find("GRID") != std::string::npos);
    }
}

/// What was edited in a file that no INCLUDE names any more waits for its place, also where the file that named it is
/// read anew meanwhile.
TEST_F(CommitTest, AFormerFileIsNotForgottenWhereACommitFails)
{
    using Call = TestSupport::FailingFileSystem::Call;
    int waited = 0;
    bool fails = true;
    for (int n = 1; fails; ++n) {
        SCOPED_TRACE(n);
        const TestDeck deck(TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'P.INC' /\nGRID\n"},
                                            {"P.INC", "INCLUDE\n'A.INC' /\nOIL\n"},
                                            {"A.INC", "TABDIMS\n1 /\n"},
                                            {"B.INC", "ECHO\n"}});
        deck.Walk(true);
        IDeckKeywordsEditor& editor = EditorOf(deck);
        const std::shared_ptr<KeywordFile> former = deck.File("A.INC").shared_from_this();
        editor.SetDataText(deck.At("TABDIMS"), " 7 /");
        editor.SetDataText(deck.At("INCLUDE", 2), "'B.INC' /");
        ASSERT_TRUE(editor.MoveKeyword(deck.At("GRID"), deck.At("INCLUDE")));
        {
            TestSupport::FailingFileSystem disk;
            disk.FailAt(n, {Call::Rename, Call::Write, Call::CopyRange}, EIO, true);
            fails = !FailureOf([&] { editor.Commit(); }).empty();
        }
        const bool isReadAnew = deck.Walk(true) == "RUNSPEC GRID INCLUDE INCLUDE ECHO";
        if (isReadAnew && deck.Dir().Read("A.INC") == "TABDIMS\n1 /\n") ++waited;
        editor.Commit();
        EXPECT_EQ(deck.Walk(true), "RUNSPEC GRID INCLUDE INCLUDE ECHO");
        EXPECT_EQ(deck.Dir().Read("A.INC"), "TABDIMS\n 7 /\n");
        EXPECT_EQ(deck.Dir().Listing(), "A.INC B.INC P.INC TOP.DATA");
    }
    EXPECT_GT(waited, 0);
}

TEST_F(CommitTest, OneFileGoesAhead)
{
    const TestDeck deck(TestDeck::Texts{{"TOP.DATA", topText}, {"A.INC", "-- head\nWELLDIMS\n5 /\n-- end\n"}});
    deck.Walk(true);
    IDeckKeywordsEditor& editor = EditorOf(deck);
    KeywordFile& file = deck.File("A.INC");
    const auto append = [&](const std::string& text) {
        const auto* syntax =
            Environment::Instance().GetSyntaxTable()->FindSyntax(text.substr(0, text.find('\n')), true);
        ASSERT_NE(editor.InsertKeywordText(*syntax, file.End(), text), nullptr);
    };
    append("TABDIMS\n 1 /\n");
    editor.CommitFile(&file);
    // It stands beside, without the end of the file; nothing holds the data any more.
    EXPECT_EQ(deck.Dir().Read("A.INC"), "-- head\nWELLDIMS\n5 /\n-- end\n");
    EXPECT_EQ(deck.Dir().Read("A_INC__.tmp"), "-- head\nWELLDIMS\n5 /\nTABDIMS\n 1 /\n");
    EXPECT_TRUE(file.IsModified());
    EXPECT_EQ(*deck.Keywords().GetDataText(*deck.At("TABDIMS", 2)), " 1 /");
    append("EQLDIMS\n 2 /\n");
    editor.CommitFile(&file);
    EXPECT_EQ(deck.Dir().Read("A_INC__.tmp"), "-- head\nWELLDIMS\n5 /\nTABDIMS\n 1 /\nEQLDIMS\n 2 /\n");
    // What is exported meanwhile has it all.
    EXPECT_TRUE(deck.Keywords().ExportToDirectory(deck.Dir().Path("copy"), Keywords::SimulatorType::Any, false));
    EXPECT_EQ(deck.Dir().Read("copy/A.INC"), "-- head\nWELLDIMS\n5 /\nTABDIMS\n 1 /\nEQLDIMS\n 2 /\n-- end\n");
    EXPECT_EQ(m_log.Count(), 0);

    // What was written is changed: it is written once more, and said so.
    editor.SetDataText(deck.At("TABDIMS", 2), " 9 /");
    editor.Commit();
    EXPECT_EQ(deck.Dir().Read("A.INC"), "-- head\nWELLDIMS\n5 /\nTABDIMS\n 9 /\nEQLDIMS\n 2 /\n-- end\n");
    EXPECT_EQ(m_log.Texts(2),
              std::vector<std::string>{"File that was written in partial commit has been changed: A.INC. "
                                       "This will cause the file to be re-written."});
    EXPECT_FALSE(deck.Dir().Exists("A_INC__.tmp"));

    // A cancel goes back to the file.
    append("DIMENS\n 3 /\n");
    editor.CommitFile(&file);
    append("WATER\n");
    editor.Discard();
    EXPECT_FALSE(deck.Dir().Exists("A_INC__.tmp"));
    EXPECT_EQ(deck.Walk(true), deck.WalkOfDisk());
    EXPECT_FALSE(deck.File("A.INC").IsModified());
}

TEST_F(CommitTest, AFileThatHasGoneAheadIsRenamed)
{
    const TestDeck deck(
        TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'A.INC' /\n"}, {"A.INC", "EQLDIMS\n2 /\n-- end\n"}});
    deck.Walk(true);
    IDeckKeywordsEditor& editor = EditorOf(deck);
    KeywordFile& file = deck.File("A.INC");
    editor.SetDataText(deck.At("EQLDIMS"), " 3 /");
    editor.CommitFile(&file);
    EXPECT_TRUE(editor.ApplyFileRenames({{FileName("A.INC"), FileName("B.INC")}}, false));
    EXPECT_EQ(deck.Dir().Read("TOP.DATA"), "RUNSPEC\nINCLUDE\n'B.INC' /\n");
    EXPECT_EQ(deck.Dir().Read("B.INC"), "EQLDIMS\n 3 /\n-- end\n");
    EXPECT_EQ(deck.Dir().Listing(), "B.INC TOP.DATA");
}

TEST_F(CommitTest, AFileIsOverwritten)
{
    const TestDeck deck(
        TestDeck::Texts{{"TOP.DATA", topText}, {"A.INC", "-- Generated\nOIL\n"}, {"B.INC", "-- Generated\nGAS\n"}});
    deck.Walk(true);
    IDeckKeywordsEditor& editor = EditorOf(deck);
    KeywordFile& file = deck.File("A.INC");
    editor.SetDataText(deck.At("TABDIMS"), " 7 /");
    editor.OverwriteFileFromPath(&file, deck.Dir().Path("none"), true, false);
    EXPECT_EQ(deck.Dir().Read("TOP.DATA"), topText);
    editor.OverwriteFileFromPath(&file, deck.Dir().Path("B.INC"), true, false);
    EXPECT_NE(deck.Dir().Read("TOP.DATA"), topText);
    EXPECT_EQ(deck.Dir().Read("A.INC"), "-- Generated\nGAS\n");
    EXPECT_EQ(deck.Walk(true), "RUNSPEC TABDIMS DIMENS INCLUDE GAS");

    editor.SetDataText(deck.At("TABDIMS"), " 8 /");
    std::istringstream text("-- Generated\r\n\r\nWATER\r\n");
    editor.OverwriteFile(&file, text, true, false, true);
    EXPECT_EQ(deck.Dir().Read("A.INC"), "-- Generated\r\n\r\nWATER\r\n");
    EXPECT_EQ(*deck.Keywords().GetDataText(*deck.At("TABDIMS")), " 7 /\n\n-- above DIMENS");
    std::istringstream other("-- Generated\nOIL\n");
    deck.File("A.INC").SetReadOnly();
    editor.OverwriteFile(&deck.TopFile(), other, false, false, false);
    EXPECT_EQ(deck.Walk(true), "RUNSPEC TABDIMS DIMENS INCLUDE WATER");
    EXPECT_EQ(deck.Dir().Listing(), "A.INC B.INC TOP.DATA");
}

TEST_F(CommitTest, FilesAreRenamed)
{
    const TestDeck deck(
        TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'sub/A.INC' / one\nINCLUDE\n'sub/B.INC' /\nGRID\nGDFILE\n"
                                     "'grids/CASE' /\nINCLUDE\n'sub/A.INC' /\n"},
                        {"sub/A.INC", "OIL\n"},
                        {"sub/B.INC", "WATER\n"},
                        {"grids/CASE.EGRID", "e"},
                        {"grids/CASE.GRID", "g"},
                        {"sub/C.INC", "in the way"}});
    deck.Walk(true);
    IDeckKeywordsEditor& editor = EditorOf(deck);
    using Names = std::map<FileName, FileName>;
    const auto name = [](const char* leaf) { return FileName(leaf); };
    EXPECT_FALSE(editor.ApplyFileRenames({{name("NONE"), name("X")}, {name("TOP.DATA"), name("TOP.DATA")}}, false));
    EXPECT_TRUE(editor.ApplyFileRenames({{name("A.INC"), name("A.INC")}}, false));
    // What can't be done leaves all as it is.
    EXPECT_EQ(FailureOf([&] {
                  editor.ApplyFileRenames(Names{{name("A.INC"), name("C.INC")}, {name("B.INC"), name("C.INC")}}, false);
              }),
              "The file " + deck.Dir().Path("sub/B.INC") + " cannot be renamed to " + deck.Dir().Path("sub/C.INC") +
                  ": another file takes that name.");
    EXPECT_EQ(FailureOf([&] {
                  editor.ApplyFileRenames(Names{{name("A.INC"), name("B.INC")}}, false);
              }),
              "The file " + deck.Dir().Path("sub/A.INC") + " cannot be renamed to " + deck.Dir().Path("sub/B.INC") +
                  ": it is a file of the deck.");
    EXPECT_EQ(FailureOf([&] {
                  editor.ApplyFileRenames(Names{{name("A.INC"), name("it's.INC")}}, false);
              }),
              "The file sub/A.INC cannot be renamed to it's.INC: no INCLUDE can hold that name.");
    EXPECT_EQ(deck.Dir().Listing(),
              "TOP.DATA grids/ grids/CASE.EGRID grids/CASE.GRID sub/ sub/A.INC sub/B.INC sub/C.INC");

    // Two exchange their names, one replaces a stranger, and grid files go by their keyword.
    EXPECT_TRUE(editor.ApplyFileRenames(Names{{name("A.INC"), name("B.INC")}, {name("B.INC"), name("A.INC")}}, false));
    EXPECT_EQ(deck.Dir().Read("sub/A.INC") + deck.Dir().Read("sub/B.INC"), "WATER\nOIL\n");
    EXPECT_TRUE(editor.ApplyFileRenames(Names{{name("A.INC"), name("C.INC")},
                                              {name("CASE.EGRID"), name("NEW.EGRID")},
                                              {name("CASE.GRID"), name("NEW.GRID")},
                                              {name("TOP.DATA"), name("MAIN.DATA")}},
                                        false));
    EXPECT_EQ(deck.Dir().Listing(), "MAIN.DATA grids/ grids/NEW.EGRID grids/NEW.GRID sub/ sub/B.INC sub/C.INC");
    EXPECT_EQ(deck.Dir().Read("MAIN.DATA"),
              "RUNSPEC\nINCLUDE\n'sub/B.INC' / one\nINCLUDE\n'sub/C.INC' /\nGRID\nGDFILE\n"
              "'grids/NEW' /\nINCLUDE\n'sub/B.INC' /\n");
    EXPECT_EQ(deck.Walk(true), "RUNSPEC INCLUDE OIL INCLUDE WATER GRID GDFILE INCLUDE OIL");
    EXPECT_EQ(deck.Walk(true), deck.WalkOfDisk());
}

} // namespace
