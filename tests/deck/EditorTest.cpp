#include <stdexcept>

#include "tests/support/DeckTest.h"
#include <deckmanager/IKeywordVariablesResolver.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/KeywordDataFactory.h>

// Edits through the editor, in memory: what the deck then is, what is refused, and what a discard gives back.

namespace {

using namespace DeckTests;

const std::string topText = "RUNSPEC\nDIMENS\n1 2 3 /\nOIL\nINCLUDE\n'A.INC' /\nPROPS\nDENSITY\n1 2 3 /\nEND\n";
const std::string includedText = "WATER\nTABDIMS\n1 2 /\n";

class EditorTest : public testing::Test
{
protected:
    IDeckKeywordsEditor& Editor() { return *m_deck.Manager().GetEditor(&m_deck.Deck()); }
    std::string DataTextAt(const std::string& name)
    {
        const std::shared_ptr<std::string> text = m_deck.Keywords().GetDataText(*m_deck.At(name));
        return text ? *text : "(none)";
    }

    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
    TestDeck m_deck{TestDeck::Texts{{"TOP.DATA", topText}, {"A.INC", includedText}}};
};

/// Hears the changes of a file.
struct Listener
{
    explicit Listener(KeywordFile& heard) : file(heard) { file.fileChanged.Add(this, &Listener::Hear); }
    ~Listener() { file.fileChanged.Remove(this, &Listener::Hear); }
    void Hear(KeywordFileEventArgs& args)
    {
        text += std::to_string(args.GetKind());
        if (args.GetKeyword() != nullptr) text += args.GetKeyword()->GetName();
        text += ' ';
        if (const auto react = std::exchange(reaction, {})) react();
    }

    KeywordFile& file;
    std::string text;
    std::function<void()> reaction; ///< to the first change
};

TEST_F(EditorTest, ListChangesShowInTheWalkAndGoWithADiscard)
{
    const std::string before = m_deck.Walk(true);
    ASSERT_EQ(before, "RUNSPEC DIMENS OIL INCLUDE WATER TABDIMS PROPS DENSITY END");
    IDeckKeywordsEditor& editor = Editor();
    const Listener top(m_deck.TopFile());

    const IKeyword* gas = editor.InsertKeywordText(SyntaxOf("GAS"), m_deck.At("TABDIMS"), "GAS\n");
    ASSERT_NE(gas, nullptr);
    EXPECT_EQ(gas->GetFile(), &m_deck.File("A.INC"));
    EXPECT_TRUE(editor.RemoveKeyword(m_deck.At("WATER")));
    EXPECT_TRUE(editor.MoveKeyword(m_deck.At("OIL"), m_deck.At("GAS")));
    EXPECT_EQ((*m_deck.At("OIL"))->GetFile(), &m_deck.File("A.INC"));
    EXPECT_EQ(m_deck.Walk(true), "RUNSPEC DIMENS INCLUDE OIL GAS TABDIMS PROPS DENSITY END");
    EXPECT_EQ(top.text, "0GAS 1WATER 2OIL ");
    EXPECT_TRUE(m_deck.TopFile().IsModified());

    editor.Discard();
    EXPECT_EQ(m_deck.Walk(true), before);
    EXPECT_EQ((*m_deck.At("OIL"))->GetFile(), &m_deck.TopFile());
    EXPECT_FALSE(m_deck.TopFile().IsModified() || m_deck.File("A.INC").IsModified());
}

TEST_F(EditorTest, AMoveToWhereTheKeywordStandsIsNone)
{
    const Listener top(m_deck.TopFile());
    EXPECT_FALSE(Editor().MoveKeyword(m_deck.At("DIMENS"), m_deck.At("DIMENS")));
    EXPECT_FALSE(Editor().MoveKeyword(m_deck.At("DIMENS"), m_deck.At("OIL")));
    EXPECT_FALSE(Editor().RemoveKeyword(m_deck.TopFile().End()));
    EXPECT_EQ(top.text, "");
    EXPECT_FALSE(m_deck.TopFile().IsModified());
}

TEST_F(EditorTest, DataOfANewKeywordAreReadFromWhatItWasGiven)
{
    IDeckKeywordsEditor& editor = Editor();
    const IKeyword* byText = editor.InsertKeywordText(SyntaxOf("EQLDIMS"), m_deck.At("PROPS"), "EQLDIMS\n 7 2* 9 /");
    ASSERT_NE(byText, nullptr);
    EXPECT_FALSE(static_cast<const Keyword*>(byText)->IsDataChanged());
    const Keywords::IKeywordData* data = m_deck.Keywords().GetKeywordData(byText);
    ASSERT_NE(data, nullptr);

    // A tree of another keyword's is refused, and taken.
    EXPECT_EQ(editor.InsertKeyword(SyntaxOf("DENSITY"), m_deck.At("PROPS"), data->CloneSafely(), ""), nullptr);
    const IKeyword* byTree =
        editor.InsertKeyword(SyntaxOf("EQLDIMS"), m_deck.At("PROPS"), data->CloneSafely(), "EQLDIMS");
    ASSERT_NE(byTree, nullptr);
    EXPECT_NE(byTree->GetText()->find("7 1* 1* 9 /"), std::string::npos) << *byTree->GetText();

    // Taking its data leaves a keyword that stands in no file as it is.
    EXPECT_NE(editor.GetAndResetData(byTree), nullptr);
    EXPECT_NE(byTree->GetText()->find("7 1* 1* 9 /"), std::string::npos) << *byTree->GetText();
    ASSERT_TRUE(editor.SetDataText(m_deck.Keywords().GetFileIterator(byTree), " 5 /"));
    EXPECT_NE(editor.GetAndResetData(byTree), nullptr);
    EXPECT_NE(byTree->GetText()->find(" 5 /"), std::string::npos) << *byTree->GetText();
    EXPECT_EQ(editor.GetAndResetData(nullptr), nullptr);
}

TEST_F(EditorTest, TextsAreTakenWholeOrNotAtAll)
{
    IDeckKeywordsEditor& editor = Editor();
    const std::string tag = Environment::Instance().GetKeywordGeneratedTag();
    const KeywordIterator density = m_deck.At("DENSITY");
    const KeywordFileIterator dimens = m_deck.Keywords().GetFileIterator(m_deck.At("DIMENS"));

    EXPECT_EQ(editor.InsertKeywordText(SyntaxOf("EQLDIMS"), density, "EQLDIMS\n1 /\nGAS\n"), nullptr);
    EXPECT_FALSE(editor.SetDataText(dimens, "4 5 6 /\nGAS\n"));
    EXPECT_FALSE(editor.SetKeywordText(dimens, "TABDIMS\n4 5 6 /\n"));
    EXPECT_FALSE(editor.SetKeywordText(dimens, "4 5 6 /\n"));
    EXPECT_FALSE(m_deck.TopFile().IsModified());

    EXPECT_TRUE(editor.SetKeywordText(dimens, "DIMENS   " + tag + "\n4 5 6 /\n"));
    EXPECT_TRUE((*dimens)->IsGenerated());
    EXPECT_EQ(DataTextAt("DIMENS"), "4 5 6 /");
    EXPECT_TRUE(editor.SetKeywordText(dimens, "DIMENS\n4 5 7 /\n"));
    EXPECT_FALSE((*dimens)->IsGenerated());

    // Text without a keyword line is data.
    const IKeyword* bare = editor.InsertKeywordText(SyntaxOf("EQLDIMS"), density, " 3 /");
    ASSERT_NE(bare, nullptr);
    EXPECT_EQ(*m_deck.Keywords().GetDataText(bare), " 3 /");

    // What else a text holds is the user's too.
    // A byte order mark is none of it.
    const std::string mark = "\xEF\xBB\xBF";
    ASSERT_NE(editor.InsertKeywordText(SyntaxOf("TSTEP"), density, mark + "TSTEP -- days\n1 /\n"), nullptr);
    EXPECT_TRUE(editor.SetDataText(dimens, mark + "4 5 8 /"));
    EXPECT_EQ(DataTextAt("DIMENS"), "4 5 8 /");

    const std::string whole = "-- ahead\n\nEQLDIMS -- beside\n-- below\n 3 /\n-- behind\n";
    ASSERT_NE(editor.InsertKeywordText(SyntaxOf("EQLDIMS"), density, " also ahead\n" + whole), nullptr);
    LineEnds::SetPolicy(LineEnds::Policy::Keep);
    editor.Commit();
    EXPECT_NE(
        m_deck.Dir().Read("TOP.DATA").find("EQLDIMS\n 3 /\nTSTEP -- days\n1 /\n-- also ahead\n" + whole + "DENSITY\n"),
        std::string::npos)
        << m_deck.Dir().Read("TOP.DATA");
}

TEST_F(EditorTest, TheGuardRefusesWithoutAWord)
{
    IDeckKeywordsEditor& editor = Editor();
    m_deck.TopFile().SetReadOnly();
    const KeywordIterator oil = m_deck.At("OIL");
    EXPECT_EQ(editor.InsertKeywordText(SyntaxOf("GAS"), oil, "GAS\n"), nullptr);
    EXPECT_EQ(editor.InsertKeyword(SyntaxOf("GAS"), oil, nullptr, ""), nullptr);
    EXPECT_FALSE(editor.RemoveKeyword(oil) || editor.MoveKeyword(oil, m_deck.At("WATER")) ||
                 editor.MoveKeyword(m_deck.At("WATER"), oil) || editor.SetDataText(m_deck.At("DIMENS"), "1 /") ||
                 editor.SetComment(oil, "c") || editor.CommentOut(oil) || editor.Suppress(oil) ||
                 editor.Unsuppress(oil) || editor.SetKeywordText(oil, "OIL\n"));
    editor.TagKeyword(*oil);
    editor.TagAllKeywords();
    EXPECT_FALSE(m_deck.TopFile().IsModified());
    EXPECT_TRUE(m_log.Texts().empty());

    editor.Close();
    EXPECT_EQ(m_deck.Manager().GetEditor()->GetOrCreateSection(SectionType::GRID, nullptr), nullptr);
}

TEST_F(EditorTest, AMissingSectionIsMadeInItsPlace)
{
    bool existed = true;
    ASSERT_NE(Editor().GetOrCreateSection(SectionType::GRID, &existed), nullptr);
    EXPECT_FALSE(existed);
    EXPECT_EQ(m_deck.Walk(true), "RUNSPEC DIMENS OIL INCLUDE WATER TABDIMS GRID PROPS DENSITY END");
    ASSERT_NE(Editor().GetOrCreateSection(SectionType::PROPS, &existed), nullptr);
    EXPECT_TRUE(existed);
    ASSERT_NE(Editor().GetOrCreateSection(SectionType::SCHEDULE, nullptr), nullptr);
    EXPECT_EQ(m_deck.Walk(), "RUNSPEC DIMENS OIL INCLUDE WATER TABDIMS GRID PROPS DENSITY SCHEDULE END");
    EXPECT_EQ(Editor().GetOrCreateSection(SectionType::None, nullptr), nullptr);
}

TEST_F(EditorTest, AnIncludeGoesWithTheLastOfItsFile)
{
    IDeckKeywordsEditor& editor = Editor();
    EXPECT_TRUE(editor.RemoveKeywords(m_deck.At("OIL"), m_deck.At("TABDIMS")));
    EXPECT_EQ(m_deck.Walk(true), "RUNSPEC DIMENS INCLUDE TABDIMS PROPS DENSITY END");
    EXPECT_TRUE(editor.RemoveKeywords(m_deck.At("INCLUDE"), m_deck.At("DENSITY")));
    EXPECT_EQ(m_deck.Walk(true), "RUNSPEC DIMENS DENSITY END");
    EXPECT_FALSE(editor.RemoveKeywords(m_deck.At("DENSITY"), m_deck.At("DENSITY")));
    editor.Discard();
    EXPECT_EQ(m_deck.Walk(true), "RUNSPEC DIMENS OIL INCLUDE WATER TABDIMS PROPS DENSITY END");
}

/// The walk comes to a shared file twice; its keywords go once.
TEST_F(EditorTest, AFileThatIsIncludedTwiceIsEmptiedOnce)
{
    const TestDeck deck(
        TestDeck::Texts{{"T.DATA", "RUNSPEC\nINCLUDE\nA.INC /\nOIL\nINCLUDE\nA.INC /\nDIMENS\n1 2 3 /\n"},
                        {"A.INC", "WATER\nINCLUDE\nB.INC /\n"},
                        {"B.INC", "GAS\n"}});
    IDeckKeywordsEditor& editor = *deck.Manager().GetEditor(&deck.Deck());
    ASSERT_EQ(deck.Walk(true), "RUNSPEC INCLUDE WATER INCLUDE GAS OIL INCLUDE WATER INCLUDE GAS DIMENS");
    EXPECT_TRUE(editor.RemoveKeywords(deck.At("INCLUDE"), deck.At("DIMENS")));
    EXPECT_EQ(deck.Walk(true), "RUNSPEC DIMENS");
    editor.Discard();
    EXPECT_EQ(deck.Walk(true), "RUNSPEC INCLUDE WATER INCLUDE GAS OIL INCLUDE WATER INCLUDE GAS DIMENS");
}

TEST_F(EditorTest, ARangeThatNeverEndsRemovesNothing)
{
    EXPECT_FALSE(Editor().RemoveKeywords(m_deck.At("PROPS"), m_deck.At("DIMENS")));
    EXPECT_FALSE(m_deck.TopFile().IsModified());
}

/// The text of a removed keyword is still on the disk, and none of the comment above its neighbour.
TEST_F(EditorTest, CommentsAboveAreReadPastRemovedKeywords)
{
    const TestDeck deck(TestDeck::Texts{
        {"C.DATA", "DIMENS\n1 2 3 /\n-- above T\nTABDIMS\n1\n-- in T\n2 /\n-- above E\nEQLDIMS\n1 /\n"}});
    IDeckKeywordsEditor& editor = *deck.Manager().GetEditor(&deck.Deck());
    ASSERT_TRUE(editor.RemoveKeyword(deck.At("TABDIMS")));
    EXPECT_EQ(deck.Keywords().GetComment(deck.At("EQLDIMS"), false), "-- above E\n");
    ASSERT_TRUE(editor.MoveKeyword(deck.At("EQLDIMS"), deck.At("DIMENS")));
    EXPECT_EQ(deck.Keywords().GetComment(deck.At("EQLDIMS"), false), "-- above E\n");
}

/// What a host hands on may be part of what the edit changes.
TEST_F(EditorTest, PositionsMayBeThoseOfKeywordsThatGo)
{
    IDeckKeywordsEditor& editor = Editor();
    KeywordFile& top = m_deck.TopFile();
    editor.MoveKeyword(top.GetINCLUDEKeywords().front(), top.Begin());
    EXPECT_EQ(m_deck.Walk(true), "INCLUDE WATER TABDIMS RUNSPEC DIMENS OIL PROPS DENSITY END");
    editor.Discard();
    const KeywordIterator first = m_deck.At("WATER");
    EXPECT_TRUE(editor.RemoveKeywords(first, m_deck.Keywords().LogicalEnd()));
    EXPECT_EQ(m_deck.Walk(true), "RUNSPEC DIMENS OIL INCLUDE END");
    EXPECT_TRUE(editor.RemoveKeyword(top.GetINCLUDEKeywords().front()));
    EXPECT_EQ(m_deck.Walk(true), "RUNSPEC DIMENS OIL END");
    EXPECT_EQ(top.GetINCLUDEKeywords().size(), 0u);
}

TEST_F(EditorTest, AFileOfAnotherDeckIsNotOverwritten)
{
    const TestSupport::TempDir folder;
    folder.Write("OTHER.DATA", "RUNSPEC\nGAS\n");
    const IDeck* other = m_deck.Manager().ImportDeck("Other", folder.Path("OTHER.DATA"), false, true, false);
    IDeckKeywordsEditor& editor = Editor();
    editor.SetDataText(m_deck.At("DIMENS"), " 4 5 6 /");
    for (const bool commitFirst : {true, false}) {
        std::istringstream text("RUNSPEC\nOIL\n");
        editor.OverwriteFile(other->GetDeckKeywords()->GetDataFile(), text, true, commitFirst, false);
        EXPECT_EQ(folder.Read("OTHER.DATA"), "RUNSPEC\nGAS\n");
        // Nor are the edits of the deck brought to the disk for it, or dropped.
        EXPECT_EQ(m_deck.Dir().Read("TOP.DATA"), topText);
        EXPECT_EQ(DataTextAt("DIMENS"), " 4 5 6 /");
    }
}

TEST_F(EditorTest, AnIncludeDoesNotMoveIntoItsOwnTree)
{
    EXPECT_FALSE(Editor().MoveKeyword(m_deck.At("INCLUDE"), m_deck.At("WATER")));
    EXPECT_FALSE(m_deck.TopFile().IsModified());
    EXPECT_TRUE(Editor().MoveKeyword(m_deck.At("INCLUDE"), m_deck.At("DENSITY")));
    EXPECT_EQ(m_deck.Walk(true), "RUNSPEC DIMENS OIL PROPS INCLUDE WATER TABDIMS DENSITY END");
    EXPECT_EQ(m_deck.Keywords().SectionOf(m_deck.At("WATER")), SectionType::PROPS);
    EXPECT_EQ(m_deck.File("A.INC").GetStartSection(), SectionType::PROPS);
}

TEST_F(EditorTest, MarksChangeNothingWhenTheyStandAlready)
{
    IDeckKeywordsEditor& editor = Editor();
    EXPECT_TRUE(editor.Unsuppress(m_deck.At("OIL")));
    EXPECT_FALSE(m_deck.TopFile().IsModified());
    EXPECT_TRUE(editor.Suppress(m_deck.At("OIL")));
    EXPECT_TRUE((*m_deck.At("OIL"))->IsSuppressed() && m_deck.TopFile().IsModified());
    EXPECT_TRUE(editor.CommentOut(m_deck.At("DIMENS")) && editor.SetComment(m_deck.At("DENSITY"), "heavy"));
    EXPECT_EQ((*m_deck.At("DENSITY"))->GetComment(), "heavy");
    editor.InsertKeyword(SyntaxOf("GAS"), m_deck.At("PROPS"), nullptr, "");
    editor.TagAllKeywords();
    EXPECT_TRUE((*m_deck.At("GAS"))->IsGenerated());
    EXPECT_FALSE((*m_deck.At("PROPS"))->IsGenerated());
    editor.UntagKeyword(*m_deck.At("GAS"));
    EXPECT_FALSE((*m_deck.At("GAS"))->IsGenerated());
    editor.Discard();
    EXPECT_FALSE((*m_deck.At("OIL"))->IsSuppressed() || (*m_deck.At("DIMENS"))->IsCommentedOut());
    EXPECT_EQ((*m_deck.At("DENSITY"))->GetComment(), "");
}

/// A region that is skipped is text: no keyword can be put into it, and neither of its ends taken away.
TEST_F(EditorTest, SkippedRegionsStayWhole)
{
    Environment::Instance().EnableSKIPENDSKIP(true, Keywords::SimulatorType::S100);
    const TestDeck deck(
        TestDeck::Texts{{"S.DATA", "RUNSPEC\nOIL\nSKIP\nGAS\nSKIP300\nWATER\nENDSKIP\nENDSKIP\nDIMENS\n1 2 3 /\n"}});
    IDeckKeywordsEditor& editor = *deck.Manager().GetEditor(&deck.Deck());
    ASSERT_EQ(deck.Walk(true), "RUNSPEC OIL SKIP SKIP300 ENDSKIP ENDSKIP DIMENS");
    for (const auto& [name, n] : {std::pair("SKIP300", 1), {"ENDSKIP", 1}, {"ENDSKIP", 2}}) {
        EXPECT_EQ(editor.InsertKeywordText(SyntaxOf("BRINE"), deck.At(name, n), ""), nullptr) << name << n;
        EXPECT_FALSE(editor.MoveKeyword(deck.At("OIL"), deck.At(name, n))) << name << n;
    }
    for (const char* name : {"SKIP", "SKIP300", "ENDSKIP"}) {
        EXPECT_FALSE(editor.RemoveKeyword(deck.At(name)) || editor.CommentOut(deck.At(name)) ||
                     editor.Suppress(deck.At(name)) || editor.MoveKeyword(deck.At(name), deck.At("OIL")))
            << name;
    }
    EXPECT_FALSE(deck.TopFile().IsModified());
    EXPECT_TRUE(editor.MoveKeyword(deck.At("OIL"), deck.At("DIMENS")));
    EXPECT_NE(editor.InsertKeywordText(SyntaxOf("BRINE"), deck.At("SKIP"), ""), nullptr);
    EXPECT_EQ(deck.Walk(true), "RUNSPEC BRINE SKIP SKIP300 ENDSKIP ENDSKIP OIL DIMENS");

    // An ENDSKIP ahead of it that ends nothing doesn't end it.
    const TestDeck open(TestDeck::Texts{{"O.DATA", "RUNSPEC\nENDSKIP\nSKIP\nGAS\n"}});
    IDeckKeywordsEditor& other = *open.Manager().GetEditor(&open.Deck());
    EXPECT_EQ(other.InsertKeywordText(SyntaxOf("BRINE"), open.TopFile().End(), ""), nullptr);
}

struct Resolver : IKeywordVariablesResolver
{
    bool Resolve(const Keywords::IKeywordData*, const Keywords::IKeywordVariables* variables,
                 std::string& text) override
    {
        if (fails) throw std::runtime_error("no value");
        seen += variables != nullptr;
        text.replace(text.find("$NX"), 3, "12");
        return accepts;
    }

    bool accepts = true;
    bool fails = false;
    int seen = 0;
};

TEST_F(EditorTest, VariablesAreResolvedByTheHost)
{
    const TestDeck deck(TestDeck::Texts{{"V.DATA", "RUNSPEC\nDIMENS\n$NX 2 3 /\nOIL\n"}});
    IDeckKeywordsEditor& editor = *deck.Manager().GetEditor(&deck.Deck());
    Resolver resolver;
    EXPECT_TRUE(editor.ResolveVariables(deck.At("OIL"), resolver));
    resolver.accepts = false;
    EXPECT_FALSE(editor.ResolveVariables(deck.At("DIMENS"), resolver));
    resolver.fails = true;
    EXPECT_THROW(editor.ResolveVariables(deck.At("DIMENS"), resolver), std::runtime_error);
    EXPECT_FALSE(deck.TopFile().IsModified());
    resolver = Resolver();
    EXPECT_TRUE(editor.ResolveVariables(deck.At("DIMENS"), resolver));
    EXPECT_EQ(resolver.seen, 1);
    EXPECT_EQ(*deck.Keywords().GetDataText(*deck.At("DIMENS")), "12 2 3 /");

    const TestDeck plain(TestDeck::Texts{{"P.DATA", "RUNSPEC\nOIL\n"}}, false);
    EXPECT_FALSE(plain.Manager().GetEditor(&plain.Deck())->ResolveVariables(plain.At("OIL"), resolver));
}

/// What was edited below an INCLUDE goes with the deck, also where the INCLUDE has come to name another file since, or
/// has come and gone.
TEST_F(EditorTest, EditsBelowAnIncludeOutliveIt)
{
    enum Way
    {
        Renamed,
        ComeAndGone,
        RenamedAndGone,
        RenamedAndWritten
    };
    for (const Way way : {Renamed, ComeAndGone, RenamedAndGone, RenamedAndWritten}) {
        for (const bool commits : {false, true}) {
            SCOPED_TRACE(testing::Message() << "way " << way << ", commits " << commits);
            const TestDeck deck(TestDeck::Texts{{"T.DATA", "RUNSPEC\nINCLUDE\nA.INC /\nDIMENS\n1 2 3 /\n"},
                                                {"A.INC", "TABDIMS\n1 /\n"},
                                                {"B.INC", "TABDIMS\n2 /\n"}});
            IDeckKeywordsEditor& editor = *deck.Manager().GetEditor(&deck.Deck());
            const std::string edited = way == ComeAndGone ? "B.INC" : "A.INC";
            const std::string before = deck.Dir().Read(edited);
            if (way == ComeAndGone) {
                editor.InsertKeywordText(SyntaxOf("INCLUDE"), deck.At("DIMENS"), "'B.INC' /\n");
                ASSERT_TRUE(editor.SetDataText(deck.At("TABDIMS", 2), " 7 /"));
                ASSERT_TRUE(editor.RemoveKeyword(deck.At("INCLUDE", 2)));
            } else {
                ASSERT_TRUE(editor.SetDataText(deck.At("TABDIMS"), " 7 /"));
                ASSERT_TRUE(editor.SetDataText(deck.At("INCLUDE"), "'B.INC' /"));
                if (way == RenamedAndGone) editor.RemoveKeyword(deck.At("INCLUDE"));
                if (way == RenamedAndWritten) editor.CommitFile(&deck.TopFile());
            }
            commits ? editor.Commit() : editor.Discard();
            EXPECT_EQ(deck.Dir().Read(edited), commits ? "TABDIMS\r\n 7 /\r\n" : before);
            EXPECT_EQ(deck.Dir().Listing(), "A.INC B.INC T.DATA");
            if (commits) continue;
            EXPECT_EQ(deck.Walk(true), "RUNSPEC INCLUDE TABDIMS DIMENS");
            EXPECT_EQ(*deck.Keywords().GetDataText(*deck.At("TABDIMS")), "1 /");
        }
    }
}

/// The keywords that were moved between it and others stand where they are read from: none is lost, none twice.
TEST_F(EditorTest, AFileThatIsReadAnewMidwayTakesNoKeywordAlong)
{
    LineEnds::SetPolicy(LineEnds::Policy::Keep);
    const TestDeck::Texts texts{{"T.DATA", "RUNSPEC\nINCLUDE\nA.INC /\nINCLUDE\nB.INC /\n"},
                                {"A.INC", "OIL\n\n-- above\nTABDIMS\n1 /\nINCLUDE\nC.INC /\nGAS\n"},
                                {"B.INC", "WATER\n\n-- above\nDIMENS\n1 2 3 /\n"},
                                {"C.INC", "NOECHO\n"}};
    for (const char* name : {"A.INC", "B.INC"}) {
        for (const bool goesAhead : {false, true}) {
            SCOPED_TRACE(testing::Message() << name << ", ahead " << goesAhead);
            const TestDeck deck(texts);
            const std::string before = deck.Walk(true);
            IDeckKeywordsEditor& editor = *deck.Manager().GetEditor(&deck.Deck());
            const bool isSource = std::string(name) == "A.INC";
            editor.SetDataText(deck.At(isSource ? "DIMENS" : "TABDIMS"), " 7 /");
            if (goesAhead) editor.CommitFile(&deck.File(name));
            ASSERT_TRUE(editor.MoveKeyword(deck.At("TABDIMS"), deck.At("DIMENS")));
            ASSERT_TRUE(editor.MoveKeyword(deck.At("INCLUDE", 2), deck.At("DIMENS")));
            deck.File(name).Reload();
            EXPECT_EQ(deck.Walk(true), before);
            editor.Commit();
            EXPECT_EQ(deck.Walk(true), deck.WalkOfDisk());
            for (const auto& [file, text] : texts) {
                std::string expected = text;
                if (file != name && file == "B.INC") expected.replace(text.find("1 2 3"), 5, " 7");
                if (file != name && file == "A.INC") expected.replace(text.find("1 /"), 1, " 7");
                EXPECT_EQ(deck.Dir().Read(file), expected);
            }
        }
    }
}

TEST_F(EditorTest, FilesThatGoIntoEachOtherTheOtherWayRoundCloseNoRing)
{
    const TestDeck deck(TestDeck::Texts{{"T.DATA", "RUNSPEC\nINCLUDE\nA.INC /\nDIMENS\n1 2 3 /\n"},
                                        {"A.INC", "OIL\nINCLUDE\nB.INC /\n"},
                                        {"B.INC", "GAS\n"}});
    const std::string before = deck.Walk(true);
    ASSERT_EQ(before, "RUNSPEC INCLUDE OIL INCLUDE GAS DIMENS");
    IDeckKeywordsEditor& editor = *deck.Manager().GetEditor(&deck.Deck());
    for (const bool commits : {false, true}) {
        ASSERT_TRUE(editor.RemoveKeyword(deck.At("INCLUDE", 2)));
        ASSERT_TRUE(editor.SetDataText(deck.At("INCLUDE"), "'B.INC' /"));
        editor.InsertKeywordText(SyntaxOf("INCLUDE"), deck.At("GAS"), "'A.INC' /\n");
        EXPECT_EQ(deck.Walk(true), "RUNSPEC INCLUDE INCLUDE OIL GAS DIMENS");
        commits ? editor.Commit() : editor.Discard();
        EXPECT_EQ(deck.Walk(true), commits ? "RUNSPEC INCLUDE INCLUDE OIL GAS DIMENS" : before);
        EXPECT_TRUE(m_log.Empty());
    }
}

/// Another deck has its answers from files that it shares, and may not hear of what comes from elsewhere.
TEST_F(EditorTest, ADeckThatSharesFilesKeepsUp)
{
    const TestDeck deck(TestDeck::Texts{{"T.DATA", "RUNSPEC\nGAS\nDIMENS\n1 2 3 /\nINCLUDE\nA.INC /\nEND\n"},
                                        {"A.INC", "OIL\n\n-- above\nTABDIMS\n1 /\nINCLUDE\nB.INC /\nEQLDIMS\n1 /\n"},
                                        {"B.INC", "WATER\n"},
                                        {"U.DATA", "RUNSPEC\nINCLUDE\nA.INC /\nGRID\nINCLUDE\nB.INC /\n"}});
    IDeck* other = deck.Manager().ImportDeck("Other", deck.Dir().Path("U.DATA"), false, true, false);
    IDeckKeywords& keywords = *other->GetDeckKeywords();
    // What a host may hold: a place at each keyword of the other deck, and its ends.
    std::vector<std::pair<KeywordIterator, const IKeyword*>> held;
    for (KeywordIterator place = keywords.Begin(); place != keywords.PhysicalEnd(); ++place)
        held.emplace_back(place, *place);
    const KeywordIterator end = keywords.End();
    const auto walk = [&] {
        std::string names;
        for (KeywordIterator place = keywords.Begin(); place != keywords.End(); ++place)
            names += place->GetName() + " ";
        return names;
    };
    EXPECT_EQ(walk(), "RUNSPEC INCLUDE OIL TABDIMS INCLUDE WATER EQLDIMS GRID INCLUDE WATER ");

    IDeckKeywordsEditor& editor = *deck.Manager().GetEditor(&deck.Deck());
    ASSERT_TRUE(editor.MoveKeyword(deck.At("DIMENS"), deck.At("TABDIMS")));
    EXPECT_NE(keywords.FindKeyword(*deck.At("DIMENS")), keywords.End());
    ASSERT_TRUE(editor.SetDataText(deck.At("TABDIMS"), " 7 /"));
    ASSERT_NE(editor.InsertKeywordText(SyntaxOf("GAS"), deck.At("WATER"), ""), nullptr);
    EXPECT_EQ(keywords.End(), end);
    editor.Commit();
    EXPECT_EQ(walk(), "RUNSPEC INCLUDE OIL DIMENS TABDIMS INCLUDE GAS WATER EQLDIMS GRID INCLUDE GAS WATER ");
    for (const auto& [place, keyword] : held) {
        ASSERT_EQ(*place, keyword);
        EXPECT_EQ(keywords.FindKeyword(keyword) == keywords.End(), false) << keyword->GetName();
        EXPECT_EQ(keywords.GetFileIterator(place), keywords.GetFileIterator(keyword));
    }
    EXPECT_EQ(keywords.End(), end);
    EXPECT_EQ(keywords.GetComment(held[3].first, false), "-- above\n");
    // The end of the one deck becomes that of the other, which does not hear of it.
    ASSERT_TRUE(editor.MoveKeyword(deck.At("END"), deck.At("TABDIMS")));
    EXPECT_EQ(walk(), "RUNSPEC INCLUDE OIL DIMENS ");
    editor.Discard();
    EXPECT_EQ(walk(), "RUNSPEC INCLUDE OIL DIMENS TABDIMS INCLUDE GAS WATER EQLDIMS GRID INCLUDE GAS WATER ");
}

TEST_F(EditorTest, EachChangeIsHeardOnce)
{
    const TestDeck deck(TestDeck::Texts{{"T.DATA", "RUNSPEC\nINCLUDE\nA.INC /\nINCLUDE\nA.INC /\nDIMENS\n1 2 3 /\n"},
                                        {"A.INC", "GAS\nWATER\nOIL\nINCLUDE\nB.INC /\n"},
                                        {"B.INC", "BRINE\n"}});
    deck.Walk(true);
    IDeckKeywordsEditor& editor = *deck.Manager().GetEditor(&deck.Deck());
    Listener top(deck.TopFile());
    // Who hears may edit in turn.
    top.reaction = [&] { editor.RemoveKeyword(deck.At("WATER")); };
    editor.RemoveKeyword(deck.At("GAS"));
    editor.InsertKeyword(SyntaxOf("GAS"), deck.At("BRINE"), nullptr, "");
    EXPECT_EQ(std::exchange(top.text, ""), "1GAS 1WATER 0GAS ");
    // An INCLUDE is heard through wherever it stands, and no more once it is gone.
    ASSERT_TRUE(editor.MoveKeyword(deck.At("INCLUDE", 2), deck.At("DIMENS")));
    editor.RemoveKeyword(deck.At("BRINE"));
    editor.SetDataText(deck.At("INCLUDE", 3), "'B.INC' / twice");
    EXPECT_EQ(std::exchange(top.text, ""), "2INCLUDE 1BRINE 5INCLUDE ");
    ASSERT_TRUE(editor.RemoveKeyword(deck.At("INCLUDE", 3)));
    KeywordFile& former = deck.File("B.INC");
    EXPECT_EQ(std::exchange(top.text, ""), "1INCLUDE ");
    former.RemoveKeyword(former.Begin());
    EXPECT_EQ(top.text, "");
    editor.Discard();
    top.text.clear();
    editor.RemoveKeyword(deck.At("BRINE"));
    editor.CommentOut(deck.At("OIL"));
    editor.Commit();
    EXPECT_EQ(top.text, "1BRINE 1OIL ");
}

TEST_F(EditorTest, ManyKeywordsGoAtOnce)
{
    std::string text = "RUNSPEC\n";
    for (int i = 0; i < 5000; ++i)
        text += "OIL\n";
    const TestDeck deck(TestDeck::Texts{{"T.DATA", text + "DIMENS\n1 2 3 /\n"}});
    IDeckKeywordsEditor& editor = *deck.Manager().GetEditor(&deck.Deck());
    EXPECT_TRUE(editor.RemoveKeywords(deck.At("OIL"), deck.At("DIMENS")));
    editor.Commit();
    EXPECT_EQ(deck.Dir().Read("T.DATA"), "RUNSPEC\r\nDIMENS\r\n1 2 3 /\r\n");
}

} // namespace
