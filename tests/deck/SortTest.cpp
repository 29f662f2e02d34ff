#include <map>

#include "deck/OrderTest.h"
#include "tests/deck/SortedDeck.h"
#include "tests/support/DeckTest.h"

// What a sort moves and what it leaves alone, in decks written in short (see SortedDeck).

namespace {

using namespace DeckTests;
using TestSupport::RuledTable;
using TestSupport::SortedDeck;
using TestSupport::SortTable;

/// "GRID A<B C<B PROPS ..." : in GRID, A and C must stand ahead of B.
TestSupport::Rules::OfSections RulesFrom(const std::string& text)
{
    static const std::map<std::string, SectionType> sections = {{"RUNSPEC", SectionType::RUNSPEC},
                                                                {"GRID", SectionType::GRID},
                                                                {"PROPS", SectionType::PROPS},
                                                                {"SCHEDULE", SectionType::SCHEDULE}};
    TestSupport::Rules::OfSections rules;
    SectionType section = SectionType::RUNSPEC;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        const auto less = word.find('<');
        if (less == std::string::npos)
            section = sections.at(word);
        else
            rules[section][word.substr(less + 1)].insert(word.substr(0, less));
    }
    return rules;
}

class SortTest : public testing::Test
{
protected:
    void Rule(const std::string& rules)
    {
        m_table = std::make_unique<RuledTable>(SortTable(), RulesFrom(rules));
        Environment::Instance().SetSyntaxTable(m_table.get());
    }
    static std::string IncompleteIn(const SortedDeck& deck, std::size_t file)
    {
        return "A problem was encountered sorting the deck keywords in file " +
               deck.File(file).GetFileName().GetFullName() + ".  Sort was not completed.";
    }

    std::unique_ptr<RuledTable> m_table;
    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
};

struct Fact
{
    const char* what;
    std::string rules;
    std::vector<std::string> before;
    std::vector<std::string> after; ///< empty: nothing moves
};

const std::vector<Fact> facts = {
    {"a deck without sections isn't sorted", "RUNSPEC A<B GRID A<B", {"B A"}, {}},
    {"without rules nothing moves", "", {"GRID B C A"}, {}},
    {"rules of another section have no say", "PROPS A<B", {"GRID B A"}, {}},
    {"a keyword goes ahead of the one that needs it", "GRID A<B", {"GRID B C A"}, {"GRID A B C"}},
    {"what no rule names stays between", "GRID A<B", {"GRID B C D A E"}, {"GRID A B C D E"}},
    {"of those that wait for nothing the first in the file comes first",
     "GRID A<C B<C",
     {"GRID D C E B A"},
     {"GRID D B A C E"}},
    {"a chain of rules", "GRID A<B B<C C<D", {"GRID D C B A"}, {"GRID A B C D"}},
    {"keywords of one name keep their order", "GRID A<B", {"GRID B:1 A:1 B:2 C A:2"}, {"GRID A:1 A:2 B:1 B:2 C"}},
    {"each section by its own rules", "GRID A<B PROPS B<A", {"GRID B A PROPS A B"}, {"GRID A B PROPS B A"}},

    // Rings.
    {"a ring of two moves nothing", "GRID A<B B<A", {"GRID B C A"}, {}},
    {"a ring of three moves nothing, nor does what waits for it", "GRID A<B B<C C<A A<D", {"GRID D C B A"}, {}},
    {"what has nothing to do with a ring is sorted past it", "GRID A<B B<A E<F", {"GRID F B A E"}, {"GRID E F B A"}},
    {"a name that must stand ahead of itself is a ring of two", "GRID A<A A<B", {"GRID B A:1 A:2"}, {}},
    {"but one alone is none", "GRID A<A A<B", {"GRID B A"}, {"GRID A B"}},

    // Fixed places.
    {"a title goes straight behind RUNSPEC", "", {"RUNSPEC C B TITLE A"}, {"RUNSPEC TITLE C B A"}},
    {"only the first title does", "", {"RUNSPEC A TITLE B TITLE"}, {"RUNSPEC TITLE A B TITLE"}},
    {"a title of another section stays", "", {"RUNSPEC A GRID B TITLE"}, {}},
    {"a title comes out of an included file", "", {"RUNSPEC I1 B", "A TITLE"}, {"RUNSPEC TITLE I1 B", "A"}},
    {"and goes into the file behind RUNSPEC", "", {"I1 A TITLE", "C RUNSPEC"}, {"I1 TITLE A", "C RUNSPEC"}},
    {"SKIPREST goes to the head of SCHEDULE", "", {"SCHEDULE A SKIPREST"}, {"SCHEDULE SKIPREST A"}},
    {"behind a file that is included there", "", {"SCHEDULE I1 A SKIPREST", "B"}, {"SCHEDULE I1 SKIPREST A", "B"}},
    {"out of that file too", "", {"SCHEDULE I1 A", "B SKIPREST C"}, {"SCHEDULE I1 SKIPREST A", "B C"}},
    {"behind it, where it is the last", "", {"SCHEDULE I1", "SKIPREST C"}, {"SCHEDULE I1 SKIPREST", "C"}},
    {"SKIPREST of another section stays", "", {"GRID A SKIPREST"}, {}},
    {"fixed places come ahead of the rules", "RUNSPEC A<B", {"RUNSPEC B TITLE A"}, {"RUNSPEC TITLE A B"}},
    {"so a rule may still put something ahead", "RUNSPEC A<TITLE", {"RUNSPEC B A TITLE"}, {"RUNSPEC A TITLE B"}},

    // Files.
    {"rules between two files aren't enforced", "GRID A<B", {"GRID B I1", "A"}, {}},
    {"each file is sorted by itself",
     "GRID A<B",
     {"GRID B I1 A", "B I2 A", "C B A"},
     {"GRID A B I1", "A B I2", "C A B"}},
    {"a file in two sections is sorted for each",
     "GRID A<B PROPS C<D",
     {"GRID I1 PROPS I1", "D B C A"},
     {"GRID I1 PROPS I1", "C D A B"}},
    {"a section that begins in an included file goes on in the including one",
     "PROPS A<B",
     {"GRID B A I1 B A", "C PROPS B A"},
     {"GRID B A I1 A B", "C PROPS A B"}},
    {"a section that begins there ends the one before",
     "GRID A<B",
     {"GRID B A I1 B A", "B A PROPS B A"},
     {"GRID A B I1 B A", "A B PROPS B A"}},
    {"what goes on there needs nothing of the section before",
     "GRID C<A A<B",
     {"RUNSPEC C B I1 B A", "GRID"},
     {"RUNSPEC C B I1 A B", "GRID"}},

    // Ends. Nothing goes past one: what a run doesn't read must not come to life.
    {"what stands behind the end of a deck stays there", "GRID A<B", {"GRID B END A"}, {}},
    {"each side of it is sorted by itself",
     "GRID A<B PROPS A<B",
     {"GRID B A END B A PROPS B A"},
     {"GRID A B END A B PROPS A B"}},
    {"an end inside a scope", "GRID A<B", {"GRID HEAD B END A TAIL B A"}, {"GRID HEAD B END A TAIL A B"}},
    {"the end of an included file", "GRID A<B", {"GRID I1 B A", "B ENDINC A"}, {"GRID I1 A B", "B ENDINC A"}},
    {"a deck that ends in an included file", "GRID A<B", {"GRID B I1 A", "B END A"}, {}},
    {"fixed places are no exception",
     "",
     {"RUNSPEC A END TITLE SCHEDULE B SKIPREST"},
     {"RUNSPEC A END TITLE SCHEDULE SKIPREST B"}},
    {"nor where a deck ends in a file", "", {"SCHEDULE A I1 SKIPREST", "END"}, {}},

    // Scopes.
    {"a scope is sorted by itself", "GRID A<B", {"GRID HEAD B A TAIL"}, {"GRID HEAD A B TAIL"}},
    {"what is inside and what is around know nothing of each other", "GRID A<B", {"GRID B HEAD A TAIL"}, {}},
    {"a name inside a scope is left to that",
     "GRID A<B",
     {"GRID B:1 HEAD A:1 TAIL A:2"},
     {"GRID A:2 B:1 HEAD A:1 TAIL"}},
    {"scopes in scopes",
     "GRID A<B",
     {"GRID B A HEAD B A BLOCK B A ENDBLOCK TAIL HEAD B A TAIL"},
     {"GRID A B HEAD A B BLOCK A B ENDBLOCK TAIL HEAD A B TAIL"}},
    {"a closing keyword closes the innermost scope", "GRID A<B", {"GRID HEAD BLOCK B TAIL A"}, {}},
    {"a head is followed by the next, which stands outside",
     "GRID A<B",
     {"GRID SPAN B A SPAN C B A CUT B A"},
     {"GRID SPAN A B SPAN C A B CUT A B"}},
    {"a section keyword ends a scope", "GRID HEAD<B", {"GRID B HEAD C PROPS D"}, {"GRID HEAD C B PROPS D"}},
    {"a head takes its scope along", "GRID HEAD<B", {"GRID B HEAD C D TAIL E"}, {"GRID HEAD C D TAIL B E"}},
    {"with the scopes in it",
     "GRID HEAD<B",
     {"GRID B HEAD BLOCK C ENDBLOCK TAIL E"},
     {"GRID HEAD BLOCK C ENDBLOCK TAIL B E"}},
    {"and with files that are included there, as they are",
     "GRID HEAD<B",
     {"GRID B HEAD I1 C TAIL", "D E I2", "F"},
     {"GRID HEAD I1 C TAIL B", "D E I2", "F"}},
    {"a scope that is closed in an included file goes with that",
     "GRID HEAD<B",
     {"GRID B HEAD I1 C", "D TAIL E"},
     {"GRID HEAD I1 B C", "D TAIL E"}},
    {"a scope that ends with its file moves in that",
     "GRID HEAD<B",
     {"GRID I1 PROPS", "B HEAD C"},
     {"GRID I1 PROPS", "HEAD C B"}},
    {"several scopes, in the order of the file",
     "GRID HEAD<B",
     {"GRID B HEAD C:1 TAIL D HEAD C:2 TAIL"},
     {"GRID HEAD C:1 TAIL HEAD C:2 TAIL B D"}},
};

TEST_F(SortTest, Facts)
{
    for (const Fact& fact : facts) {
        SCOPED_TRACE(fact.what);
        Rule(fact.rules);
        const SortedDeck deck(fact.before);
        deck.Editor().SortKeywords();
        EXPECT_EQ(deck.Files(), fact.after.empty() ? fact.before : fact.after);
        if (fact.after.empty()) {
            for (std::size_t i = 0; i < fact.before.size(); ++i)
                EXPECT_FALSE(deck.File(i).IsModified());
        }
        EXPECT_TRUE(m_log.Empty()) << m_log.Texts().front();

        deck.Editor().Discard();
        EXPECT_EQ(deck.Files(), fact.before);
    }
}

TEST_F(SortTest, AScopeThatCannotMoveWholeStaysAndIsTold)
{
    Rule("GRID HEAD<B C<D");
    const std::vector<std::vector<std::string>> decks = {
        {"GRID I1 A TAIL", "D B HEAD A C"}, // goes on in the including file
        {"GRID B HEAD A END C"},            // would take the deck's end along
        {"GRID I1", "B HEAD A ENDINC"},
    };
    for (const std::vector<std::string>& files : decks) {
        SCOPED_TRACE(files.back());
        const SortedDeck deck(files);
        deck.Editor().SortKeywords();
        EXPECT_EQ(deck.Files(), files);
        EXPECT_EQ(m_log.Texts(), std::vector<std::string>{IncompleteIn(deck, files.size() - 1)});
        EXPECT_EQ(m_log.Count(2), 1);
        m_log.Clear();
    }
}

TEST_F(SortTest, AfterAFailureTheNextFileIsSorted)
{
    Rule("GRID HEAD<B C<D");
    const SortedDeck deck({"GRID D C I1 A TAIL I2", "D C B HEAD A", "D C"});
    deck.Editor().SortKeywords();
    EXPECT_EQ(deck.Files(), (std::vector<std::string>{"GRID C D I1 A TAIL I2", "C D B HEAD A", "C D"}));
    EXPECT_EQ(m_log.Texts(), std::vector<std::string>{IncompleteIn(deck, 1)});
}

TEST_F(SortTest, AReadOnlyFileIsPassedOverInSilence)
{
    Rule("RUNSPEC A<B");
    const SortedDeck deck({"RUNSPEC B I1 A", "B TITLE A"});
    deck.File(1).SetReadOnly();
    deck.Editor().SortKeywords();
    EXPECT_EQ(deck.Files(), (std::vector<std::string>{"RUNSPEC A B I1", "B TITLE A"}));
    EXPECT_TRUE(m_log.Empty());
}

TEST_F(SortTest, WithoutADeckNothingIsSorted)
{
    Rule("GRID A<B");
    const SortedDeck deck({"GRID B A"});
    IDeckKeywordsEditor& editor = deck.Editor();
    editor.Close();
    editor.SortKeywords();
    EXPECT_EQ(deck.Files(), std::vector<std::string>{"GRID B A"});
}

TEST_F(SortTest, ScopesInScopesWithoutABound)
{
    Rule("GRID A<B");
    constexpr int depth = 10000;
    std::string before = "GRID";
    std::string after = "GRID";
    for (int i = 0; i < depth; ++i) {
        before += " HEAD B A";
        after += " HEAD A B";
    }
    for (int i = 0; i < depth; ++i) {
        before += " TAIL";
        after += " TAIL";
    }
    const SortedDeck deck({before});
    deck.Editor().SortKeywords();
    EXPECT_EQ(deck.Files(), std::vector<std::string>{after});
}

// The rules of the catalogue, on keywords as they stand in decks.
TEST_F(SortTest, CommentsGoWithTheirKeywords)
{
    LineEnds::SetPolicy(LineEnds::Policy::Keep);
    const TestSupport::TestDeck deck(TestSupport::TestDeck::Texts{
        {"TOP.DATA",
         "-- head of the file\nRUNSPEC\n\n-- about the size\nDIMENS   -- blocks\n1 1 1 /\n\n-- about the title\n"
         "TITLE\nA deck\n-- about the grid\nGRID\n\n-- about the corners\nZCORN\n8*1 /\n"
         "-- about faults\nMULTFLT\n'F' 0.1 /\n/\n-- about the kind of grid\nSPECGRID\n1 1 1 1 F / a corner\n"
         "-- the end"}});
    deck.Manager().GetEditor(&deck.Deck())->SortKeywords();
    ASSERT_TRUE(deck.Keywords().ExportToDirectory(deck.Dir().Path("out"), Keywords::SimulatorType::Any, false));
    EXPECT_EQ(deck.Dir().Read("out/TOP.DATA"),
              "-- head of the file\nRUNSPEC\n\n-- about the title\nTITLE\nA deck\n\n-- about the size\n"
              "DIMENS   -- blocks\n1 1 1 /\n-- about the grid\nGRID\n-- about the kind of grid\nSPECGRID\n"
              "1 1 1 1 F / a corner\n\n-- about the corners\nZCORN\n8*1 /\n-- about faults\nMULTFLT\n'F' 0.1 /\n/\n"
              "-- the end");
}

TEST_F(SortTest, ASearchMayAskSoManyTimesAndNoMore)
{
    Rule("GRID A<B PROPS C<B");
    const SortedDeck deck({"GRID A B"});
    const IKeyword& a = **deck.Deck().At("A");
    const IKeyword& b = **deck.Deck().At("B");
    OrderTest test(SectionType::GRID);
    EXPECT_TRUE(test.MustPrecede(a, b));
    EXPECT_FALSE(test.MustPrecede(b, b));
    EXPECT_FALSE(OrderTest(SectionType::PROPS).MustPrecede(a, b));
    test.Skip(49997);
    // What has no rules isn't counted.
    for (int i = 0; i < 10; ++i)
        EXPECT_FALSE(test.MustPrecede(b, a));
    EXPECT_TRUE(test.MustPrecede(a, b));
    EXPECT_EQ(Thrown<DeckManagerException>([&] { test.MustPrecede(a, b); }),
              "A problem was encountered sorting keywords.  This may be caused by inconsistent ordering rules in the "
              "keyword metadata.");
    EXPECT_THROW(OrderTest(SectionType::GRID).Skip(50001), DeckManagerException);
}

} // namespace
