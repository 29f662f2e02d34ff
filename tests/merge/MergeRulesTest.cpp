#include "tests/deck/RuledTable.h"
#include "tests/merge/Merging.h"

// Merges under the ordering rules of a host's own table.

namespace {

using namespace MergeTests;

class MergeRulesTest : public testing::Test
{
protected:
    std::string Merged(const TestSupport::Rules::OfSection& rules, const std::string& oldText,
                       const std::string& newText)
    {
        TestSupport::Rules::OfSections ofSections;
        ofSections[SectionType::GRID] = rules;
        const TestSupport::RuledTable table(TestSupport::SortTable(), ofSections);
        Environment::Instance().SetSyntaxTable(&table);
        TwoDecks decks({{"T.DATA", oldText}}, {{"T.DATA", newText}});
        EXPECT_TRUE(decks.MergeUserKeywords());
        return decks.Text("T.DATA");
    }

    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
};

TEST_F(MergeRulesTest, ARingOfRulesLosesNothing)
{
    // A and B each want to be ahead of the other.
    EXPECT_EQ(
        Merged({{"A", {"B"}}, {"B", {"A"}}}, "GRID\nC~\n1 /\nB\n7 /\nD~\n1 /\n", "GRID\nC~\n1 /\nA~\n1 /\nD~\n1 /\n"),
        "GRID\nC~\n1 /\nA~\n1 /\nD~\n1 /\nB\n7 /\n");
    EXPECT_TRUE(m_log.Empty());
}

/// What takes too many tests goes behind its scope's head, with a message.
TEST_F(MergeRulesTest, TheTestsOfAKeywordHaveALimit)
{
    std::string many;
    for (int i = 0; i < 50001; ++i)
        many += "C~\n1 /\n";
    const std::string text = Merged({{"B", {"A"}}}, "GRID\nD~\n1 /\nB\n7 /\n", "GRID\nD~\n1 /\n" + many);
    EXPECT_TRUE(text.starts_with("GRID\nB\n7 /\nD~\n")) << text.substr(0, 40);
    EXPECT_EQ(m_log.CountOf("A problem was encountered when finding the position to insert the user keyword B."), 1);
}

} // namespace
