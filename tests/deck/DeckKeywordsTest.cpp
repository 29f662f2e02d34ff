#include "deck/DeckKeywords.h"
#include "deck/ScopeWalk.h"
#include "files/IteratorAccess.h"
#include "tests/support/DeckTest.h"
#include <deckmanager/Context.h>
#include <deckmanager/DeckPositions.h>
#include <deckmanager/KeywordIdEqual.h>

namespace {

using namespace DeckTests;

class DeckKeywordsTest : public testing::Test
{
protected:
    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
};

const class DeckKeywords& ViewOf(const TestDeck& deck)
{
    return static_cast<const class DeckKeywords&>(deck.Keywords());
}

std::string NameAt(const KeywordIterator& position)
{
    return *position != nullptr ? position->GetName() : "-";
}

TEST_F(DeckKeywordsTest, EmptyDeck)
{
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "-- nothing\n"}});
    const IDeckKeywords& keywords = deck.Keywords();
    EXPECT_EQ(keywords.Begin(), keywords.End());
    EXPECT_EQ(keywords.LogicalEnd(), keywords.PhysicalEnd());
    EXPECT_EQ(keywords.SectionBegin(SectionType::OPTIMIZE), keywords.End());
    EXPECT_EQ(keywords.SectionOf(keywords.Begin()), SectionType::None);
    std::string message = "x";
    EXPECT_TRUE(keywords.CheckSections(message));
    EXPECT_EQ(message, "");
}

TEST_F(DeckKeywordsTest, Sections)
{
    const TestDeck deck(
        {{"A.DATA", "OIL\nSCHEDULE\nTSTEP\n1 /\nGRID\nINCLUDE\n'b.inc' /\nGRID\nPORO\n1 /\nEND\nPROPS\nSWOF\n/\n"},
         {"b.inc", "PORO\n1 /\nGRID\nGRID\nPORO\n2 /\n"}});
    const IDeckKeywords& keywords = deck.Keywords();
    // Only the last of a file's duplicates gets past the load.
    EXPECT_EQ(deck.Walk(), "OIL SCHEDULE TSTEP GRID INCLUDE PORO PORO PORO END PROPS SWOF");
    EXPECT_EQ(NameAt(keywords.SectionBegin(SectionType::SCHEDULE)), "SCHEDULE");
    EXPECT_EQ(NameAt(keywords.SectionEnd(SectionType::SCHEDULE)), "GRID");
    EXPECT_EQ(keywords.SectionEnd(SectionType::GRID), keywords.End());
    EXPECT_EQ(keywords.SectionBegin(SectionType::PROPS), keywords.End()); // behind the end of the deck
    EXPECT_EQ(NameAt(keywords.End()), "END");
    EXPECT_EQ(keywords.SectionOf(deck.At("OIL")), SectionType::None);
    EXPECT_EQ(keywords.SectionOf(deck.At("GRID")), SectionType::GRID);
    EXPECT_EQ(keywords.SectionOf(deck.At("PORO")), SectionType::GRID);
    EXPECT_EQ(keywords.SectionOf(deck.At("SWOF")), SectionType::PROPS);
    EXPECT_EQ(keywords.SectionOf(keywords.PhysicalEnd()), SectionType::PROPS);

    Environment::Instance().DeckTerminatedByENDKeyword(false);
    EXPECT_EQ(keywords.End(), keywords.PhysicalEnd());
}

TEST_F(DeckKeywordsTest, SectionKeywordsThatRecur)
{
    const TestDeck deck({{"A.DATA", "RUNSPEC\nINCLUDE\n'b.inc' /\nINCLUDE\n'b.inc' /\nINCLUDE\n'b.inc' /\n"},
                         {"b.inc", "GRID\nPORO\n1 /\n"}});
    std::string message;
    EXPECT_FALSE(deck.Keywords().CheckSections(message));
    EXPECT_EQ(message, "The following section keywords occur more than once in the deck: GRID, GRID.");
    EXPECT_EQ(deck.Keywords().SectionEnd(SectionType::GRID), deck.At("GRID", 2));
}

TEST_F(DeckKeywordsTest, FindingIsTheWalkByAnotherWay)
{
    const TestDeck deck({{"A.DATA", "RUNSPEC\nINCLUDE\n'b.inc' /\nINCLUDE\n'c.inc' /\nINCLUDE\n'b.inc' /\nEND\nOIL\n"},
                         {"b.inc", "GAS\nINCLUDE\n'c.inc' /\nENDINC\nWATER\n"},
                         {"c.inc", "METRIC\nDISGAS\n"}});
    const IDeckKeywords& keywords = deck.Keywords();
    KeywordIterator position = keywords.Begin();
    position.SetIgnoreLogicalEnds(true);
    for (; *position != nullptr; ++position) {
        SCOPED_TRACE(position->GetName());
        // Literally: the first position between begin and end with that very keyword.
        KeywordIterator found = keywords.Begin();
        while (found != keywords.End() && *found != *position) {
            ++found;
        }
        const KeywordIterator answer = keywords.FindKeyword(*position);
        EXPECT_EQ(answer, found);
        EXPECT_TRUE(found == keywords.End() || IteratorAccess::IsIdentical(answer, found));

        EXPECT_EQ(*keywords.GetFileIterator(*position), *position);
        EXPECT_EQ(keywords.GetFileIterator(position), keywords.GetFileIterator(*position));
        EXPECT_EQ(*DeckPositionOf(*position, deck.Deck()), *position);
    }
    EXPECT_EQ(keywords.FindKeyword(nullptr), keywords.End());
    const TestDeck other(TestDeck::Texts{{"A.DATA", "OIL\n"}});
    EXPECT_EQ(keywords.FindKeyword(*other.At("OIL")), keywords.End());
    EXPECT_EQ(keywords.GetFileIterator(*other.At("OIL")), deck.TopFile().End());
}

TEST_F(DeckKeywordsTest, PlacesInFilesAsPositions)
{
    const TestDeck deck({{"A.DATA", "RUNSPEC\nINCLUDE\n'b.inc' /\nOIL\n"},
                         {"b.inc", "GAS\nINCLUDE\n'c.inc' /\n"},
                         {"c.inc", "METRIC\n"}});
    deck.Walk();
    EXPECT_EQ(NameAt(DeckPositionOf(deck.File("c.inc").End(), deck.Deck())), "OIL");
    EXPECT_EQ(DeckPositionOf(deck.TopFile().End(), deck.Deck()), deck.Keywords().PhysicalEnd());
    EXPECT_EQ(DeckPositionOf(KeywordFileIterator(), deck.Deck()), deck.Keywords().PhysicalEnd());

    const auto step = [&deck](KeywordIterator position) {
        StepOverInclude(position, deck.Deck());
        return NameAt(position);
    };
    EXPECT_EQ(step(deck.At("INCLUDE")), "OIL");
    EXPECT_EQ(step(deck.At("INCLUDE", 2)), "OIL");
    EXPECT_EQ(step(deck.At("GAS")), "INCLUDE");
    EXPECT_EQ(step(deck.At("METRIC")), "OIL");
    EXPECT_EQ(step(deck.At("OIL")), "-");
}

TEST_F(DeckKeywordsTest, PositionsBehindTheEndOfAFile)
{
    const TestDeck deck({{"A.DATA", "RUNSPEC\nINCLUDE\n'c.inc' /\nINCLUDE\n'b.inc' /\nOIL\n"},
                         {"b.inc", "GAS\nENDINC\nWATER\nDISGAS\n"},
                         {"c.inc", "METRIC\nENDINC\nINCLUDE\n'b.inc' /\n"}});
    // The way that the walk takes goes ahead of one from behind the end of c.inc.
    KeywordIterator position = DeckPositionOf(*deck.At("WATER"), deck.Deck());
    StepOverInclude(position, deck.Deck());
    EXPECT_EQ(NameAt(position), "DISGAS");
    StepOverInclude(position, deck.Deck());
    EXPECT_EQ(NameAt(position), "OIL");

    // A position that knows its own file only steps out of it all the same.
    position = IteratorAccess::At(deck.File("b.inc").Begin());
    for (int i = 0; i < 4; ++i) {
        StepOverInclude(position, deck.Deck());
    }
    EXPECT_EQ(NameAt(position), "OIL");

    const TestDeck other({{"A.DATA", "RUNSPEC\nINCLUDE\n'b.inc' /\n"}, {"b.inc", "GAS\nENDINC\nGRID\nPORO\n1 /\n"}});
    EXPECT_EQ(other.Keywords().SectionOf(other.At("GAS")), SectionType::RUNSPEC);
    EXPECT_EQ(other.Keywords().SectionOf(other.At("GRID")), SectionType::GRID);
    EXPECT_EQ(other.Keywords().SectionOf(other.At("PORO")), SectionType::GRID);
}

/// The place behind an included file is that behind the INCLUDE by which the walk came.
TEST_F(DeckKeywordsTest, AFileThatIsIncludedTwiceIsLeftByTheWayItWasEntered)
{
    const TestDeck deck({{"A.DATA", "RUNSPEC\nINCLUDE\n'b.inc' /\nOIL\nINCLUDE\n'b.inc' /\nWATER\n"},
                         {"b.inc", "GAS\nINCLUDE\n'c.inc' /\n"},
                         {"c.inc", "METRIC\n"}});
    const char* const behind[] = {"OIL", "WATER"};
    for (const int n : {1, 2}) {
        KeywordIterator position = deck.At("METRIC", n);
        StepOverInclude(position, deck.Deck());
        EXPECT_EQ(NameAt(position), behind[n - 1]);
        position = deck.At("GAS", n);
        StepOverInclude(position, deck.Deck());
        EXPECT_EQ(NameAt(position), "INCLUDE");
        StepOverInclude(position, deck.Deck());
        EXPECT_EQ(NameAt(position), behind[n - 1]);
    }
}

TEST_F(DeckKeywordsTest, FilesInTheOrderOfTheirIncludes)
{
    const TestDeck deck({{"A.DATA", "INCLUDE\n'y.inc' /\nINCLUDE\n'x.inc' /\n"},
                         {"y.inc", "INCLUDE\n'x.inc' /\nINCLUDE\n'w.inc' /\n"},
                         {"x.inc", "OIL\nINCLUDE\n't.inc' /\n"},
                         {"w.inc", "OIL\nINCLUDE\n't.inc' /\n"},
                         {"t.inc", "OIL\n"}});
    deck.Walk();
    EXPECT_EQ(deck.Keywords().GetIncludingKeyword(&deck.File("t.inc")), *deck.File("x.inc").GetINCLUDEKeywords()[0]);
    std::string files;
    for (const KeywordFileIterator& place : ViewOf(deck).FindKeywords("OIL", false)) {
        files += place->GetFile()->GetFileName().GetFileName() + " ";
    }
    EXPECT_EQ(files, "x.inc t.inc w.inc ");
}

TEST_F(DeckKeywordsTest, FilesOfTheTree)
{
    const TestDeck deck({{"A.DATA", "RUNSPEC\nINCLUDE\n'b.inc' /\nINCLUDE\n'c.inc' /\n"},
                         {"b.inc", "OIL\nINCLUDE\n'c.inc' /\nOIL\n"},
                         {"c.inc", "OIL\nEND\nOIL\n"}});
    const IDeckKeywords& keywords = deck.Keywords();
    EXPECT_EQ(keywords.GetFiles().size(), 3u);
    // The level's own INCLUDE goes ahead of one further down.
    EXPECT_EQ(keywords.GetIncludingKeyword(&deck.File("c.inc")), *deck.TopFile().GetINCLUDEKeywords()[1]);
    EXPECT_EQ(keywords.GetIncludingKeyword(&deck.TopFile()), nullptr);

    std::string files;
    for (const KeywordFileIterator& place : ViewOf(deck).FindKeywords("OIL", false)) {
        files += place->GetFile()->GetFileName().GetFileName() + " ";
    }
    EXPECT_EQ(files, "b.inc b.inc c.inc c.inc "); // a whole file, behind its end too, then its includes
    EXPECT_TRUE(ViewOf(deck).FindKeywords("NOSUCHKW", false).empty());
}

TEST_F(DeckKeywordsTest, Scopes)
{
    struct Case
    {
        const char* what;
        std::string text;
        std::string head;
        std::string end;
        std::string behind;
    };
    const std::vector<Case> cases = {
        {"its own closer", "SCHEDULE\nACTIONX\nA 1 /\nP > 1 /\n/\nWELOPEN\n/\nENDACTIO\nTSTEP\n1 /\n", "ACTIONX",
         "ENDACTIO", "TSTEP"},
        {"a section ends every scope", "GRID\nBOX\n1 1 1 1 1 1 /\nPORO\n1 /\nEDIT\n", "BOX", "EDIT", "EDIT"},
        {"never closed", "GRID\nBOX\n1 1 1 1 1 1 /\nPORO\n1 /\n", "BOX", "-", "-"},
        {"closed by a further head", "GRID\nBOX\n1 1 1 1 1 1 /\nPORO\n1 /\nBOX\n1 1 1 1 1 1 /\nENDBOX\n", "BOX", "BOX",
         "BOX"},
        {"a box in a refinement ends with it",
         "GRID\nCARFIN\n'L' 1 1 1 1 1 1 2 2 2 /\nBOX\n1 1 1 1 1 1 /\nPORO\n1 /\nENDFIN\nPORO\n1 /\n", "CARFIN",
         "ENDFIN", "PORO"},
        {"a date ends at the next time", "SCHEDULE\nDATES\n1 JAN 2020 /\n/\nWELOPEN\n/\nTSTEP\n1 /\n", "DATES", "TSTEP",
         "TSTEP"},
        {"a date in a skipped region ends with it", "SCHEDULE\nSKIP\nDATES\n1 JAN 2020 /\n/\nENDSKIP\nTSTEP\n1 /\n",
         "SKIP", "ENDSKIP", "TSTEP"},
        {"the last section runs to the end of the walk", "RUNSPEC\nOIL\nGRID\nPORO\n1 /\n", "GRID", "-", "-"},
        {"a section runs to the next one", "RUNSPEC\nOIL\nGRID\nPORO\n1 /\n", "RUNSPEC", "GRID", "GRID"},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        const TestDeck deck(TestDeck::Texts{{"A.DATA", test.text}});
        const KeywordIterator head = deck.At(test.head);
        const KeywordIterator end = deck.Keywords().GetScopeEnd(head, false);
        EXPECT_EQ(NameAt(end), test.end);
        EXPECT_TRUE(head < end);
        EXPECT_EQ(NameAt(ScopeEnd(head, deck.Deck(), false)), test.behind);

        const KeywordFileIterator place = deck.Keywords().GetFileIterator(head);
        if ((*place)->GetSyntax()->GetKind() == 5) continue;
        EXPECT_EQ(deck.Keywords().GetFileIterator(end), FileScopeEnd(place, false));
        EXPECT_EQ(DeckPositionOf(FileScopeBehind(place, false), deck.Deck()), ScopeEnd(head, deck.Deck(), false));
    }
}

TEST_F(DeckKeywordsTest, ScopesOfGeneratedKeywordsPassByTheUsers)
{
    const TestDeck deck(TestDeck::Texts{
        {"A.DATA",
         "GRID\nBOX                                  -- Generated\n1 1 1 1 1 1 /\nBOX\n1 1 1 1 1 1 /\nENDBOX\n"
         "PORO\n1 /\nENDBOX                               -- Generated\nPORO\n1 /\n"}});
    EXPECT_EQ(deck.Keywords().GetScopeEnd(deck.At("BOX"), false), deck.At("BOX", 2));
    EXPECT_EQ(deck.Keywords().GetScopeEnd(deck.At("BOX"), true), deck.At("ENDBOX", 2));
}

TEST_F(DeckKeywordsTest, EnclosingScope)
{
    const TestDeck deck(TestDeck::Texts{
        {"A.DATA", "RUNSPEC\nOIL\nGRID\nCARFIN\n'L' 1 1 1 1 1 1 2 2 2 /\nBOX\n1 1 1 1 1 1 /\nPORO\n1 /\nENDBOX\n"
                   "PERMX\n1 /\nENDFIN\nPERMY\n1 /\n"}});
    const auto headOf = [&deck](const std::string& name) {
        KeywordIterator head;
        KeywordIterator end;
        deck.Keywords().GetEnclosingScope(deck.At(name), head, end);
        return NameAt(head) + ".." + NameAt(end);
    };
    EXPECT_EQ(headOf("PORO"), "BOX..ENDBOX");
    EXPECT_EQ(headOf("PERMX"), "CARFIN..ENDFIN");
    EXPECT_EQ(headOf("PERMY"), "GRID..-");
    EXPECT_EQ(headOf("OIL"), "RUNSPEC..GRID");
}

/// The rule carried out to the letter, with a call for each nested head.
template <typename Iterator>
Iterator LiteralScopeEnd(const Iterator& head, const Iterator& limit)
{
    std::vector<std::string> names;
    for (const Keywords::IKeywordSyntax* closer : head->GetSyntax()->GetScopeEndSyntaxes()) {
        names.push_back(closer->GetName());
    }
    Iterator current = head;
    bool stay = false;
    for (;;) {
        if (!stay) ++current;
        stay = false;
        if (current == limit || current->GetSyntax()->GetKind() == 5) return current;
        if (std::find(names.begin(), names.end(), current->GetSyntax()->GetName()) != names.end()) return current;
        if (!current->GetSyntax()->IsScopeStart()) continue;
        const std::string inner = current->GetName();
        current = LiteralScopeEnd(current, limit);
        if (current == limit || current->GetSyntax()->GetKind() == 5) return current;
        stay = current->GetSyntax()->IsScopeStart() || (inner == "BOX" && current->GetName() == "ENDFIN") ||
               (inner == "DATES" && current->GetName() == "ENDSKIP");
    }
}

TEST_F(DeckKeywordsTest, ScopeWalkIsTheLiteralOne)
{
    const char* const words[] = {"BOX\n1 1 1 1 1 1 /\n",
                                 "ENDBOX\n",
                                 "CARFIN\n'L' 1 1 1 1 1 1 2 2 2 /\n",
                                 "ENDFIN\n",
                                 "SKIP\n",
                                 "ENDSKIP\n",
                                 "PORO\n1 /\n",
                                 "DATES\n1 JAN 2020 /\n/\n",
                                 "TSTEP\n1 /\n",
                                 "EDIT\n"};
    unsigned random = 1;
    for (int run = 0; run < 150; ++run) {
        std::string text;
        std::string inner;
        std::string after;
        for (int i = 0; i < 12; ++i) {
            random = random * 1664525u + 1013904223u;
            (i < 6 ? text : i < 9 ? inner : after) += words[(random >> 16) % std::size(words)];
        }
        // A scope goes on behind the end of its file.
        const TestDeck deck({{"A.DATA", text + "INCLUDE\n'b.inc' /\n" + after}, {"b.inc", inner}});
        text += "INCLUDE " + inner + "ENDINC " + after;
        deck.Walk();
        for (const KeywordFile* file : {&deck.TopFile(), &deck.File("b.inc")}) {
            const KeywordFileIterator end = file->End();
            for (KeywordFileIterator place = file->Begin(); place != end; ++place) {
                if (!place->GetSyntax()->IsScopeStart()) continue;
                ASSERT_EQ(FileScopeEnd(place, false), LiteralScopeEnd(place, end)) << place->GetName() << "\n" << text;
            }
        }

        // The scope around each place: the nearest head ahead of it, the first keyword aside, that ends behind it.
        const IDeckKeywords& keywords = deck.Keywords();
        const KeywordIterator begin = keywords.Begin();
        for (KeywordIterator position = begin; position != keywords.PhysicalEnd(); ++position) {
            if (position->GetSyntax()->IsScopeStart() && position->GetSyntax()->GetKind() != 5) {
                ASSERT_EQ(keywords.GetScopeEnd(position, false), LiteralScopeEnd(position, keywords.PhysicalEnd()))
                    << position->GetName() << "\n"
                    << text;
            }
            if (position == begin) continue;
            KeywordIterator literal = position;
            do {
                --literal;
            } while (literal != begin &&
                     !(literal->GetSyntax()->IsScopeStart() && position < keywords.GetScopeEnd(literal, false)));
            KeywordIterator head;
            KeywordIterator scopeEnd;
            keywords.GetEnclosingScope(position, head, scopeEnd);
            ASSERT_EQ(head, literal) << position->GetName() << "\n" << text;
            ASSERT_EQ(scopeEnd, keywords.GetScopeEnd(literal, false)) << position->GetName() << "\n" << text;
        }
    }
}

TEST_F(DeckKeywordsTest, TenThousandNestedScopes)
{
    std::string text;
    for (int i = 0; i < 10000; ++i) {
        text += "ACTIONX\nA 1 /\nP > 1 /\n/\n";
    }
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "SCHEDULE\n" + text + "TSTEP\n1 /\nENDACTIO\nTSTEP\n1 /\n"}});
    EXPECT_EQ(NameAt(deck.Keywords().GetScopeEnd(deck.At("ACTIONX"), false)), "-");
    EXPECT_EQ(NameAt(ScopeEnd(deck.At("ACTIONX", 10000), deck.Deck(), false)), "TSTEP");
}

TEST_F(DeckKeywordsTest, IdentityOfKeywords)
{
    const TestDeck deck(
        TestDeck::Texts{{"A.DATA", "SCHEDULE\nWELSPECS\n'A' 'G' 1 1 1* OIL /\n/\nWELSPECS\n'B' 'G' 1 1 1* OIL /\n/\n"
                                   "WELSPECS                             -- Generated\n'a' 'H' 2 2 1* GAS /\n/\n"}});
    const IDeckKeywords& keywords = deck.Keywords();
    const KeywordIterator first = deck.At("WELSPECS");
    const Keywords::IKeywordData* data = keywords.GetKeywordData(*first);
    KeywordIterator behind = first;
    ++behind;
    EXPECT_EQ(keywords.FindKeywordById("WELSPECS", data, behind, keywords.End(), false), deck.At("WELSPECS", 3));
    EXPECT_EQ(keywords.FindKeywordById("WELSPECS", nullptr, behind, keywords.End(), false), deck.At("WELSPECS", 2));
    EXPECT_EQ(keywords.FindKeywordById("WELSPECS", nullptr, first, keywords.End(), true), deck.At("WELSPECS", 3));
    EXPECT_EQ(keywords.FindKeywordById("TSTEP", nullptr, first, keywords.End(), false), keywords.End());
    EXPECT_EQ(keywords.FindLastKeywordById("WELSPECS", data, first, deck.At("WELSPECS", 3), false), first);
    EXPECT_EQ(keywords.FindLastKeywordById("SCHEDULE", nullptr, first, keywords.End(), false), keywords.End());

    const TestDeck ended(TestDeck::Texts{{"A.DATA", "RUNSPEC\nOIL\nEND\n"}});
    const auto isAnchor = [&ended](const std::string& name) {
        return KeywordIdEqual(ended.Keywords(), name, nullptr, true)(*ended.At(name));
    };
    EXPECT_TRUE(isAnchor("RUNSPEC"));
    EXPECT_TRUE(isAnchor("END"));
    EXPECT_FALSE(isAnchor("OIL"));
}

TEST_F(DeckKeywordsTest, GridFiles)
{
    const TestDeck deck({{"A.DATA", "GRID\nGDFILE\n'none' /\nGDFILE\n'grid/CASE' /\nORDGRID\n'x.OPF' /\nEND\n"},
                         {"grid/CASE.FEGRID", ""},
                         {"grid/CASE.EGRID", ""},
                         {"grid/CASE.XGRID", ""},
                         {"grid/CASEY.EGRID", ""}});
    EXPECT_EQ(deck.Keywords().GetGridFile().GetFullName(), deck.Dir().Path("grid/CASE.EGRID"));
    EXPECT_EQ(deck.Keywords().FindGridKeyword(), deck.At("GDFILE"));
    const TestDeck other(TestDeck::Texts{{"A.DATA", "GRID\nEND\nORDGRID\n'x.OPF' /\n"}});
    EXPECT_FALSE(other.Keywords().GetGridFile().IsSet()); // behind the end of the deck
    EXPECT_EQ(other.Keywords().FindGridKeyword(), other.At("ORDGRID"));
}

TEST_F(DeckKeywordsTest, DeckBindsTheExpressionsOfItsFiles)
{
    TestDeck deck({{"A.DATA", "RUNSPEC\nOIL\n"}, {"B.DATA", "RUNSPEC\nGAS\n"}});
    auto& view = const_cast<class DeckKeywords&>(ViewOf(deck));
    view.RebuildContext();
    EXPECT_EQ(deck.TopFile().RootContext().Keywords(), &view);
    KeywordFile& oldRoot = deck.TopFile();
    const std::shared_ptr<KeywordFile> hold = oldRoot.shared_from_this();
    EXPECT_THROW(view.SetDataFile(nullptr), DeckManagerException);
    IDeck* other = deck.Manager().ImportDeck("B", deck.Dir().Path("B.DATA"), false, false, false);
    view.SetDataFile(static_cast<class DeckKeywords*>(other->GetDeckKeywords())->RootFile());
    EXPECT_EQ(oldRoot.RootContext().Keywords(), nullptr);
    EXPECT_EQ(deck.Walk(), "RUNSPEC GAS");
}

TEST_F(DeckKeywordsTest, ADeckOnAnIncludedFileLeavesTheExpressionsToTheDeckAround)
{
    TestDeck deck({{"A.DATA", "RUNSPEC\nTABDIMS\n2 /\nINCLUDE\n'b.inc' /\n"}, {"b.inc", "OIL\n"}});
    deck.Walk();
    IDeck* inner = deck.Manager().ImportDeck("B", deck.Dir().Path("b.inc"), false, false, false);
    EXPECT_EQ(inner->GetDeckKeywords()->GetFiles().size(), 1u);
    static_cast<class DeckKeywords*>(inner->GetDeckKeywords())->RebuildContext();
    EXPECT_EQ(deck.TopFile().RootContext().Keywords(), nullptr);
    EXPECT_EQ(deck.Keywords().GetFiles().size(), 2u);
    deck.Manager().RemoveDeck(inner);
    EXPECT_NE(deck.Keywords().GetKeywordData(*deck.At("TABDIMS")), nullptr);
}

} // namespace
