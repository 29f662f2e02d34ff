#include "keywords/CommentManager.h"
#include "keywords/ITagMgr.h"
#include "tests/support/DeckTest.h"
#include <deckmanager/Context.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordRecordData.h>

// A keyword as it stands in its file: its text, its comment, its tag.

namespace {

using namespace DeckTests;

class KeywordTest : public testing::Test
{
protected:
    static Keyword& At(const TestDeck& deck, const std::string& name)
    {
        return static_cast<Keyword&>(const_cast<IKeyword&>(**deck.At(name)));
    }

    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
};

TEST_F(KeywordTest, TextsOfAKeyword)
{
    struct Case
    {
        const char* what;
        std::string text;
        std::string dataText;
        std::string comment;
        bool suppressed;
    };
    const std::vector<Case> cases = {
        {"data", "DIMENS\n  1 2 3 /\n\n", "  1 2 3 /", "", false},
        {"no line end", "DIMENS\n 1 2 3 /", " 1 2 3 /", "", false},
        {"CR LF", "DIMENS\r\n 1 2\r\n 3 /\r\n", " 1 2\n 3 /", "", false},
        {"a comment of two lines", "DIMENS\n-- so\n--  many\n1 2 3 /\n", "-- so\n--  many\n1 2 3 /", " so\n  many",
         false},
        {"an indented comment", "DIMENS\n  -- so\n1 2 3 /\n", "  -- so\n1 2 3 /", " so", false},
        {"a second paragraph is none of the comment", "DIMENS\n-- so\n\n-- not\n1 2 3 /\n", "-- so\n\n-- not\n1 2 3 /",
         " so", false},
        {"a tag line", "DIMENS\n-- Generated\n1 2 3 /\n", "1 2 3 /", "", false},
        {"suppressed as a whole", "--@@@DIMENS\n--@@@1 2\n--@@@ 3 /\n--@@@\n", "1 2\n 3 /", "", true},
        {"one row suppressed", "DIMENS\n--@@@1 2 3 /\n", "--@@@1 2 3 /", "", false},
        {"only its line", "DIMENS", "", "", false},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\n" + test.text}});
        Keyword& keyword = At(deck, "DIMENS");
        EXPECT_EQ(*keyword.GetDataText(), test.dataText);
        EXPECT_EQ(keyword.GetComment(), test.comment);
        EXPECT_EQ(keyword.IsSuppressed(), test.suppressed);
        std::string whole = test.text;
        whole.erase(std::remove(whole.begin(), whole.end(), '\r'), whole.end());
        if (whole.back() != '\n') whole += '\n';
        EXPECT_EQ(*keyword.GetText(), whole);
        EXPECT_FALSE(keyword.IsDirty());
    }
}

TEST_F(KeywordTest, MarksStayInTheDataWhereSuppressionIsOff)
{
    const std::string text = "--@@@DIMENS\n--@@@1 2 3 /\n";
    const TestDeck on(TestDeck::Texts{{"A.DATA", "RUNSPEC\n" + text}});
    const TestDeck off(TestDeck::Texts{{"A.DATA", "RUNSPEC\n" + text}});
    EXPECT_EQ(*At(on, "DIMENS").GetDataText(), "1 2 3 /");
    EXPECT_TRUE(At(off, "DIMENS").IsSuppressed());
    Environment::Instance().EnableKeywordSuppression(false);
    EXPECT_EQ(*At(off, "DIMENS").GetDataText(), "--@@@1 2 3 /");
}

TEST_F(KeywordTest, TitlesAndKeywordsWithoutData)
{
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\nTITLE\n-- no comment\nOIL\n-- a comment\n"}});
    EXPECT_EQ(At(deck, "TITLE").GetComment(), "");
    EXPECT_EQ(*At(deck, "TITLE").GetDataText(), "-- no comment");
    EXPECT_EQ(At(deck, "OIL").GetDataText(), nullptr);
    EXPECT_EQ(At(deck, "OIL").GetData(Context()), nullptr);
    EXPECT_EQ(At(deck, "OIL").GetComment(), " a comment");
    EXPECT_EQ(*At(deck, "OIL").GetText(), "OIL\n-- a comment\n");
    EXPECT_EQ(At(deck, "OIL").GetDiskFile(), &deck.TopFile());
}

TEST_F(KeywordTest, VariablesAreAskedOfDataLinesOnly)
{
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\n-- $NX\nTABDIMS\n1 -- $NX\n/\nDIMENS\n$NX 2 3 /\nOIL\n"}});
    EXPECT_FALSE(At(deck, "RUNSPEC").HasVariables());
    EXPECT_TRUE(At(deck, "DIMENS").HasVariables());
    EXPECT_NE(At(deck, "DIMENS").GetVariables(Context()), nullptr);
    EXPECT_FALSE(At(deck, "OIL").HasVariables());

    const TestDeck without({{"A.DATA", "RUNSPEC\nDIMENS\n$NX 2 3 /\n"}}, false);
    EXPECT_FALSE(At(without, "DIMENS").HasVariables());
}

TEST_F(KeywordTest, OtherDataHaveNoneOfTheReferences)
{
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "SCHEDULE\nWELSPECS\n$W G 1 1 /\n/\n"}});
    Keyword& keyword = At(deck, "WELSPECS");
    EXPECT_NE(keyword.GetVariables(Context()), nullptr);
    auto data = keyword.GetData(Context())->CloneSafely();
    auto& row =
        static_cast<Keywords::IKeywordRecordData&>(static_cast<Keywords::IKeywordListData&>(*data).GetContainer(0));
    row.GetItem(0).SetString("$V"); // a name, however it will read
    EXPECT_TRUE(keyword.SetData(std::move(data), false));
    EXPECT_TRUE(keyword.HasVariables());
    EXPECT_EQ(keyword.GetVariables(Context()), nullptr);
}

/// Blocks of text go to a file with the line ends of Windows, and to whoever asks without.
TEST_F(KeywordTest, TextOfATreeHasPlainLineEnds)
{
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "SCHEDULE\nPYINPUT\na = 1\nb = 2\nPYEND\nTSTEP\n1 /\n"}});
    Keyword& keyword = At(deck, "PYINPUT");
    EXPECT_TRUE(keyword.SetData(keyword.GetData(Context())->CloneSafely(), false));
    EXPECT_EQ(*keyword.GetDataText(), "a = 1\nb = 2\nPYEND");
    EXPECT_EQ(*keyword.GetText(), "PYINPUT\na = 1\nb = 2\nPYEND\n");
}

TEST_F(KeywordTest, ChangesOfTagAndCommentAreDropped)
{
    const std::string tag = "                             -- Generated\n";
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\nDIMENS" + tag + "-- so\n1 2 3 /\nOIL\n"}});
    ITagMgr& generated = At(deck, "DIMENS").GetTagMgr();
    EXPECT_TRUE(generated.SetTag(true));
    EXPECT_FALSE(generated.IsTagChanged());
    EXPECT_TRUE(generated.SetTag(false));
    EXPECT_FALSE(generated.SetTag(true));
    EXPECT_TRUE(generated.SetTag(false));
    EXPECT_FALSE(At(deck, "DIMENS").IsGenerated());
    EXPECT_TRUE(At(deck, "DIMENS").IsDirty());
    EXPECT_TRUE(deck.TopFile().IsModified());
    deck.TopFile().CancelChanges();
    EXPECT_TRUE(At(deck, "DIMENS").IsGenerated());
    EXPECT_FALSE(deck.TopFile().IsModified());

    CommentManager comment(&At(deck, "DIMENS"));
    comment.RevertComment();
    EXPECT_EQ(comment.GetComment(), " so");
    comment.SetComment("one");
    comment.SetComment("two");
    EXPECT_TRUE(comment.IsCommentChanged());
    comment.RevertComment();
    EXPECT_EQ(comment.GetComment(), " so");
    EXPECT_FALSE(comment.IsCommentChanged());
    EXPECT_EQ(CommentManager(nullptr).GetComment(), "");
}

TEST_F(KeywordTest, ChangedMarksAreDropped)
{
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\n--@@@OIL\nDIMENS\n1 2 3 /\nTITLE\nx\n"}});
    Keyword& oil = At(deck, "OIL");
    oil.SetSuppressed(true);
    EXPECT_FALSE(oil.IsDirty());
    oil.SetSuppressed(false);
    EXPECT_TRUE(oil.IsDirty());
    EXPECT_TRUE(deck.TopFile().IsModified());
    At(deck, "DIMENS").CommentOut();
    EXPECT_TRUE(At(deck, "DIMENS").IsCommentedOut());
    At(deck, "DIMENS").GetDataText();
    At(deck, "DIMENS").SetComment("size");
    EXPECT_EQ(At(deck, "DIMENS").GetComment(), "size");
    At(deck, "TITLE").SetComment("none");
    EXPECT_EQ(At(deck, "TITLE").GetComment(), "");
    EXPECT_FALSE(At(deck, "TITLE").IsDirty());

    deck.TopFile().CancelChanges();
    EXPECT_TRUE(oil.IsSuppressed());
    EXPECT_FALSE(At(deck, "DIMENS").IsCommentedOut());
    EXPECT_EQ(At(deck, "DIMENS").GetComment(), "");
    EXPECT_FALSE(deck.TopFile().IsModified());
}

TEST_F(KeywordTest, TextAheadOfAKeyword)
{
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\n"}});
    Keyword& keyword = At(deck, "RUNSPEC");
    keyword.SetLeadingComment(" one\n@@@ two", false);
    EXPECT_EQ(keyword.GetLeadingComment(), "-- one\n-- @@@ two"); // no suppress marker
    keyword.AddLeadingComment("-- three", true, true);
    keyword.AddLeadingComment(" zero", false, false);
    EXPECT_EQ(keyword.GetLeadingComment(), "-- zero\n-- one\n-- @@@ two\n-- three");
    EXPECT_TRUE(keyword.IsDirty());
    keyword.Rollback();
    EXPECT_EQ(keyword.GetLeadingComment(), "");
    EXPECT_FALSE(keyword.IsDirty());
    keyword.AddLeadingComment("--x\n", true, false);
    EXPECT_EQ(keyword.GetLeadingComment(), "--x\n");

    // Nor may it read as a tag, of the keyword or of the file.
    Environment::Instance().SetCustomKeywordGeneratedTag("byKeyword");
    Environment::Instance().SetCustomFileGeneratedTag("byFile");
    const std::string tags[] = {Environment::Instance().GetKeywordGeneratedTag(),
                                Environment::Instance().GetFileGeneratedTag()};
    EXPECT_NE(tags[0], tags[1]);
    for (const std::string& tag : tags) {
        keyword.SetLeadingComment("a\n" + tag.substr(2), false);
        EXPECT_EQ(keyword.GetLeadingComment(), "--a\n-- " + tag.substr(2));
    }
}

TEST_F(KeywordTest, TagsWithTheHostsWord)
{
    Environment::Instance().SetCustomKeywordGeneratedTag("ABC");
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC -- Generated ABC\nOIL -- Generated\nGAS\n"
                                                   "  --!!! Program generated\nWATER\n-- Generated ABC\n"}});
    std::string generated;
    for (KeywordFileIterator place = deck.TopFile().Begin(); place != deck.TopFile().End(); ++place) {
        if (place->IsGenerated()) generated += place->GetName() + " ";
    }
    EXPECT_EQ(generated, "RUNSPEC GAS WATER ");
}

} // namespace
