#include "tests/merge/Merging.h"

// The comments of generated keywords. "~" stands for the generated tag.

namespace {

using namespace MergeTests;

struct Fact
{
    const char* what;
    std::string oldText;
    std::string newText;
    std::string expected;
};

TEST(MergeCommentsTest, CommentsGoToTheCounterparts)
{
    const TestSupport::CleanEnvironment environment;
    const std::vector<Fact> facts = {
        {"above a keyword and above a section",
         "-- head\n\n-- above R\nRUNSPEC\nTABDIMS~\n1 /\n\n-- above O\nOIL~\n-- above G\nGRID\n",
         "RUNSPEC\nTABDIMS~\n1 /\nOIL~\nGRID\n",
         "-- head\n\n-- above R\nRUNSPEC\nTABDIMS~\n1 /\n-- above O\nOIL~\n-- above G\nGRID\n"},
        {"what is there already is not repeated, whatever its line ends",
         "RUNSPEC\nTABDIMS~\n1 /\n-- one\n-- two\nDIMENS~\n1 2 3 /\n",
         "RUNSPEC\nTABDIMS~\n1 /\r\n-- one\r\n-- two\r\n-- three\r\nDIMENS~\n1 2 3 /\n",
         "RUNSPEC\nTABDIMS~\n1 /\r\n-- one\r\n-- two\r\n-- three\r\nDIMENS~\n1 2 3 /\n"},
        {"what the generator writes each time is there once",
         "-- head\n-- mine\nRUNSPEC\nOIL~\n-- below\n-- mine too\nTABDIMS~\n1 /\n-- last\n-- mine as well\n",
         "-- head\nRUNSPEC\nOIL~\n-- below\nTABDIMS~\n1 /\n-- last\n",
         "-- head\n-- mine\nRUNSPEC\nOIL~\n-- below\n-- mine too\nTABDIMS~\n1 /\n-- last\n-- mine as well\n"},
        {"half a line is not the line", "RUNSPEC\nTABDIMS~\n1 /\n-- one\nDIMENS~\n1 2 3 /\n",
         "RUNSPEC\nTABDIMS~\n1 /\n-- one more\nDIMENS~\n1 2 3 /\n",
         "RUNSPEC\nTABDIMS~\n1 /\n-- one more\n-- one\nDIMENS~\n1 2 3 /\n"},
        {"a keyword that is gone: to the next that isn't, in order",
         "RUNSPEC\nTABDIMS~\n1 /\n-- above W\nWELLDIMS~\n1 /\n-- above E\nEQLDIMS~\n1 /\n-- above D\nDIMENS~\n1 2 3 "
         "/\n",
         "RUNSPEC\nTABDIMS~\n1 /\nDIMENS~\n1 2 3 /\n",
         "RUNSPEC\nTABDIMS~\n1 /\n-- above W\n-- above E\n-- above D\nDIMENS~\n1 2 3 /\n"},
        {"the last of its section is gone: to the next section",
         "RUNSPEC\nTABDIMS~\n1 /\n-- above W\nWELLDIMS~\n1 /\nGRID\n", "RUNSPEC\nTABDIMS~\n1 /\nGRID\n",
         "RUNSPEC\nTABDIMS~\n1 /\n-- above W\nGRID\n"},
        {"a scope that is gone: behind what is left",
         "SCHEDULE\nDATES~\n1 JAN 2020 /\n/\nDATES~\n1 FEB 2020 /\n/\n-- above W\nWELOPEN~\n'A' OPEN /\n/\n",
         "SCHEDULE\nDATES~\n1 JAN 2020 /\n/\nEND\n", "SCHEDULE\nDATES~\n1 JAN 2020 /\n/\n-- above W\nEND\n"},
        {"inside a scope",
         "SCHEDULE\nDATES~\n1 JAN 2020 /\n/\n-- above W\nWELOPEN~\n'A' OPEN /\n/\n-- above F\nDATES~\n1 FEB 2020 "
         "/\n/\n",
         "SCHEDULE\nDATES~\n1 JAN 2020 /\n/\nWELOPEN~\n'A' OPEN /\n/\nDATES~\n1 FEB 2020 /\n/\n",
         "SCHEDULE\nDATES~\n1 JAN 2020 /\n/\n-- above W\nWELOPEN~\n'A' OPEN /\n/\n-- above F\nDATES~\n1 FEB 2020 "
         "/\n/\n"},
        {"a user's comment stays with the user's keyword",
         "RUNSPEC\nTABDIMS~\n1 /\n-- above W\nWELLDIMS\n1 /\nDIMENS~\n1 2 3 /\n",
         "RUNSPEC\nTABDIMS~\n1 /\nDIMENS~\n1 2 3 /\n", "RUNSPEC\nTABDIMS~\n1 /\nDIMENS~\n1 2 3 /\n"},
        {"below a keyword without data", "RUNSPEC\nOIL~\n-- below O\nTABDIMS~\n1 /\n", "RUNSPEC\nOIL~\nTABDIMS~\n1 /\n",
         "RUNSPEC\nOIL~\n-- below O\nTABDIMS~\n1 /\n"},
        {"and where that is gone", "RUNSPEC\nTABDIMS~\n1 /\nOIL~\n-- below O\nDIMENS~\n1 2 3 /\n",
         "RUNSPEC\nTABDIMS~\n1 /\nDIMENS~\n1 2 3 /\n", "RUNSPEC\nTABDIMS~\n1 /\n-- below O\nDIMENS~\n1 2 3 /\n"},
        {"ahead of the sections, where one is gone too",
         "-- above N\nNOECHO~\n-- below N\nECHO~\n-- below E\nRUNSPEC\nOIL~\n", "NOECHO~\nRUNSPEC\nOIL~\n",
         "-- above N\nNOECHO~\n-- below N\n-- below E\nRUNSPEC\nOIL~\n"},
        {"beside a name", "RUNSPEC -- beside R\nOIL -- beside O~\nTABDIMS and more~\n1 /\nGAS -- beside G~\nWATER~\n",
         "RUNSPEC\nOIL -- new~\nTABDIMS~\n1 /\nWATER~\n",
         "-- beside R\nRUNSPEC\nOIL -- new~\n-- and more\nTABDIMS~\n1 /\n-- beside G\nWATER~\n"},
        {"what a generator puts behind its tag is none", "RUNSPEC\nOIL~ : APP\nWATER~ : APP\nGAS~\n", "RUNSPEC\nGAS~\n",
         "RUNSPEC\nGAS~\n"},
        {"at the end of the file", "RUNSPEC\nTABDIMS~\n1 /\nEQLDIMS\n1 /\n\n-- last\n\n   -- words\n\n",
         "RUNSPEC\nTABDIMS~\n1 /\n-- new", "RUNSPEC\nTABDIMS~\n1 /\n-- new\n-- last\n\n   -- words\n"},
        {"at the end, and there already", "RUNSPEC\nTABDIMS~\n1 /\n-- last\n",
         "RUNSPEC\nTABDIMS~\n1 /\n-- last\r\n-- words\r\n", "RUNSPEC\nTABDIMS~\n1 /\n-- last\r\n-- words\r\n"},
        {"behind END, below it and further down", "RUNSPEC\nOIL~\nEND\n-- below\n\n-- last\n", "RUNSPEC\nOIL~\nEND\n",
         "RUNSPEC\nOIL~\nEND\n-- below\n-- last\n"},
    };
    for (const Fact& fact : facts) {
        SCOPED_TRACE(fact.what);
        TwoDecks decks({{"T.DATA", fact.oldText}}, {{"T.DATA", fact.newText}});
        decks.MergeComments();
        EXPECT_EQ(decks.Text("T.DATA"), fact.expected);
        // A second run finds all there.
        const std::size_t count = decks.report.entries.size();
        decks.MergeComments();
        EXPECT_EQ(decks.report.entries.size(), count);
        // Into a deck that was made anew once more the same comes.
        TwoDecks anew({{"T.DATA", fact.expected}}, {{"T.DATA", fact.newText}});
        anew.MergeComments();
        EXPECT_EQ(anew.Text("T.DATA"), fact.expected);
    }
}

TEST(MergeCommentsTest, CommentsAtTheEndsOfFilesGoToTheirCounterparts)
{
    const TestSupport::CleanEnvironment environment;
    const std::string includes = "INCLUDE~\n'a/X.INC' /\nINCLUDE~\n'b/X.INC' /\n";
    const Texts oldFiles = {
        {"T.DATA", "RUNSPEC\n" + includes + "INCLUDE~\n'OLD.INC' /\nINCLUDE\n'MINE.INC' /\n-- top\n"},
        {"a/X.INC", "OIL~\n-- end of a\n"},
        {"b/X.INC", "-- notes only\n"},
        {"OLD.INC", "INCLUDE~\n'GONE.INC' /\n-- end of OLD\n"},
        {"GONE.INC", "GAS~\n\n-- end of GONE\n"},
        {"MINE.INC", "WATER\n\n-- end of MINE\n"}};
    const Texts newFiles = {{"T.DATA", "RUNSPEC\n" + includes + "INCLUDE~\n'NEW.INC' /\n"},
                            {"a/X.INC", "OIL~\n"},
                            {"b/X.INC", "\n"},
                            {"NEW.INC", "GAS~\n"},
                            {"MINE.INC", "WATER\n"}};
    TwoDecks decks(oldFiles, newFiles);
    decks.includeNames = {{"OLD.INC", "NEW.INC"}};
    EXPECT_TRUE(decks.MergeUserKeywords());
    decks.MergeComments();
    decks.Manager().GetEditor(&decks.New())->Commit();
    const auto written = [&](const std::string& name) { return WithoutTags(decks.Dir().Read("new/" + name)); };
    EXPECT_EQ(written("T.DATA"), "RUNSPEC\n" + includes + "INCLUDE~\n'NEW.INC' /\nINCLUDE\n'MINE.INC' /\n-- top\n");
    EXPECT_EQ(written("a/X.INC"), "OIL~\n-- end of a\n");
    EXPECT_EQ(written("b/X.INC"), "\n-- notes only\n");
    EXPECT_EQ(written("NEW.INC"), "GAS~\n-- end of OLD\n-- end of GONE\n");
    EXPECT_EQ(written("MINE.INC"), newFiles.back().second);
}

/// No walk leads to an ENDINC.
TEST(MergeCommentsTest, CommentsAboveTheEndOfAnIncludedFileStayThere)
{
    const TestSupport::CleanEnvironment environment;
    const std::string head = "TABDIMS~\n1 /\n";
    const std::vector<Fact> facts = {
        {"above it", head + "-- mine\nENDINC\n-- behind\n", head + "ENDINC\n", head + "-- mine\nENDINC\n-- behind\n"},
        {"there is none any more", head + "\n-- mine\nENDINC\nnotes\n", head, head + "-- notes\n-- mine\n"},
        {"what the generator writes each time is there once", head + "-- gen\n-- mine\nENDINC\n",
         head + "-- gen\nENDINC\n", head + "-- gen\n-- mine\nENDINC\n"},
        {"nothing new", head + "-- gen\nENDINC\n", head + "-- gen\nENDINC\n", head + "-- gen\nENDINC\n"},
        {"nothing else in the file", "-- mine\nENDINC\n", "ENDINC\n", "-- mine\nENDINC\n"},
        {"a user's comment above a user's keyword", head + "-- above\nEQLDIMS\n1 /\n-- mine\nENDINC\n",
         head + "ENDINC\n", head + "-- above\nEQLDIMS\n1 /\n-- mine\nENDINC\n"},
    };
    const std::string top = "RUNSPEC\nINCLUDE~\n'A.INC' /\nOIL~\n";
    for (const Fact& fact : facts) {
        SCOPED_TRACE(fact.what);
        TwoDecks decks(Texts{{"T.DATA", top}, {"A.INC", fact.oldText}},
                       Texts{{"T.DATA", top}, {"A.INC", fact.newText}});
        EXPECT_TRUE(decks.MergeUserKeywords());
        decks.MergeComments();
        decks.MergeComments();
        decks.Manager().GetEditor(&decks.New())->Commit();
        EXPECT_EQ(WithoutTags(decks.Dir().Read("new/A.INC")), fact.expected);
        decks.MergeComments();
        decks.Manager().GetEditor(&decks.New())->Commit();
        EXPECT_EQ(WithoutTags(decks.Dir().Read("new/A.INC")), fact.expected);
        EXPECT_EQ(WithoutTags(decks.Dir().Read("new/T.DATA")), top);
    }
}

} // namespace
