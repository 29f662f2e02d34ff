#include "tests/support/DeckTest.h"
#include <deckmanager/SetCommentAbove.h>
#include <tarn/keywords/IKeywordRecordData.h>

// Files that are written ahead of the commit of their deck: their text stands beside them and breaks off, the commit
// goes on behind it, and writes it anew where what it holds has changed.

namespace {

using namespace DeckTests;

const std::string mark = "\xEF\xBB\xBF";
const std::string tag = "-- Generated\n\n";
const std::string written = "-- head\nTABDIMS\n1 /\n\n-- above E\nEQLDIMS\n 2 /\n";
const std::string rest = "-- end\n";

/// A deck whose included file is edited and written ahead.
class AheadDeck
{
public:
    explicit AheadDeck(const std::string& text)
        : m_deck(TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'A.INC' /\nOIL\n"}, {"A.INC", text}})
    {
        m_deck.Walk(true);
    }

    IDeckKeywordsEditor& Editor() const { return *m_deck.Manager().GetEditor(&m_deck.Deck()); }
    IDeckKeywords& DeckKeywords() const { return m_deck.Keywords(); }
    KeywordFile& File() const { return m_deck.File("A.INC"); }
    std::string Read(const std::string& name = "A.INC") const { return m_deck.Dir().Read(name); }
    std::string Ahead() const { return Read("A_INC__.tmp"); }
    std::string Listing() const { return m_deck.Dir().Listing(); }
    void Write(const std::string& name, const std::string& text) const { m_deck.Dir().Write(name, text); }
    void Delete(const std::string& name) const { std::filesystem::remove(m_deck.Dir().Path(name)); }

    KeywordFileIterator At(const std::string& name) const
    {
        KeywordFileIterator place = File().Begin();
        while (place != File().End() && place->GetName() != name)
            ++place;
        return place;
    }
    void Insert(const KeywordFileIterator& place, const std::string& text) const
    {
        EXPECT_NE(Editor().InsertKeywordText(SyntaxOf(text.substr(0, text.find('\n'))), place, text), nullptr);
    }
    void Append(const std::string& text) const { Insert(File().End(), text); }
    void Remove(const std::string& name) const { EXPECT_TRUE(Editor().RemoveKeyword(At(name))); }
    void SetData(const std::string& name, const std::string& text) const
    {
        EXPECT_TRUE(Editor().SetDataText(At(name), text));
    }
    /// The text of the file in a copy of the deck.
    std::string Exported() const
    {
        const std::string folder = m_deck.Dir().Path("copy");
        EXPECT_TRUE(m_deck.Keywords().ExportToDirectory(folder, Keywords::SimulatorType::Any, false));
        std::string text = Read("copy/A.INC");
        std::filesystem::remove_all(folder);
        return text;
    }
    void GoAhead() const { Editor().CommitFile(&File()); }
    void Commit() const { Editor().Commit(); }

    /// The file's extents, its header and its tail, as they are in memory and as who reads the file now finds them.
    void ExpectAsRead() const
    {
        const std::unique_ptr<IDeckManager> manager = DeckManagerFactory::Create();
        IDeck* fresh = manager->ImportDeck("Fresh", m_deck.Dir().Path("TOP.DATA"), false, true, false);
        IDeckKeywords& keywords = *fresh->GetDeckKeywords();
        for (KeywordIterator place = keywords.Begin(); place != keywords.PhysicalEnd(); ++place) {
        }
        for (IKeywordFile* file : keywords.GetFiles()) {
            if (file->GetFileName().GetFileName() == "A.INC") {
                EXPECT_EQ(Describe(File()), Describe(*file->AsKeywordFile()));
            }
        }
    }

private:
    static std::string Describe(const KeywordFile& file)
    {
        return TestDeck::Extents(file) + " [" + file.HeaderText() + "] [" + file.TailText() + "] tagged " +
               std::to_string(file.IsFileTagged());
    }

    TestDeck m_deck;
};

class PartialCommitTest : public testing::Test
{
protected:
    PartialCommitTest() { LineEnds::SetPolicy(LineEnds::Policy::Keep); }

    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
};

using Edit = std::function<void(const AheadDeck&)>;

const Edit none = [](const AheadDeck&) {};

/// Of a file of any kind: a commit that goes on writes what a commit in one go does.
TEST_F(PartialCommitTest, TheCommitGoesOnWhereTheTextBreaksOff)
{
    struct Case
    {
        const char* what;
        std::string text;
        Edit first;
        std::string ahead; ///< the text that breaks off
        Edit second;
        std::string expected;
    };
    const Edit change = [](const AheadDeck& deck) { deck.SetData("TABDIMS", " 7 /"); };
    const Edit append = [](const AheadDeck& deck) { deck.Append("WELLDIMS\n 3 /\n"); };
    const Edit appendFirst = [](const AheadDeck& deck) { deck.Append("TABDIMS\n 1 /\n"); };
    const Edit commentOut = [](const AheadDeck& deck) {
        EXPECT_TRUE(deck.Editor().CommentOut(deck.At("TABDIMS")));
        deck.Append("DIMENS\n 4 /\n");
    };
    const Edit commentOutLast = [](const AheadDeck& deck) {
        EXPECT_TRUE(deck.Editor().CommentOut(deck.At("EQLDIMS")));
    };
    const Edit words = [](const AheadDeck& deck) { deck.File().AddTextAtEnd("-- last\n", false); };
    const Edit setHeader = [](const AheadDeck& deck) { deck.Editor().SetHeaderComment(&deck.File(), "mine"); };
    const Edit removeAll = [](const AheadDeck& deck) {
        deck.Remove("TABDIMS");
        deck.Remove("EQLDIMS");
    };
    const std::string changed = "-- head\nTABDIMS\n 7 /\n\n-- above E\nEQLDIMS\n 2 /\n";
    const std::string commented = "-- head\n--TABDIMS\n--1 /\n\n-- above E\nEQLDIMS\n 2 /\n";
    const std::string header = "-- Generated [\n--mine\n-- Generated ]\n\n";
    const std::vector<Case> cases = {
        {"nothing between", written + rest, change, changed, none, changed + rest},
        {"new keywords behind", written + rest, change, changed, append, changed + "WELLDIMS\n 3 /\n" + rest},
        {"an open last line", written.substr(0, written.size() - 1), change, changed.substr(0, changed.size() - 1),
         append, changed + "WELLDIMS\n 3 /\n"},
        {"words behind an open last line", written + "-- end", change, changed, words, changed + "-- end\n-- last\n"},
        {"the tags of the file", tag + written + rest, change, tag + changed, append,
         tag + changed + "WELLDIMS\n 3 /\n" + rest},
        {"a mark", mark + written + rest, change, mark + changed, append, mark + changed + "WELLDIMS\n 3 /\n" + rest},
        {"a mark and nothing else", mark, appendFirst, mark + "TABDIMS\n 1 /\n", append,
         mark + "TABDIMS\n 1 /\nWELLDIMS\n 3 /\n"},
        {"a file of comments", "-- a\n\n-- b\n", appendFirst, "-- a\n\n-- b\nTABDIMS\n 1 /\n", append,
         "-- a\n\n-- b\nTABDIMS\n 1 /\nWELLDIMS\n 3 /\n"},
        {"an empty file", "", appendFirst, "TABDIMS\n 1 /\n", append, "TABDIMS\n 1 /\nWELLDIMS\n 3 /\n"},
        {"a keyword commented out", written + rest, commentOut, commented + "DIMENS\n 4 /\n", append,
         commented + "DIMENS\n 4 /\nWELLDIMS\n 3 /\n" + rest},
        {"the last commented out", written + rest, commentOutLast,
         "-- head\nTABDIMS\n1 /\n\n-- above E\n--EQLDIMS\n-- 2 /\n", append,
         "-- head\nTABDIMS\n1 /\n\n-- above E\n--EQLDIMS\n-- 2 /\nWELLDIMS\n 3 /\n" + rest},
        {"a header", written + rest, setHeader, header + written, append, header + written + "WELLDIMS\n 3 /\n" + rest},
        {"no keyword left", written + rest, removeAll, "-- head\n", append,
         "-- head\nWELLDIMS\n 3 /\n\n-- above E\n" + rest},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        const AheadDeck deck(test.text);
        const AheadDeck plain(test.text);
        test.first(deck);
        deck.GoAhead();
        EXPECT_EQ(deck.Ahead(), test.ahead);
        EXPECT_EQ(deck.Read(), test.text);
        EXPECT_TRUE(deck.File().IsModified());
        test.second(deck);
        deck.Commit();
        EXPECT_EQ(deck.Read(), test.expected);
        EXPECT_EQ(deck.Listing(), "A.INC TOP.DATA");
        EXPECT_FALSE(deck.File().IsModified());
        deck.ExpectAsRead();
        EXPECT_TRUE(m_log.Empty()) << m_log.Texts().front();
        test.first(plain);
        test.second(plain);
        plain.Commit();
        EXPECT_EQ(plain.Read(), test.expected);
        // What is loaded is the file: a further commit changes what it is about.
        EXPECT_TRUE(deck.Editor().SetComment(deck.At(deck.File().Begin()->GetName()), "below"));
        deck.Commit();
        std::string again = test.expected;
        const std::size_t at = static_cast<std::size_t>(deck.File().Begin()->GetPosition());
        EXPECT_EQ(deck.Read(), again.insert(again.find('\n', at) + 1, "--below\n"));
    }
}

/// What is written of the file, twice.
void GoAheadTwice(const AheadDeck& deck)
{
    deck.Append("WELLDIMS\n 3 /\n");
    deck.GoAhead();
    deck.Append("DIMENS\n 4 /\n");
    deck.GoAhead();
    EXPECT_TRUE(deck.Ahead().ends_with(written + "WELLDIMS\n 3 /\nDIMENS\n 4 /\n")) << deck.Ahead();
}

TEST_F(PartialCommitTest, WhereWhatIsWrittenChangesItIsWrittenAnew)
{
    struct Case
    {
        const char* what;
        Edit edit;
        bool isChange = true;
    };
    const auto text = [](const char* name) { return [name](const AheadDeck& deck) { deck.SetData(name, " 9 /"); }; };
    const auto removal = [](const char* name) { return [name](const AheadDeck& deck) { deck.Remove(name); }; };
    const std::vector<Case> cases = {
        {"nothing", none, false},
        {"a keyword behind", [](const AheadDeck& deck) { deck.Append("GAS\n"); }, false},
        {"keywords behind",
         [](const AheadDeck& deck) {
             deck.Append("GAS\n");
             deck.Append("WATER\n");
         },
         false},
        {"data of the first", text("TABDIMS")},
        {"data of one of the second time", text("DIMENS")},
        {"data, and a keyword behind",
         [](const AheadDeck& deck) {
             deck.SetData("WELLDIMS", " 9 /");
             deck.Append("GAS\n");
         }},
        {"a comment", [](const AheadDeck& deck) { deck.Editor().SetComment(deck.At("DIMENS"), "new"); }},
        {"a tag", [](const AheadDeck& deck) { deck.Editor().TagKeyword(*deck.At("EQLDIMS")); }},
        {"a suppression", [](const AheadDeck& deck) { deck.Editor().Suppress(deck.At("EQLDIMS")); }},
        {"one commented out", [](const AheadDeck& deck) { deck.Editor().CommentOut(deck.At("TABDIMS")); }},
        {"one ahead of the first", [](const AheadDeck& deck) { deck.Insert(deck.File().Begin(), "GAS\n"); }},
        {"one among them", [](const AheadDeck& deck) { deck.Insert(deck.At("DIMENS"), "GAS\n"); }},
        {"the first removed", removal("TABDIMS")},
        {"one removed that has others behind", removal("WELLDIMS")},
        {"the last removed", removal("DIMENS")},
        {"the last removed, and another behind",
         [](const AheadDeck& deck) {
             deck.Remove("DIMENS");
             deck.Append("GAS\n");
         }},
        {"all removed",
         [](const AheadDeck& deck) {
             while (deck.File().Begin() != deck.File().End())
                 deck.Editor().RemoveKeyword(deck.File().Begin());
         }},
        {"one moved", [](const AheadDeck& deck) { deck.Editor().MoveKeyword(deck.At("EQLDIMS"), deck.File().End()); }},
        {"a header", [](const AheadDeck& deck) { deck.Editor().SetHeaderComment(&deck.File(), "mine"); }},
        {"a comment of one behind that has gone again",
         [](const AheadDeck& deck) {
             deck.Append("GAS\n");
             SetCommentAbove(deck.Editor(), deck.At("GAS"), "-- c");
             deck.Remove("GAS");
         }},
        {"the tag of the file", [](const AheadDeck& deck) { deck.File().DropFileTag(); }},
        {"words at the end",
         [](const AheadDeck& deck) {
             deck.File().AddTextAtEnd("-- last\n", false);
             EXPECT_EQ(deck.File().TextAtEnd(), rest + "-- last\n");
         },
         false},
        {"a comment above", [](const AheadDeck& deck) { SetCommentAbove(deck.Editor(), deck.At("DIMENS"), "-- c"); }},
        {"a comment above the first",
         [](const AheadDeck& deck) { SetCommentAbove(deck.Editor(), deck.At("TABDIMS"), "-- c"); }},
    };
    for (const Case& test : cases) {
        for (const bool warns : {true, false}) {
            for (const bool ahead : {false, true}) {
                SCOPED_TRACE(testing::Message() << test.what << ", warns " << warns << ", a third time " << ahead);
                Environment::Instance().LogWarningOnPartialCommitViolation(warns);
                m_log.Clear();
                const AheadDeck plain(tag + written + rest);
                plain.Append("WELLDIMS\n 3 /\n");
                plain.Append("DIMENS\n 4 /\n");
                test.edit(plain);
                plain.Commit();
                const AheadDeck deck(tag + written + rest);
                GoAheadTwice(deck);
                test.edit(deck);
                if (ahead) {
                    deck.GoAhead();
                    // The new text is in the place of the first, and the file is as it was.
                    EXPECT_EQ(deck.Listing(), "A.INC A_INC__.tmp TOP.DATA");
                    EXPECT_EQ(deck.Read(), tag + written + rest);
                    const std::string expected = plain.Read();
                    EXPECT_TRUE(expected.starts_with(deck.Ahead())) << deck.Ahead();
                    EXPECT_EQ(m_log.Count(), test.isChange && warns ? 1 : 0);
                }
                deck.Commit();
                EXPECT_EQ(deck.Read(), plain.Read());
                EXPECT_EQ(deck.Listing(), "A.INC TOP.DATA");
                deck.ExpectAsRead();
                std::vector<std::string> told;
                if (test.isChange && warns) {
                    told.emplace_back("File that was written in partial commit has been changed: A.INC. "
                                      "This will cause the file to be re-written.");
                }
                EXPECT_EQ(m_log.Texts(), told);
                EXPECT_EQ(m_log.Texts(2), told);
            }
        }
    }
}

TEST_F(PartialCommitTest, ADiscardGoesBackToTheFile)
{
    const auto change = [](const AheadDeck& deck) { deck.SetData("TABDIMS", " 9 /"); };
    const std::vector<std::function<void(const AheadDeck&)>> ways = {
        [](const AheadDeck& deck) { deck.GoAhead(); },
        GoAheadTwice,
        [&](const AheadDeck& deck) {
            GoAheadTwice(deck);
            change(deck);
        },
        [&](const AheadDeck& deck) {
            GoAheadTwice(deck);
            change(deck);
            deck.GoAhead();
        },
        [&](const AheadDeck& deck) {
            deck.Editor().CommentOut(deck.At("TABDIMS"));
            deck.GoAhead();
        },
    };
    for (const auto& way : ways) {
        const AheadDeck deck(tag + written + rest);
        way(deck);
        deck.Editor().Discard();
        EXPECT_EQ(deck.Listing(), "A.INC TOP.DATA");
        EXPECT_EQ(deck.Read(), tag + written + rest);
        EXPECT_FALSE(deck.File().IsModified());
        deck.ExpectAsRead();
        // And the file may go ahead once more.
        change(deck);
        deck.GoAhead();
        deck.Commit();
        EXPECT_EQ(deck.Read(), tag + "-- head\nTABDIMS\n 9 /\n\n-- above E\nEQLDIMS\n 2 /\n" + rest);
    }
}

TEST_F(PartialCommitTest, AHeaderOutlivesTheDiscardOfWhatItStandsIn)
{
    const AheadDeck deck(written + rest);
    deck.Editor().SetHeaderComment(&deck.File(), "mine");
    deck.SetData("TABDIMS", " 9 /");
    deck.GoAhead();
    deck.Editor().Discard();
    EXPECT_EQ(deck.Read(), written + rest);
    deck.Commit();
    EXPECT_EQ(deck.Read(), "-- Generated [\n--mine\n-- Generated ]\n\n" + written + rest);
    deck.ExpectAsRead();
}

/// Nothing is kept in memory of what is written: who asks is answered from there.
TEST_F(PartialCommitTest, WhatIsWrittenIsReadFromThere)
{
    const AheadDeck deck(written + rest);
    deck.SetData("TABDIMS", " 7 /");
    const auto valueOf = [&] {
        const Keywords::IKeywordData* data = deck.DeckKeywords().GetKeywordData(*deck.At("TABDIMS"));
        return static_cast<const Keywords::IKeywordRecordData*>(data)->GetItem(0).GetInteger();
    };
    EXPECT_EQ(valueOf(), 7);
    deck.GoAhead();
    std::string text = deck.Ahead();
    text[text.find('7')] = '8';
    deck.Write("A_INC__.tmp", text);
    EXPECT_EQ(valueOf(), 8);
    EXPECT_EQ(*deck.DeckKeywords().GetDataText(*deck.At("TABDIMS")), " 8 /\n\n-- above E");
}

TEST_F(PartialCommitTest, AFileThatIsNewGoesAhead)
{
    const TestDeck deck(TestDeck::Texts{{"TOP.DATA", "RUNSPEC\nINCLUDE\n'A.INC' /\n"}});
    deck.Walk(true);
    IDeckKeywordsEditor& editor = *deck.Manager().GetEditor(&deck.Deck());
    for (const char* name : {"OIL", "GAS"}) {
        EXPECT_NE(editor.InsertKeywordText(SyntaxOf(name), deck.File("A.INC").End(), ""), nullptr);
        editor.CommitFile(&deck.File("A.INC"));
        EXPECT_EQ(deck.Dir().Listing(), "A_INC__.tmp TOP.DATA");
    }
    editor.Commit();
    EXPECT_EQ(deck.Walk(true), deck.WalkOfDisk());
    EXPECT_EQ(deck.Dir().Listing(), "A.INC TOP.DATA");
}

TEST_F(PartialCommitTest, WhatOthersDoMeanwhileStopsTheCommit)
{
    // The file has another text.
    {
        const AheadDeck deck(written + rest);
        GoAheadTwice(deck);
        deck.Write("A.INC", "OIL\n");
        EXPECT_THROW(deck.Commit(), DeckManagerException);
        EXPECT_THROW(deck.GoAhead(), DeckManagerException);
        EXPECT_EQ(deck.Read(), "OIL\n");
        deck.Editor().Discard();
        EXPECT_EQ(deck.Listing(), "A.INC TOP.DATA");
        deck.ExpectAsRead();
    }
    // The text beside it has gone, lost its end, or got a longer one.
    for (const char* what : {"gone", "cut", "longer"}) {
        for (const bool changes : {false, true}) {
            SCOPED_TRACE(testing::Message() << what << ", changes " << changes);
            const AheadDeck deck(written + rest);
            GoAheadTwice(deck);
            const std::string text = deck.Ahead();
            if (*what == 'g') deck.Delete("A_INC__.tmp");
            if (*what == 'c') deck.Write("A_INC__.tmp", text.substr(0, text.size() - 9));
            if (*what == 'l') deck.Write("A_INC__.tmp", text + "-- not ours\n");
            if (changes) deck.SetData("TABDIMS", " 9 /");
            if (*what == 'l') {
                // What stands there behind the end is nobody's.
                std::string expected = written + "WELLDIMS\n 3 /\nDIMENS\n 4 /\n" + rest;
                if (changes) expected.replace(expected.find("1 /"), 3, " 9 /");
                EXPECT_EQ(deck.Exported(), expected);
                m_log.Clear();
                deck.Commit();
                EXPECT_EQ(deck.Read(), expected);
                EXPECT_EQ(m_log.Count(), changes ? 1 : 0);
            } else {
                EXPECT_THROW(deck.Commit(), DeckManagerException);
                EXPECT_EQ(deck.Read(), written + rest);
                deck.Editor().Discard();
                EXPECT_EQ(deck.Read(), written + rest);
            }
            EXPECT_EQ(deck.Listing(), "A.INC TOP.DATA");
            deck.ExpectAsRead();
        }
    }
}

} // namespace
