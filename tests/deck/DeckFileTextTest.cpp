#include "deck/DiskOrder.h"
#include "tests/support/DeckTest.h"
#include "text/LineStringReader.h"
#include <tarn/keywords/SimulatorType.h>

// What the view of a deck reads straight from its files: data lines, and the comment above a keyword.

namespace {

using namespace DeckTests;

class DeckFileTextTest : public testing::Test
{
protected:
    static std::string CommentAbove(const TestDeck& deck, const std::string& name, int n = 1, bool stripHeader = false)
    {
        return deck.Keywords().GetComment(deck.At(name, n), stripHeader);
    }

    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
};

TEST_F(DeckFileTextTest, DataLines)
{
    struct Case
    {
        const char* what;
        std::string text;
        long long begin;
        long long limit;
        bool stopAtTag;
        const char* read;
        bool tagSeen;
        long long behind;
    };
    const std::string tagged = "1 /\n-- Generated\n2 /\n-- c\n";
    const std::string untagged = "-- a\n\n  1 2\n-- b\n\n3 / -- c\n-- d\n\nOIL\n";
    const std::vector<Case> cases = {
        {"nothing", "", 0, 10, false, "", false, 0},
        {"the limit is passed", "1 /\n", 4, 4, false, "", false, 4},
        {"comments only", "-- a\n\n", 0, 6, false, "", false, 0},
        {"from the first data line through the last", untagged, 0, 29, false, "  1 2\n-- b\n\n3 / -- c", false, 27},
        {"the limit cuts the terminated line off", untagged, 0, 22, false, "  1 2", false, 12},
        {"the limit cuts all lines off", untagged, 0, 11, false, "", false, 0},
        {"none is terminated", "1 2\n3 4\n5 6\n", 0, 12, false, "1 2", false, 4},
        {"a comment's terminator is none", "1 2\n-- /\n3 4\n", 0, 13, false, "1 2", false, 4},
        {"quotes", "'a/b' 2\n'c' /\n'd/\n", 0, 18, false, "'a/b' 2\n'c' /", false, 14},
        {"no line end", "1 2\n3 /", 0, 7, false, "1 2\n3 /", false, 7},
        {"a limit behind the text", "1 2\n3 /  \n", 0, 99, false, "1 2\n3 /", false, 10},
        {"CR LF", "1 2\r\n3 /\r\n", 0, 10, false, "1 2\n3 /", false, 10},
        {"suppressed lines", "--@@@1 2\n--@@@-- c\n--@@@/\n", 0, 26, false, "1 2\n-- c\n/", false, 26},
        {"from the middle", "OIL\n1 /\n2 /\n", 8, 12, false, "2 /", false, 12},
        {"a tag", tagged, 0, 26, false, "1 /\n-- Generated\n2 /", true, 21},
        {"up to a tag", tagged, 0, 26, true, "1 /", true, 21},
        {"a tag behind data", "1 / -- Generated\n2 /\n", 0, 21, true, "", true, 21},
        {"a tag behind the end", "1 /\n-- Generated\n", 0, 17, true, "1 /", false, 4},
        {"a limit on the tag's line", tagged, 0, 10, true, "1 /", false, 4},
    };
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "OIL\n"}});
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        LineStringReader reader(test.text);
        reader.Seek(test.begin, 0);
        bool tagSeen = !test.tagSeen;
        EXPECT_EQ(deck.Keywords().ReadDataText(reader, test.limit, &tagSeen, test.stopAtTag), test.read);
        EXPECT_EQ(tagSeen, test.tagSeen);
        EXPECT_EQ(reader.Tell(), test.behind);
        reader.Seek(test.begin, 0);
        EXPECT_EQ(deck.Keywords().ReadDataText(reader, test.limit, nullptr, test.stopAtTag), test.read);
    }
}

TEST_F(DeckFileTextTest, TheCommentAboveAKeyword)
{
    struct Case
    {
        const char* what;
        std::string ahead; ///< of the keyword GAS
        const char* comment;
    };
    const std::string python = "PYINPUT\n-- python\nprint('/')\n";
    const Case cases[] = {
        {"the file's first", "-- a\n--b  \n\n", "-- a\n--b\n\n"},
        {"none", "OIL\n", ""},
        {"behind data", "DIMENS\n1 2 3 /\n\n \n-- a\n\n\n--b\n", "-- a\n\n\n--b\n"},
        {"inner blank lines with an indent", "DIMENS\n1 2 3 /\n  -- a\n  \n\t-- b\n", "-- a\n\n-- b\n"},
        {"no comment of the data", "DIMENS\n-- a\n1 2 -- b\n-- c\n3 / -- d\n-- e\n", "-- e\n"},
        {"no keyword comment", "OIL\n-- a\n-- b\n\n-- c\n", "-- c\n"},
        {"straight behind a keyword without data", "OIL\n\n-- c\n", "-- c\n"},
        {"an indented comment is no keyword comment", "OIL\n  -- c\n", "-- c\n"},
        {"a tag line and a keyword comment", "OIL\n-- Generated\n-- a\n\n-- c\n", "-- c\n"},
        {"a tag line", "OIL\n-- Generated\n", ""},
        {"other text", "DIMENS\n1 2 3 /\nsome words\n-- c\n 1 2\n", "-- c\n"},
        {"unknown keyword with data", "DIMENS\n1 2 3 /\nNOWORD\n4 /\n-- c\n", "-- c\n"},
        {"an unterminated record", "DIMENS\n1 2\n-- a\n3\n-- c\n", "-- a\n-- c\n"},
        {"data that never come", "DIMENS\n-- c\n\n-- d\n", "-- d\n"},
        {"suppressed", "--@@@DIMENS\n--@@@1 2\n--@@@3 /\n-- c\n--@@@-- d\n", "-- c\n-- d\n"},
        {"a title", "TITLE\nA title\n-- c\n", "-- c\n"},
        {"a title like a comment", "TITLE\n-- Generated\n-- a title\n-- c\n", "-- c\n"},
        {"a blank title", "TITLE\n\n-- c\n", "-- c\n"},
        {"raw text", python + "-- ' / '\nPYEND\n-- c\n", "-- c\n"},
        {"text that goes on to the next keyword", "SKIPZR\n1 2 3\n-- c\n", ""},
        {"tag lines", "OIL\n\n-- Generated\n--!!! Program generated\n\n-- c\n-- Generated too\n", "-- c\n"},
        {"CR LF", "OIL\r\n\r\n-- c\r\n\r\n", "-- c\n\n"},
        {"a byte order mark", "\xEF\xBB\xBF", ""},
        {"a byte order mark and a comment", "\xEF\xBB\xBF-- c\n", "-- c\n"},
        {"a repeated section keyword", "RUNSPEC\n-- a\nRUNSPEC\n\n-- c\n", "-- c\n"},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        const TestDeck deck(TestDeck::Texts{{"A.DATA", test.ahead + "GAS\n"}});
        EXPECT_EQ(CommentAbove(deck, "GAS"), test.comment);
        EXPECT_EQ(CommentAbove(deck, "GAS", 1, true), test.comment);
        EXPECT_FALSE(m_log.Contains("A problem was encountered"));
    }
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "-- c\n"}});
    EXPECT_EQ(deck.Keywords().GetComment(deck.Keywords().Begin(), false), "");
}

TEST_F(DeckFileTextTest, TheHeaderOfAFile)
{
    const std::string block = "-- Generated [\n-- made by hand\n\n-- Generated ]\n";
    struct Case
    {
        const char* what;
        std::string text;
        std::string comment;
        std::string stripped;
    };
    const std::vector<Case> cases = {
        {"a comment of its own", block + "\n\n-- c\n\nGAS\n", block + "\n\n-- c\n\n", "-- c\n\n"},
        {"none", block + "\nGAS\n", block + "\n", ""},
        {"text ahead of it", "-- a\n\n" + block + "-- c\nGAS\n", "-- a\n\n" + block + "-- c\n", "-- a\n\n-- c\n"},
        {"the file's tag ahead of it", "-- Generated\n" + block + "GAS\n", block, ""},
        {"no end", "-- Generated [\n-- a\nGAS\n", "-- Generated [\n-- a\n", ""},
        {"no beginning", "-- a\n-- Generated ]\n\n-- c\nGAS\n", "-- a\n-- Generated ]\n\n-- c\n",
         "-- a\n-- Generated ]\n\n-- c\n"},
        {"above the second keyword", "DIMENS\n1 2 3 /\n" + block + "-- c\nGAS\n", block + "-- c\n", "-- c\n"},
        {"above the third one", "OIL\nDIMENS\n1 2 3 /\n\n" + block + "-- c\nGAS\n", block + "-- c\n", block + "-- c\n"},
    };
    for (const std::string& tag : {std::string(), std::string("X")}) {
        Environment::Instance().SetCustomFileGeneratedTag(tag);
        for (const Case& test : cases) {
            SCOPED_TRACE(test.what + tag);
            if (!tag.empty() && test.text.starts_with("-- Generated\n")) continue;
            const TestDeck deck(TestDeck::Texts{{"A.DATA", test.text}});
            EXPECT_EQ(CommentAbove(deck, "GAS"), test.comment);
            EXPECT_EQ(CommentAbove(deck, "GAS", 1, true), test.stripped);
        }
    }
}

TEST_F(DeckFileTextTest, CommentsInADeckOfSeveralFiles)
{
    const TestDeck deck({{"A.DATA", "RUNSPEC\n\n-- of the include\nINCLUDE\n'b.inc' /\n-- of gas\nGAS\n\n-- of b\n"
                                    "INCLUDE\n'b.inc' /\n"},
                         {"b.inc", "-- at the top\nOIL\n\n-- of water\nWATER\n-- the end\n"}});
    EXPECT_EQ(CommentAbove(deck, "RUNSPEC"), "");
    EXPECT_EQ(CommentAbove(deck, "INCLUDE"), "-- of the include\n");
    EXPECT_EQ(CommentAbove(deck, "GAS"), "-- of gas\n");
    EXPECT_EQ(CommentAbove(deck, "INCLUDE", 2), "-- of b\n");
    for (const int n : {1, 2}) {
        EXPECT_EQ(CommentAbove(deck, "OIL", n), "-- at the top\n");
        EXPECT_EQ(CommentAbove(deck, "WATER", n), "-- of water\n");
    }
    // What an edit has made of the comment of the keyword ahead isn't on the disk.
    static_cast<Keyword&>(const_cast<IKeyword&>(**deck.At("OIL"))).SetComment("one\ntwo\nthree");
    EXPECT_EQ(CommentAbove(deck, "WATER"), "-- of water\n");
    EXPECT_TRUE(m_log.Empty());
}

TEST_F(DeckFileTextTest, KeywordsOfASkippedRegion)
{
    Environment::Instance().EnableSKIPENDSKIP(true, Keywords::SimulatorType::Any);
    const std::string region = "-- a\nSKIP\n-- b\nGAS\n-- c\nENDSKIP\n";
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\n" + region + "-- d\nOIL\n\n-- e\nWATER\n"}});
    EXPECT_EQ(deck.Walk(), "RUNSPEC SKIP ENDSKIP OIL WATER");
    // They are no text of their own: the comments between the two that are belong to the second.
    EXPECT_EQ(CommentAbove(deck, "SKIP"), "");
    EXPECT_EQ(CommentAbove(deck, "ENDSKIP"), "");
    EXPECT_EQ(CommentAbove(deck, "OIL"), "-- b\n-- c\n-- d\n");
    EXPECT_EQ(CommentAbove(deck, "WATER"), "-- e\n");
}

TEST_F(DeckFileTextTest, FilesThatWentAwayOrShrank)
{
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\n-- a\nOIL\nDIMENS\n1 2 3 /\n-- b\nGAS\n"}});
    const std::string problem = "A problem was encountered when parsing the comment above the keyword GAS";
    const KeywordIterator gas = deck.At("GAS");
    EXPECT_EQ(deck.Keywords().GetComment(gas, true), "-- b\n");

    deck.Dir().Write("A.DATA", "RUNSPEC\n-- a\nOIL\nDIMENS\n1 2 3 /\n-- shorter\n-- but here\nGAS\n");
    EXPECT_EQ(deck.Keywords().GetComment(gas, true), "");
    EXPECT_EQ(m_log.Texts(2), (std::vector<std::string>{problem}));
    deck.Dir().Write("A.DATA", "RUNSPEC\n");
    EXPECT_EQ(deck.Keywords().GetComment(gas, true), "");
    std::filesystem::remove(deck.Dir().Path("A.DATA"));
    EXPECT_EQ(deck.Keywords().GetComment(gas, true), "");
    EXPECT_EQ(m_log.Texts(2), (std::vector<std::string>{problem, problem, problem}));
    EXPECT_EQ(m_log.Messages().front().file, deck.Dir().Path("A.DATA"));
    EXPECT_EQ(m_log.Messages().front().line, 7);
}

TEST_F(DeckFileTextTest, WhatStandsAheadOnTheDisk)
{
    Environment::Instance().EnableSKIPENDSKIP(true, Keywords::SimulatorType::Any);
    const TestDeck deck({{"A.DATA", "RUNSPEC\nSKIP\nOIL\nENDSKIP\nGAS\nINCLUDE\n'b.inc' /\nMETRIC\n"},
                         {"b.inc", "SKIP\nENDSKIP\nWATER\nDISGAS\n"}});
    deck.Walk();
    const DiskOrder order({&deck.TopFile(), &deck.File("b.inc")});
    const auto ahead = [&](const char* name) {
        const Keyword* keyword = order.Ahead(static_cast<const Keyword&>(**deck.At(name)));
        return keyword != nullptr ? keyword->GetName() : "-";
    };
    EXPECT_EQ(ahead("RUNSPEC"), "-");
    EXPECT_EQ(ahead("GAS"), "RUNSPEC");
    EXPECT_EQ(ahead("INCLUDE"), "GAS");
    EXPECT_EQ(ahead("METRIC"), "INCLUDE");
    EXPECT_EQ(ahead("WATER"), "-");
    EXPECT_EQ(ahead("DISGAS"), "WATER");
    EXPECT_EQ(DiskOrder({}).Ahead(static_cast<const Keyword&>(**deck.At("GAS"))), nullptr);
}

/// Removed keywords stay in that order until the commit, and no longer.
TEST_F(DeckFileTextTest, ACommitChangesWhatStandsAheadOnTheDisk)
{
    Environment::Instance().EnableSKIPENDSKIP(true, Keywords::SimulatorType::Any);
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\nOIL\nDISGAS\nWATER\nSKIP\nx\nENDSKIP\n\n-- g\nGAS\n"}});
    LineEnds::SetPolicy(LineEnds::Policy::Keep);
    IDeckKeywordsEditor& editor = *deck.Manager().GetEditor(&deck.Deck());
    for (const char* name : {"OIL", "DISGAS", "WATER"}) {
        const KeywordFileIterator place = deck.Keywords().GetFileIterator(deck.At(name));
        EXPECT_TRUE(editor.RemoveKeyword(place));
        EXPECT_EQ(CommentAbove(deck, "GAS"), "-- g\n");
    }
    editor.Commit();
    EXPECT_EQ(deck.Dir().Read("A.DATA"), "RUNSPEC\nSKIP\nx\nENDSKIP\n\n-- g\nGAS\n");
    EXPECT_EQ(CommentAbove(deck, "GAS"), "-- g\n");
}

} // namespace
