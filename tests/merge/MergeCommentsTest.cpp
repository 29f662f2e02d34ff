#include <gtest/gtest.h>

#include <string>
#include <vector>

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
    }
}

} // namespace
