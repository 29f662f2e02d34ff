#include <cstdio>

#include <rapidcheck/gtest.h>

#include "files/FileTagState.h"
#include "files/KeywordFactory.h"
#include "keywords/ForceRewrite.h"
#include "keywords/ITagMgr.h"
#include "tests/keywords/DataReading.h"
#include "tests/support/DeckTest.h"
#include "text/LineFileWriter.h"
#include "text/LineStringWriter.h"
#include <deckmanager/KeywordText.h>

// What a keyword takes as new data, and what it writes.

namespace {

using namespace DeckTests;

Keyword& At(const TestDeck& deck, const std::string& name)
{
    return static_cast<Keyword&>(const_cast<IKeyword&>(**deck.At(name)));
}

/// The deck that all cases begin with: the text under test behind one keyword.
TestDeck DeckOf(const std::string& text)
{
    return TestDeck(TestDeck::Texts{{"A.DATA", "RUNSPEC\n" + text}});
}

/// What a file holds into which all keywords of the deck are written, by the policy in force.
std::string Written(const TestDeck& deck)
{
    LineFileWriter writer;
    EXPECT_TRUE(writer.Open(deck.Dir().Path("out"), false));
    writer.SetLeavesLastLineOpen(true);
    for (KeywordFileIterator place = deck.TopFile().Begin(); place != deck.TopFile().End(); ++place)
        static_cast<const Keyword&>(**place).Write(writer, Context(), SimulatorType::Any);
    EXPECT_TRUE(writer.Close());
    return deck.Dir().Read("out");
}

/// Behind the keyword that all cases have first.
std::string WrittenBehindFirst(const TestDeck& deck)
{
    std::string text = Written(deck);
    EXPECT_TRUE(text.starts_with("RUNSPEC\n")) << text;
    return text.substr(text.find('\n') + 1);
}

/// Sets the first item of the keyword's record, or of its list's first record, through the tree.
void SetFirstItem(Keyword& keyword, int value)
{
    std::unique_ptr<Keywords::IKeywordData> data = keyword.GetAndResetData(Context());
    Keywords::IKeywordData* record = data.get();
    if (record->GetType() == Keywords::MDType::List)
        record = &static_cast<Keywords::IKeywordListData*>(record)->GetContainer(0);
    static_cast<Keywords::IKeywordRecordData*>(record)->GetItem(0).SetInteger(value);
    EXPECT_TRUE(keyword.SetData(std::move(data), false));
    EXPECT_EQ(data, nullptr);
}

class KeywordWritingTest : public testing::Test
{
protected:
    KeywordWritingTest() { LineEnds::SetPolicy(LineEnds::Policy::Keep); }

    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
};

const std::string tag = std::string(31, ' ') + "-- Generated"; // behind a name of six letters

std::function<void(Keyword&)> SetText(const std::string& text)
{
    return [text](Keyword& k) { EXPECT_TRUE(k.SetDataText(text, false)); };
}

/// One edit of the keyword DIMENS (or that of another name), and what stands in the file afterwards.
struct Case
{
    const char* what;
    std::string text;
    std::function<void(Keyword&)> edit;
    std::string expected;
    const char* keyword = "DIMENS";
};

void Check(const std::vector<Case>& cases)
{
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        const TestDeck deck = DeckOf(test.text);
        test.edit(At(deck, test.keyword));
        EXPECT_EQ(WrittenBehindFirst(deck), test.expected);
        // What a deck shows of a keyword is what it writes.
        std::string shown;
        for (KeywordFileIterator place = deck.TopFile().Begin(); place != deck.TopFile().End(); ++place)
            shown += *place->GetText();
        std::string written = "RUNSPEC\n" + test.expected;
        if (written.back() != '\n') written += '\n';
        EXPECT_EQ(shown, written);
    }
}

TEST_F(KeywordWritingTest, WhatHasNotChangedIsCopied)
{
    const auto none = [](Keyword&) {};
    Check({
        {"layout", "  \n-- x\nDIMENS\n\n 1\t2 3/ rest\n\n--y\nOIL", none,
         "  \n-- x\nDIMENS\n\n 1\t2 3/ rest\n\n--y\nOIL"},
        {"a suppressed keyword is not marked again", "--@@@DIMENS\n--@@@1 2 3 /\n 4\nOIL\n", none,
         "--@@@DIMENS\n--@@@1 2 3 /\n 4\nOIL\n"},
        {"suppression there and back", "--@@@DIMENS\n--@@@1 2 3 /\n",
         [](Keyword& k) {
             k.SetSuppressed(false);
             k.SetSuppressed(true);
             EXPECT_TRUE(k.IsDirty());
         },
         "--@@@DIMENS\n--@@@1 2 3 /\n"},
        {"text that was merely read", "DIMENS\n  1 2 3 /\n\nOIL\n", [](Keyword& k) { k.GetDataText(); },
         "DIMENS\n  1 2 3 /\n\nOIL\n"},
        {"a tree that was merely read", "DIMENS\n  1 2 3 /\n\nOIL\n", [](Keyword& k) { k.GetData(Context()); },
         "DIMENS\n  1 2 3 /\n\nOIL\n"},
        {"a leading comment leaves the keyword alone", "dimens\n  1 2 3 /\nOIL\n",
         [](Keyword& k) { k.SetLeadingComment("so\n", false); }, "--so\ndimens\n  1 2 3 /\nOIL\n"},
    });
}

TEST_F(KeywordWritingTest, NewDataReplaceWhatTheirReaderTook)
{
    const auto tree = [](Keyword& k) { SetFirstItem(k, 9); };
    const auto text = SetText("  9 2\n3 /\n");
    Check({
        {"tree", "DIMENS\n 1 2 3 /\nOIL\n", tree, "DIMENS\n  9 2 3 /\nOIL\n"},
        {"text, with the indent of its first line", "DIMENS\n 1 2 3 /\nOIL\n", text, "DIMENS\n  9 2\n3 /\nOIL\n"},
        {"the block stays", "DIMENS\n 1 2 3 /\n\n -- a\t\n\n--b\nOIL\n", tree,
         "DIMENS\n  9 2 3 /\n\n -- a\t\n\n--b\nOIL\n"},
        {"the block stays behind text", "DIMENS\n 1 2 3 /\n\n -- a\t\n\n--b\nOIL\n", text,
         "DIMENS\n  9 2\n3 /\n\n -- a\t\n\n--b\nOIL\n"},
        {"the block at the end of the file, not ended", "DIMENS\n 1 2 3 /\n-- end", tree, "DIMENS\n  9 2 3 /\n-- end"},
        {"a data line at the end of the file", "DIMENS\n 1 2 3 /", tree, "DIMENS\n  9 2 3 /\n"},
        {"comments ahead of the data stay", "DIMENS\n-- a\n\n  -- b\n 1 2 3 /\n-- c\nOIL\n", tree,
         "DIMENS\n-- a\n\n  -- b\n  9 2 3 /\n-- c\nOIL\n"},
        {"text without a comment keeps them", "DIMENS\n-- a\n\n  -- b\n 1 2 3 /\n", text,
         "DIMENS\n-- a\n\n  -- b\n  9 2\n3 /\n"},
        {"text with a comment replaces them", "DIMENS\n-- a\n\n  -- b\n 1 2 3 /\n", SetText("  -- c\n9 /"),
         "DIMENS\n  -- c\n9 /\n"},
        {"an unknown keyword stays", "DIMENS\n 1 2 3 /\nNOSUCHKW\n 4 5 /\n-- a\nOIL\n", tree,
         "DIMENS\n  9 2 3 /\nNOSUCHKW\n 4 5 /\n-- a\nOIL\n"},
        {"and behind text", "DIMENS\n 1 2 3 /\nNOSUCHKW\n 4 5 /\n-- a\nOIL\n", text,
         "DIMENS\n  9 2\n3 /\nNOSUCHKW\n 4 5 /\n-- a\nOIL\n"},
        {"the keyword line keeps what the user put there", "DIMENS  -- the size\n 1 2 3 /\n", tree,
         "DIMENS  -- the size\n  9 2 3 /\n"},
        {"and its tag", "DIMENS -- size" + std::string(30, ' ') + "-- Generated by hand\n 1 2 3 /\n", tree,
         "DIMENS -- size" + std::string(30, ' ') + "-- Generated by hand\n  9 2 3 /\n"},
        {"however long it is", "DIMENS -- " + std::string(3000, 'x') + " y\n 1 2 3 /\n", tree,
         "DIMENS -- " + std::string(3000, 'x') + " y\n  9 2 3 /\n"},
        {"what a tag line says besides goes with it",
         "DIMENS\n-- Generated by hand\n--!!! Program generated, too\n 1 /\n", tree,
         "DIMENS" + tag + " by hand , too\n  9 /\n"},
        {"a tag line goes to the keyword line", "DIMENS\n --!!! Program generated\n\n 1 2 3 /\n", tree,
         "DIMENS" + tag + "\n\n  9 2 3 /\n"},
        {"a suppressed keyword stays suppressed", "--@@@DIMENS -- x\n-- a\n--@@@1 2 3 /\n\n-- b\nOIL\n", tree,
         "--@@@DIMENS -- x\n-- a\n--@@@  9 2 3 /\n\n-- b\nOIL\n"},
        {"a title and what looks like its comment", "TITLE\n-- old\n-- above\nOIL\n", SetText("new"),
         "TITLE\nnew\n-- above\nOIL\n", "TITLE"},
        {"a title without text", "TITLE\n\n-- above\nOIL\n", SetText("new"), "TITLE\nnew\n-- above\nOIL\n", "TITLE"},
        {"a list and its end", "SCHEDULE\nWELSPECS\n'V' 'G' 1 1 /\n/\n\n-- b\nTSTEP\n1 /\n", SetText("'W' /\n/"),
         "SCHEDULE\nWELSPECS\n'W' /\n/\n\n-- b\nTSTEP\n1 /\n", "WELSPECS"},
        {"letters beyond those that count", "SCHEDULE\nWELSPECS_LONG -- w\n'V' 'G' 1 1 /\n/\nTSTEP\n1 /\n",
         SetText("'W' /\n/"), "SCHEDULE\nWELSPECS_LONG -- w\n'W' /\n/\nTSTEP\n1 /\n", "WELSPECS"},
        {"an array", "GRID\nPORO\n2*0.1\n0.2\n/\n-- b\nPERMX\n", SetText("3*1/"), "GRID\nPORO\n3*1/\n-- b\nPERMX\n",
         "PORO"},
        {"blanked text", "DIMENS\n 1 2 3 /\n\n-- a\nOIL\n",
         [](Keyword& k) {
             EXPECT_TRUE(k.SetDataText("9 /", false));
             EXPECT_TRUE(k.SetDataText(" \n", false));
             EXPECT_EQ(*k.GetDataText(), "  /");
         },
         "DIMENS\n  /\n\n-- a\nOIL\n"},
    });
    EXPECT_EQ(m_log.Count(3), 0);
}

TEST_F(KeywordWritingTest, TextThatComesBackHasTheBlockWithIt)
{
    const auto replace = [](const std::string& from, const std::string& to) {
        return [=](Keyword& k) {
            std::string text = *k.GetDataText();
            EXPECT_NE(text.find(from), std::string::npos) << text;
            text.replace(text.find(from), from.size(), to);
            EXPECT_TRUE(k.SetDataText(text, false));
        };
    };
    Check({
        {"one comment", "DIMENS\n 1 2 3 /\n\n-- a  \n\nOIL\n", replace("1 2", "9 9"),
         "DIMENS\n 9 9 3 /\n\n-- a  \n\nOIL\n"},
        {"a block and comments among the data", "DIMENS\n-- x\n 1 2 -- y\n-- z\n3 /\n-- a\n--b\nOIL\n",
         replace("1 2", "9 9"), "DIMENS\n-- x\n 9 9 -- y\n-- z\n3 /\n-- a\n--b\nOIL\n"},
        {"a block that was changed is text", "DIMENS\n 1 2 3 /\n-- a\n-- b\nOIL\n", replace("-- a\n-- b", "-- c"),
         "DIMENS\n 1 2 3 /\n-- c\n-- a\n-- b\nOIL\n"},
        {"an unknown keyword with it", "DIMENS\n 1 2 3 /\nNOSUCHKW\n 4 /\n-- a\nOIL\n", replace("1 2", "9 9"),
         "DIMENS\n 9 9 3 /\nNOSUCHKW\n 4 /\n-- a\nOIL\n"},
        {"which was changed", "DIMENS\n 1 2 3 /\nNOSUCHKW\n 4 /\n\n-- a\nOIL\n", replace("4 /", "5 /"),
         "DIMENS\n 1 2 3 /\nNOSUCHKW\n 5 /\n\n-- a\nOIL\n"},
        {"which was changed, without a comment", "DIMENS\n 1 2 3 /\nNOSUCHKW\n 4 /\n\nOIL\n", replace("4 /", "5 /"),
         "DIMENS\n 1 2 3 /\nNOSUCHKW\n 5 /\n\nOIL\n"},
        {"a terminator too many is no sign of it", "DIMENS\n 1 2 3 /\n/\nNOSUCHKW\n 4 /\n-- a\nOIL\n",
         SetText("9 9 9\n/"), "DIMENS\n9 9 9\n/\n/\nNOSUCHKW\n 4 /\n-- a\nOIL\n"},
        {"of a suppressed keyword", "--@@@DIMENS\n--@@@ 1 2 3 /\n-- a\nOIL\n", replace("1 2", "9 9"),
         "--@@@DIMENS\n--@@@ 9 9 3 /\n-- a\nOIL\n"},
        {"of one made active ahead", "--@@@DIMENS\n--@@@ 1 2 3 /\n-- a\nOIL\n",
         [&](Keyword& k) {
             k.SetSuppressed(false);
             replace("1 2", "9 9")(k);
         },
         "DIMENS\n 9 9 3 /\n-- a\nOIL\n"},
        {"of one suppressed there and back", "DIMENS\n--@@@ 1 2\n 3 /\n-- a\nOIL\n",
         [&](Keyword& k) {
             k.SetSuppressed(true);
             k.GetDataText();
             k.SetSuppressed(false);
             replace("1 2", "9 9")(k);
         },
         "DIMENS\n--@@@ 9 9\n 3 /\n-- a\nOIL\n"},
        {"only the block is left", "DIMENS\n 1 2 3 /\n-- a\nOIL\n", replace(" 1 2 3 /\n", ""),
         "DIMENS\n  /\n-- a\nOIL\n"},
    });
}

TEST_F(KeywordWritingTest, TagSuppressionAndCommentLeaveTheRestAlone)
{
    const auto tagged = [](Keyword& k) { k.GetTagMgr().SetTag(true); };
    const auto untagged = [](Keyword& k) { k.GetTagMgr().SetTag(false); };
    const auto suppressed = [](Keyword& k) { k.SetSuppressed(true); };
    const auto active = [](Keyword& k) { k.SetSuppressed(false); };
    const auto out = [](Keyword& k) { k.CommentOut(); };
    const auto comment = [](const std::string& text) { return [=](Keyword& k) { k.SetComment(text); }; };
    const std::string data = "\n1\t2 -- x\n\n-- y\n  3/z\n\n--b\n";
    Check({
        {"tag", "DIMENS" + data + "OIL\n", tagged, "DIMENS" + tag + data + "OIL\n"},
        {"tag behind the user's comment", "DIMENS -- a comment that runs past column 37 --" + data, tagged,
         "DIMENS -- a comment that runs past column 37 -- -- Generated" + data},
        {"no tag", "DIMENS" + tag + data, untagged, "DIMENS" + data},
        {"no tag line", "DIMENS\n-- Generated" + data, untagged, "DIMENS" + data},
        {"words on a tag line too", "DIMENS\n-- Generated by hand" + data, untagged, "DIMENS -- by hand" + data},
        {"words behind the tag stay a comment", "DIMENS -- Generated by hand" + data, untagged,
         "DIMENS -- by hand" + data},
        {"a tag of a keyword without data", "OIL\n\n-- b\nGAS\n", tagged,
         "OIL" + std::string(34, ' ') + "-- Generated\n\n-- b\nGAS\n", "OIL"},
        {"suppressed", "dimens -- a\n-- c\n" + data.substr(1) + "OIL\n", suppressed,
         "--@@@dimens -- a\n-- c\n--@@@1\t2 -- x\n\n-- y\n--@@@  3/z\n\n--b\nOIL\n"},
        {"active again", "--@@@DIMENS\n--@@@-- c\n--@@@ 1 2\n--@@@\n--@@@3 /\n\n-- b\nOIL\n", active,
         "DIMENS\n-- c\n 1 2\n\n3 /\n\n-- b\nOIL\n"},
        {"one row suppressed, then all", "DIMENS\n--@@@1 2\n 3 /\nOIL\n", suppressed,
         "--@@@DIMENS\n--@@@1 2\n--@@@ 3 /\nOIL\n"},
        {"a tag marks no rows", "--@@@DIMENS\n--@@@1 2\n 3 /\n", tagged, "--@@@DIMENS" + tag + "\n--@@@1 2\n 3 /\n"},
        {"one row suppressed stays so", "DIMENS\n--@@@1 2\n 3 /\nOIL\n", tagged,
         "DIMENS" + tag + "\n--@@@1 2\n 3 /\nOIL\n"},
        {"commented out", "DIMENS\n-- c\n" + data.substr(1) + "OIL\n", out,
         "--DIMENS\n-- c\n--1\t2 -- x\n\n-- y\n--  3/z\n\n--b\nOIL\n"},
        {"a suppressed keyword commented out", "--@@@DIMENS\n--@@@1 2 3 /\n-- b\n", out,
         "----@@@DIMENS\n----@@@1 2 3 /\n-- b\n"},
        {"numbers too many go with it", "DIMENS\n1 2 3 /\n4 5 /\n-- b\nNOSUCHKW\n6 /\n", out,
         "--DIMENS\n--1 2 3 /\n--4 5 /\n-- b\nNOSUCHKW\n6 /\n"},
        {"a title commented out", "TITLE\nx\n-- b\nOIL\n", out, "--TITLE\n--x\n-- b\nOIL\n", "TITLE"},
        {"comment", "DIMENS\n-- c\n-- d\n\n-- e\n 1 2 3 /\n", comment(" f\ng"),
         "DIMENS\n-- f\n--g\n\n-- e\n 1 2 3 /\n"},
        {"text that was merely read is no hindrance", "DIMENS\n-- c\n 1 2 3 /\n",
         [](Keyword& k) {
             k.GetDataText();
             k.SetComment("f");
         },
         "DIMENS\n--f\n 1 2 3 /\n"},
        {"a first comment", "DIMENS -- x\n\n 1 2 3 /\n", comment("f"), "DIMENS -- x\n--f\n\n 1 2 3 /\n"},
        {"no comment", "DIMENS\n-- c\n 1 2 3 /\n-- b\n", comment(""), "DIMENS\n 1 2 3 /\n-- b\n"},
        {"a comment of a keyword without data", "OIL\n-- c\n\n-- b\nGAS\n", comment("f"), "OIL\n--f\n\n-- b\nGAS\n",
         "OIL"},
        {"lines that would read as marks", "DIMENS\n 1 2 3 /\n", comment("@@@ 1\n Generated\n!!! Program generated"),
         "DIMENS\n-- @@@ 1\n--  Generated\n-- !!! Program generated\n 1 2 3 /\n"},
        {"a changed comment ahead of new data", "DIMENS\n-- c\n\n-- d\n 1 2 3 /\n",
         [](Keyword& k) {
             k.SetComment("f");
             SetFirstItem(k, 9);
         },
         "DIMENS\n--f\n\n-- d\n  9 2 3 /\n"},
        {"all at once", "DIMENS\n 1 2 3 /\n\n-- b\nOIL\n",
         [&](Keyword& k) {
             k.AddLeadingComment("l", false, false);
             k.SetComment("f");
             k.GetTagMgr().SetTag(true);
             k.SetSuppressed(true);
             SetFirstItem(k, 9);
         },
         "--l\n--@@@DIMENS" + tag + "\n--f\n--@@@  9 2 3 /\n\n-- b\nOIL\n"},
    });
}

/// A deck of keywords whose every comment line is its own: above keywords, behind their names, ahead of their data and
/// among them, with blank lines, suppressed keywords and words that nobody knows in between.
std::string GenerateDeckText()
{
    const auto pick = [](std::initializer_list<const char*> of) {
        return std::string(*rc::gen::elementOf(std::vector<const char*>(of)));
    };
    int comments = 0;
    const auto comment = [&](const char* indent) { return indent + ("-- c" + std::to_string(++comments)) + "\n"; };
    std::string text = "RUNSPEC\n";
    const int count = *rc::gen::inRange(1, 6);
    for (int i = 0; i < count; ++i) {
        const std::string mark = pick({"", "", "", "--@@@"});
        const std::string name = pick({"DIMENS", "EQLDIMS", "OIL", "TITLE", "WELLDIMS", "NOSUCHKW"});
        text += mark + name + pick({"", "", "  -- k", "   -- Generated", " -- k -- Generated"}) + "\n";
        if (name == "TITLE") text += mark + "A title\n";
        if (name == "DIMENS" || name == "EQLDIMS" || name == "WELLDIMS") {
            if (*rc::gen::inRange(0, 3) == 0) text += comment(*rc::gen::elementOf(std::vector<const char*>{"", "  "}));
            if (*rc::gen::inRange(0, 3) == 0) text += "\n" + comment("");
            text += mark + pick({" 1 2 3 /\n", "1 2\t3/ x\n", " 1 1* 3 /\n 4 /\n"});
        }
        const int block = *rc::gen::inRange(0, 3);
        for (int line = 0; line < block; ++line)
            text += *rc::gen::inRange(0, 2) == 0 ? "\n" : comment(line == 0 ? " " : "");
    }
    if (*rc::gen::inRange(0, 4) == 0) text.pop_back();
    return text;
}

std::multiset<std::string> CommentsIn(const std::string& text)
{
    std::multiset<std::string> comments;
    for (std::size_t at = text.find("-- c"); at != std::string::npos; at = text.find("-- c", at + 1))
        comments.insert(text.substr(at, text.find('\n', at) - at));
    return comments;
}

RC_GTEST_PROP(KeywordWritingProperty, EditsOfAKeywordKeepAllElse, ())
{
    const TestSupport::CleanEnvironment environment;
    LineEnds::SetPolicy(LineEnds::Policy::Keep);
    const std::string text = GenerateDeckText();
    RC_CLASSIFY(CommentsIn(text).size() > 2);
    const TestDeck deck(TestDeck::Texts{{"A.DATA", text}});
    RC_ASSERT(Written(deck) == text);

    std::vector<Keyword*> keywords;
    for (KeywordFileIterator place = deck.TopFile().Begin(); place != deck.TopFile().End(); ++place)
        keywords.push_back(static_cast<Keyword*>(const_cast<IKeyword*>(*place)));
    // The first keyword, commented out, would become the header of the file.
    RC_PRE(keywords.size() > 1);
    const std::size_t edited = *rc::gen::inRange<std::size_t>(1, keywords.size());
    Keyword& keyword = *keywords[edited];
    const auto before = static_cast<std::size_t>(keyword.GetPosition());
    const auto behind = before + static_cast<std::size_t>(keyword.GetSize());
    for (const int edit : *rc::gen::container<std::vector<int>>(2, rc::gen::inRange(0, 5))) {
        if (edit == 0) keyword.SetSuppressed(!keyword.IsSuppressed());
        if (edit == 1) keyword.GetTagMgr().SetTag(!keyword.GetTagMgr().IsTagged());
        if (edit == 2) keyword.CommentOut();
        if (edit == 3) keyword.SetData(keyword.GetAndResetData(Context()), false);
        if (edit == 4 && keyword.GetDataText() && !keyword.GetDataText()->empty())
            RC_ASSERT(keyword.SetDataText(*keyword.GetDataText(), false));
    }
    const std::string written = Written(deck);
    RC_LOG() << text << "becomes\n" << written;
    RC_ASSERT(written.starts_with(text.substr(0, before)));
    RC_ASSERT(written.ends_with(text.substr(behind)));
    RC_ASSERT(CommentsIn(written) == CommentsIn(text));

    // It reads as what it was written from, and what is read is written the same.
    const TestDeck again(TestDeck::Texts{{"A.DATA", written}});
    RC_ASSERT(Written(again) == written);
    std::size_t next = 0;
    for (KeywordFileIterator place = again.TopFile().Begin(); place != again.TopFile().End(); ++place, ++next) {
        if (next == edited && keyword.IsCommentedOut()) ++next;
        RC_ASSERT(next < keywords.size());
        RC_ASSERT(place->GetName() == keywords[next]->GetName());
        RC_ASSERT(place->IsSuppressed() == keywords[next]->IsSuppressed());
        RC_ASSERT(place->IsGenerated() == keywords[next]->IsGenerated());
    }
    keyword.Rollback();
    RC_ASSERT(Written(deck) == text);
}

TEST_F(KeywordWritingTest, LinesOfAQuorlDeckHaveItsMarker)
{
    Environment::Instance().setIsQUORLDeck();
    const auto suppress = [](Keyword& k) { k.SetSuppressed(true); };
    Check({{"suppressed", "DIMENS\n1 2\n-- c\n3 /\n-- b\n", suppress,
            "--quorl--DIMENS\n--quorl--1 2\n-- c\n--quorl--3 /\n-- b\n"},
           {"commented out", "DIMENS\n1 2 3 /\n", [](Keyword& k) { k.CommentOut(); }, "--DIMENS\n--1 2 3 /\n"}});
}

TEST_F(KeywordWritingTest, WhereTheDataEndIsAskedWithoutAWord)
{
    const TestDeck deck = DeckOf("DIMENS\n1 x 3 /\n-- b\n");
    At(deck, "DIMENS").SetSuppressed(true);
    EXPECT_EQ(WrittenBehindFirst(deck), "--@@@DIMENS\n--@@@1 x 3 /\n-- b\n");
    EXPECT_FALSE(m_log.Empty());
    for (const auto& message : m_log.Messages())
        EXPECT_TRUE(message.probe) << message.text;
}

TEST_F(KeywordWritingTest, DataWhoseSizeCannotBeTold)
{
    const DataReading::TableInForce table(
        R"([{"name": "X", "sections": "all", "data": {"type": "record", "items": [
             {"name": "L", "type": "list", "element": {"type": "real"}, "termination": "none", "size": "self:NOSUCH"}]}},
            {"name": "RUNSPEC", "sections": "all"}])");
    const std::string text = "X\n-- c\n1 2\n3 /\n\n-- b\n";
    Check({{"all that could be data is marked", text, [](Keyword& k) { k.SetSuppressed(true); },
            "--@@@X\n-- c\n--@@@1 2\n--@@@3 /\n\n-- b\n", "X"}});
    const ForceRewrite::Scope rewrite(true);
    Check({{"a rewrite copies it", text, [](Keyword&) {}, text, "X"},
           {"and what was set", text, SetText("4  5 /"), "X\n-- c\n4  5 /\n\n-- b\n", "X"}});
}

TEST_F(KeywordWritingTest, RawTextEndsWithItsTerminator)
{
    const auto text = SetText("b\nPYEND");
    Check({
        {"terminated", "SCHEDULE\nPYINPUT\na\n-- x\nPYEND\n-- above\nDATES\n", text,
         "SCHEDULE\nPYINPUT\nb\nPYEND\n-- above\nDATES\n", "PYINPUT"},
        {"text without one, which would swallow what follows", "SCHEDULE\nPYINPUT\na\nPYEND\n-- above\nTSTEP\n1 /\n",
         SetText("b # PYEND\n PYEND"), "SCHEDULE\nPYINPUT\nb # PYEND\n PYEND\nPYEND\n-- above\nTSTEP\n1 /\n",
         "PYINPUT"},
        {"a tree of a suppressed one", "SCHEDULE\n--@@@PYINPUT\n--@@@ a\n--@@@PYEND\n-- above\nTSTEP\n1 /\n",
         [](Keyword& k) { EXPECT_TRUE(k.SetData(k.GetAndResetData(Context()), false)); },
         "SCHEDULE\n--@@@PYINPUT\n--@@@ a\n--@@@PYEND\n-- above\nTSTEP\n1 /\n", "PYINPUT"},
        {"a tree of one made active ahead", "SCHEDULE\n--@@@PYINPUT\n--@@@ a\n--@@@PYEND\n-- above\nTSTEP\n1 /\n",
         [](Keyword& k) {
             k.SetSuppressed(false);
             EXPECT_TRUE(k.SetData(k.GetAndResetData(Context()), false));
         },
         "SCHEDULE\nPYINPUT\n a\nPYEND\n-- above\nTSTEP\n1 /\n", "PYINPUT"},
        {"not terminated: all is the keyword's", "SCHEDULE\nPYINPUT\na\n-- x\n", text, "SCHEDULE\nPYINPUT\nb\nPYEND\n",
         "PYINPUT"},
        {"commented out", "SCHEDULE\nPYINPUT\na\n-- x\nPYEND\n-- above\n", [](Keyword& k) { k.CommentOut(); },
         "SCHEDULE\n--PYINPUT\n--a\n-- x\n--PYEND\n-- above\n", "PYINPUT"},
    });
}

TEST_F(KeywordWritingTest, TagsAreWrittenWhenTheyAreWanted)
{
    Environment& environment = Environment::Instance();
    const TestDeck deck = DeckOf("OIL\n");
    ITagMgr& manager = At(deck, "OIL").GetTagMgr();
    FileTagState state;
    const auto written = [&] {
        std::string lines;
        for (const std::size_t size : {3, 36, 37}) {
            std::string line(size, 'A');
            manager.WriteTag(line);
            lines += line.substr(size) + "|";
        }
        LineStringWriter writer;
        state.Write(writer);
        return lines + writer.GetText();
    };
    EXPECT_EQ(written(), "|||");
    manager.SetTag(true);
    state.Set(true);
    EXPECT_EQ(written(), std::string(34, ' ') + "-- Generated| -- Generated| -- Generated|-- Generated\n");
    environment.SetCustomKeywordGeneratedTag("KW");
    environment.SetCustomFileGeneratedTag("FILE");
    EXPECT_EQ(written(),
              std::string(34, ' ') + "-- Generated KW| -- Generated KW| -- Generated KW|-- Generated FILE\n");
    EXPECT_TRUE(manager.IsTagChanged() && state.IsChanged());
    environment.WriteGeneratedTags(false);
    EXPECT_EQ(written(), "|||");
    manager.CommitTag();
    state.Commit();
    EXPECT_FALSE(manager.IsTagChanged() || state.IsChanged());
    environment.SetCustomKeywordGeneratedTag("");
    Environment::Instance().WriteGeneratedTags(false);
    Check({{"lost where the line is written", "DIMENS" + tag + "\n 1 2 3 /\nOIL -- Generated\n",
            [](Keyword& k) { SetFirstItem(k, 9); }, "DIMENS\n  9 2 3 /\nOIL -- Generated\n"}});
}

TEST_F(KeywordWritingTest, ForceRewriteWritesFromTheTree)
{
    const ForceRewrite::Scope scope(true);
    {
        const ForceRewrite::Scope inner(false);
        EXPECT_FALSE(ForceRewrite::IsOn());
    }
    EXPECT_TRUE(ForceRewrite::IsOn());
    const auto none = [](Keyword&) {};
    Check({
        {"from the file", "DIMENS -- x\n-- c\n1 2 -- y\n3/\n\n-- b\nOIL\n\n\n", none,
         "DIMENS -- x\n-- c\n  1 2 3 /\n\n-- b\nOIL\n\n\n"},
        {"from text with comments", "DIMENS\n1 2 3/\n-- b\n", SetText("-- d\n4 --e\n5 6 /"),
         "DIMENS\n-- d\n  4 5 6 /\n-- b\n"},
        {"references to variables stay", "DIMENS\n$NX 2 -- y\n3/\n-- b\n", none, "DIMENS\n$NX 2 -- y\n3/\n-- b\n"},
        {"in text too", "DIMENS\n1 2 3/\n-- $b\n", SetText("$NX 5 -- d\n6 /"), "DIMENS\n$NX 5 -- d\n6 /\n-- $b\n"},
        {"a title that no reader sees", "TITLE\n-- x\n--b\nOIL\n", none, "TITLE\n-- x\n--b\nOIL\n", "TITLE"},
        {"suppressed", "--@@@DIMENS\n--@@@1 2 3/\n", none, "--@@@DIMENS\n--@@@  1 2 3 /\n"},
        {"text that doesn't read stays", "DIMENS\n1 2 3/\n-- b\n", SetText("4 x  6 /"), "DIMENS\n4 x  6 /\n-- b\n"},
        {"text with more than there is room for, too", "DIMENS\n1 2 3/\n-- b\n", SetText("4 5  6 7 /"),
         "DIMENS\n4 5  6 7 /\n-- b\n"},
    });
}

TEST_F(KeywordWritingTest, LineEnds)
{
    struct LineEndCase
    {
        const char* what;
        LineEnds::Policy policy;
        std::string text, expected;
    };
    const LineEndCase cases[] = {
        {"kept", LineEnds::Policy::Keep, "RUNSPEC\n\nDIMENS\n1 2 3 /\n-- b\nOIL\r\nGAS",
         "RUNSPEC\n\nDIMENS\n  9 2 3 /\n-- b\nOIL\r\nGAS"},
        {"made CR LF", LineEnds::Policy::CrLf, "RUNSPEC\n\nDIMENS\n1 2 3 /\n-- b\nOIL\r\nGAS",
         "RUNSPEC\r\n\r\nDIMENS\r\n  9 2 3 /\r\n-- b\r\nOIL\r\nGAS"},
    };
    for (const LineEndCase& test : cases) {
        SCOPED_TRACE(test.what);
        LineEnds::SetPolicy(test.policy);
        const TestDeck deck(TestDeck::Texts{{"A.DATA", test.text}});
        SetFirstItem(At(deck, "DIMENS"), 9);
        EXPECT_EQ(Written(deck), test.expected);
        EXPECT_EQ(*At(deck, "DIMENS").GetText(), "DIMENS\n  9 2 3 /\n-- b\n");
    }
    LineEnds::SetPolicy(LineEnds::Policy::Keep);
    const std::function<void(Keyword&)> edits[] = {
        [](Keyword& k) { SetFirstItem(k, 9); },
        SetText("9\n8 /"),
        [](Keyword& k) { k.GetTagMgr().SetTag(true); },
        [](Keyword& k) { k.SetSuppressed(true); },
        [](Keyword& k) { k.CommentOut(); },
        [](Keyword& k) { k.SetComment("f\ng"); },
        [](Keyword& k) { k.SetLeadingComment("f\r\ng\n", false); },
    };
    for (const auto& edit : edits) {
        const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\r\nDIMENS\r\n-- c\r\n1 2\r\n3 /\r\n-- b\nOIL\r\n"}});
        deck.Dir().Write("out", "CR LF\r\n");
        edit(At(deck, "DIMENS"));
        std::string written = Written(deck);
        // The block above the next keyword is no part of what is edited.
        EXPECT_TRUE(written.ends_with("/\r\n-- b\nOIL\r\n")) << written;
        written.erase(written.find("-- b\n"), 5);
        EXPECT_EQ(std::count(written.begin(), written.end(), '\r'), std::count(written.begin(), written.end(), '\n'));
        EXPECT_EQ(written.find("\r\r"), std::string::npos);
    }
    const std::string zero("RUNSPEC\nTITLE\na\0b\rc\nOIL\n", 25);
    const TestDeck deck(TestDeck::Texts{{"A.DATA", zero}});
    EXPECT_EQ(Written(deck), zero);
}

TEST_F(KeywordWritingTest, AKeywordThatNeverStoodInAFile)
{
    const auto make = [](const char* name) {
        return KeywordFactory::Create(SyntaxOf(name), true, "", false, nullptr, nullptr, -1, -1);
    };
    const auto dimens = make("DIMENS");
    EXPECT_EQ(*dimens->GetText(), "DIMENS\n  /\n\n");
    dimens->SetComment("c");
    EXPECT_TRUE(dimens->SetDataText("1 2 3 /\n\n", false));
    EXPECT_EQ(*dimens->GetText(), "DIMENS\n--c\n1 2 3 /\n");
    dimens->GetTagMgr().SetTag(true);
    SetFirstItem(*dimens, 9);
    EXPECT_EQ(*dimens->GetText(), "DIMENS" + tag + "\n--c\n  9 2 3 /\n\n");
    EXPECT_EQ(*dimens->GetDataText(), "  9 2 3 /");
    dimens->CommentOut();
    EXPECT_EQ(*dimens->GetText(), "--DIMENS" + tag + "\n--c\n--  9 2 3 /\n\n");
    EXPECT_EQ(*make("OIL")->GetText(), "OIL\n\n");
}

TEST_F(KeywordWritingTest, RefusedData)
{
    const TestDeck deck =
        DeckOf("DIMENS\n 1 2 3 /\nTABDIMS\n 1 /\nOIL\nWELLDIMS\n/\nSTART\n1 JAN 2000 /\nTITLE\nx\nINCLUDE\n'b.inc' /\n"
               "SCHEDULE\nWELSPECS\nW G 1 1 /\n/\n");
    Keyword& dimens = At(deck, "DIMENS");
    EXPECT_FALSE(dimens.SetData(nullptr, false));
    std::unique_ptr<Keywords::IKeywordData> other = At(deck, "TABDIMS").GetAndResetData(Context());
    EXPECT_FALSE(dimens.SetData(std::move(other), false));
    EXPECT_NE(other, nullptr);
    EXPECT_EQ(m_log.Texts(3), std::vector<std::string>{"Data type does not match the keyword"});
    m_log.Clear();

    EXPECT_TRUE(At(deck, "OIL").SetDataText(" -- no data", false));
    EXPECT_FALSE(At(deck, "OIL").SetDataText("1 /", false));
    EXPECT_EQ(m_log.Texts(3), std::vector<std::string>{"Found unexpected data for keyword 'OIL' (line 6, file '" +
                                                       deck.Dir().Path("A.DATA") + "')"});
    m_log.Clear();

    for (const char* text : {"1 2 3 /\nOIL", "1 2 3 /\nWELSPECS_LONG\n", "1 /\npermx\n", "1 /\n--@@@OIL"})
        EXPECT_FALSE(dimens.SetDataText(text, false)) << text;
    EXPECT_EQ(m_log.Texts(3).front(),
              "Found unexpected keyword name: OIL.\n  If this name is part of the data, indent it by\n  at least one "
              "space, and it will not be interpreted\n  as a separate keyword.");
    EXPECT_EQ(m_log.Count(3), 4);
    m_log.Clear();
    EXPECT_FALSE(dimens.IsDirty());
    // Words of the data are none.
    EXPECT_TRUE(At(deck, "WELSPECS").SetDataText("OIL GAS 1 1 /\n/", false));

    Keyword& wells = At(deck, "WELSPECS");
    std::unique_ptr<Keywords::IKeywordData> data = wells.GetAndResetData(Context());
    auto& record =
        static_cast<Keywords::IKeywordRecordData&>(static_cast<Keywords::IKeywordListData&>(*data).GetContainer(0));
    record.GetItem(0).SetString("W\nOIL");
    EXPECT_FALSE(wells.SetData(std::move(data), false));
    EXPECT_EQ(m_log.Count(3), 1);
    EXPECT_FALSE(wells.IsDataChanged());
    record.GetItem(0).SetString("w1");
    EXPECT_TRUE(wells.SetData(std::move(data), false));
    EXPECT_EQ(record.GetItem(0).GetString(), "W1");

    const auto setText = [&](const char* name, const char* text) {
        std::unique_ptr<Keywords::IKeywordData> tree = At(deck, name).GetAndResetData(Context());
        static_cast<Keywords::IKeywordRecordData&>(*tree).GetItem(0).SetString(text);
        return At(deck, name).SetData(std::move(tree), false);
    };
    EXPECT_FALSE(setText("TITLE", "one\rtwo"));
    EXPECT_EQ(m_log.Count(3), 2);
    EXPECT_TRUE(setText("TITLE", "One"));
    EXPECT_TRUE(setText("INCLUDE", "a.inc"));
    EXPECT_EQ(*At(deck, "TITLE").GetDataText(), "One");
    EXPECT_EQ(*At(deck, "INCLUDE").GetDataText(), "'a.inc' /");
}

TEST_F(KeywordWritingTest, TheThreeFormsOfTheData)
{
    const TestDeck deck = DeckOf("DIMENS\n 1 2 3 /\n-- b\nOIL\n");
    Keyword& dimens = At(deck, "DIMENS");
    const auto nx = [&] {
        const auto* record = static_cast<const Keywords::IKeywordRecordData*>(dimens.GetData(Context()));
        return record->GetItem(0).GetInteger();
    };
    // Without held text there is nothing to blank, whether or not the text has been read.
    EXPECT_TRUE(dimens.SetDataText("", false));
    dimens.GetDataText();
    EXPECT_TRUE(dimens.SetDataText(" ", false));
    EXPECT_FALSE(dimens.IsDirty());
    EXPECT_EQ(nx(), 1);

    EXPECT_TRUE(dimens.SetDataText("-- Generated\n\n  7 /", false));
    EXPECT_EQ(*dimens.GetDataText(), "  7 /");
    EXPECT_EQ(nx(), 7);
    SetFirstItem(dimens, 8);
    EXPECT_EQ(nx(), 8);
    EXPECT_EQ(*dimens.GetDataText(), "  8 /");
    dimens.Rollback();
    EXPECT_EQ(nx(), 1);
    EXPECT_EQ(*dimens.GetDataText(), " 1 2 3 /\n-- b");

    EXPECT_EQ(dimens.GetComment(), "");
    dimens.SetComment("a");
    dimens.SetComment("b");
    dimens.Rollback();
    EXPECT_EQ(dimens.GetComment(), "");
    EXPECT_FALSE(dimens.IsDirty());

    EXPECT_TRUE(dimens.SetDataText("5 /", false));
    EXPECT_NE(dimens.GetAndResetData(Context()), nullptr);
    EXPECT_FALSE(dimens.IsDirty());
    EXPECT_EQ(nx(), 1);

    EXPECT_TRUE(dimens.SetDataText("5 /", false));
    EXPECT_TRUE(dimens.SetDataText("", false));
    EXPECT_TRUE(dimens.IsDataChanged());
    EXPECT_LT(nx(), 0);
}

TEST_F(KeywordWritingTest, OtherDataAndWhatStandsBehindThem)
{
    const TestDeck deck = DeckOf("DIMENS -- x\n-- c\n 1 2 3 /\n\n-- b\nOIL\n");
    const Keyword& dimens = At(deck, "DIMENS");
    LineStringWriter writer;
    dimens.WriteWithText(writer, "4 /", Context());
    dimens.WriteTrailingText(writer, Context());
    std::string text = writer.TakeText();
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    EXPECT_EQ(text, "DIMENS -- x\n-- c\n4 /\n\n-- b\n\n-- b\n");
    EXPECT_TRUE(dimens.IsWrittenAsItStands());
}

TEST_F(KeywordWritingTest, AFileThatHasGoneIsTold)
{
    const TestDeck deck = DeckOf("DIMENS\n 1 2 3 /\n");
    const Keyword& dimens = At(deck, "DIMENS");
    deck.Dir().Write("A.DATA", "RUNSPEC\nDIM");
    LineStringWriter writer;
    EXPECT_THROW(dimens.Write(writer, Context(), SimulatorType::Any), DeckManagerException);
    const TestDeck suppressed = DeckOf("--@@@DIMENS\n--@@@ 1 2 3 /\n");
    At(suppressed, "DIMENS").SetSuppressed(false);
    suppressed.Dir().Write("A.DATA", "RUNSPEC\n--@@@DIMENS\n--@@@ 1");
    EXPECT_THROW(At(suppressed, "DIMENS").Write(writer, Context(), SimulatorType::Any), DeckManagerException);
    std::remove(deck.Dir().Path("A.DATA").c_str());
    EXPECT_THROW(dimens.Write(writer, Context(), SimulatorType::Any), DeckManagerException);
}

TEST_F(KeywordWritingTest, AFullDiskIsTheWritersAffair)
{
    const TestDeck deck = DeckOf("DIMENS\n 1 2 3 /\n-- " + std::string(100000, 'x') + "\nOIL\n");
    const Keyword& dimens = At(deck, "DIMENS");
    const_cast<Keyword&>(dimens).GetTagMgr().SetTag(true);
    TestSupport::FailingFileSystem disk;
    LineFileWriter writer;
    ASSERT_TRUE(writer.Open(deck.Dir().Path("out"), false, 64));
    disk.LimitSpace(50);
    for (int i = 0; i < 2; ++i)
        EXPECT_NO_THROW(dimens.Write(writer, Context(), SimulatorType::Any));
    EXPECT_FALSE(writer.IsGood());
    EXPECT_FALSE(writer.Close());
    EXPECT_NO_THROW(dimens.Write(writer, Context(), SimulatorType::Any));
}

TEST_F(KeywordWritingTest, AKeywordOfASkippedRegion)
{
    Environment::Instance().EnableSKIPENDSKIP(true, SimulatorType::S100);
    const TestDeck deck = DeckOf("SKIP\nOIL\nENDSKIP\nGAS\n");
    Keyword& skip = At(deck, "SKIP");
    ASSERT_TRUE(skip.IsSkipped());
    EXPECT_FALSE(skip.SetDataText("1 /", false));
    EXPECT_EQ(*skip.GetText(), "");
    const ForceRewrite::Scope scope(true);
    EXPECT_EQ(*skip.GetText(), "");
}

TEST_F(KeywordWritingTest, PartsOfATextWithACommentAhead)
{
    const TestDeck deck = DeckOf("DIMENS\n 1 2 3 /\n-- b\n");
    At(deck, "DIMENS").SetLeadingComment("l", false);
    const KeywordText text(At(deck, "DIMENS"));
    EXPECT_EQ(text.All(), "--l\nDIMENS\n 1 2 3 /\n-- b\n");
    EXPECT_EQ(text.Own(), "DIMENS\n 1 2 3 /\n");
    EXPECT_EQ(text.Data(), " 1 2 3 /\n");
    EXPECT_EQ(text.TrailingBlock(), "-- b\n");
}

} // namespace
