#include <deckmanager/ReadKeywordData.h>

#include "tests/support/DeckTest.h"
#include <deckmanager/KeywordVariables.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/KeywordSyntaxTable.h>

namespace {

using namespace DeckTests;

class ReadKeywordDataTest : public testing::Test
{
protected:
    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
};

int Elements(const Keywords::IKeywordData* data)
{
    return data != nullptr && data->GetType() == Keywords::MDType::List
               ? static_cast<const Keywords::IKeywordListData*>(data)->GetElementCount()
               : -1;
}

TEST_F(ReadKeywordDataTest, TheKeywordKeepsNothing)
{
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\nOIL\nGRID\nPORO\n-- remark\n0.1 bad\n2*0.3 /\n"}});
    const IKeyword& poro = **deck.At("PORO");
    for (int i = 1; i <= 2; ++i) {
        const std::unique_ptr<Keywords::IKeywordData> data = ReadKeywordData(deck.Keywords(), poro);
        EXPECT_EQ(Elements(data.get()), 3);
        ASSERT_EQ(m_log.Count(), i);
        EXPECT_EQ(m_log.Messages().back().line, 6);
    }
    const Keywords::IKeywordData* kept = deck.Keywords().GetKeywordData(&poro);
    EXPECT_EQ(m_log.Count(), 3);
    EXPECT_NE(ReadKeywordData(deck.Keywords(), poro).get(), kept);
    EXPECT_EQ(deck.Keywords().GetKeywordData(&poro), kept);
    EXPECT_EQ(ReadKeywordData(deck.Keywords(), **deck.At("OIL")), nullptr);
}

TEST_F(ReadKeywordDataTest, TheDeckAnswersForSizesAndVariables)
{
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\nTABDIMS\n2 /\nPROPS\nSWOF\n0.1 0 1 0\n1 1 0 0 /\n"
                                                   "0.2 0 1 0\n1 1 0 0 /\nSCHEDULE\nTSTEP\n$STEP 30 /\n"}});
    KeywordVariables variables;
    EXPECT_EQ(Elements(ReadKeywordData(deck.Keywords(), **deck.At("SWOF"), &variables).get()), 2);
    EXPECT_FALSE(variables.HasVariables());
    EXPECT_EQ(Elements(ReadKeywordData(deck.Keywords(), **deck.At("TSTEP")).get()), 2); // nobody asks for them
    EXPECT_EQ(Elements(ReadKeywordData(deck.Keywords(), **deck.At("TSTEP"), &variables).get()), 2);
    EXPECT_TRUE(variables.HasVariables());
    EXPECT_TRUE(m_log.Empty());

    const TestDeck without(TestDeck::Texts{{"A.DATA", "SCHEDULE\nTSTEP\n$STEP 30 /\n"}}, false);
    KeywordVariables none;
    EXPECT_EQ(Elements(ReadKeywordData(without.Keywords(), **without.At("TSTEP"), &none).get()), 1); // text, no number
    EXPECT_FALSE(none.HasVariables());
    EXPECT_EQ(m_log.Count(), 1);
}

TEST_F(ReadKeywordDataTest, AReadThatThrowsCanBeTriedAgain)
{
    // A size that no deck can tell.
    const auto table = Keywords::KeywordSyntaxTable::FromText(
        R"([{"name": "X", "sections": "all", "data": {"type": "record", "items": [{"type": "list", "name": "L",
            "termination": "none", "size": "context:NOSUCH", "element": {"type": "real"}}]}}])");
    Environment::Instance().SetSyntaxTable(table.get());
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "X\n1.0 /\n"}});
    const IKeyword& keyword = **deck.At("X");
    for (int i = 0; i < 2; ++i)
        EXPECT_THROW(ReadKeywordData(deck.Keywords(), keyword), DeckManagerException);
    EXPECT_THROW(deck.Keywords().GetKeywordData(&keyword), DeckManagerException);
}

TEST_F(ReadKeywordDataTest, ATextWithoutADeck)
{
    const auto& table = *Environment::Instance().GetSyntaxTable();
    const auto read = [&table](const std::string& name, const std::string& text,
                               KeywordVariables* variables = nullptr) {
        return ReadKeywordData(*table.FindSyntax(name, true), name, text, variables);
    };
    EXPECT_EQ(Elements(read("TSTEP", "1 2 3 /").get()), 3);
    EXPECT_TRUE(m_log.Empty());
    {
        const Service::Log::Place place("piece.txt", 7);
        EXPECT_EQ(Elements(read("TSTEP", "-- steps\n1\nx 2 /\n").get()), 2);
    }
    ASSERT_EQ(m_log.Count(), 1);
    EXPECT_EQ(m_log.Messages()[0].file, "piece.txt");
    EXPECT_EQ(m_log.Messages()[0].line, 9);

    KeywordVariables variables;
    const auto data = read("TSTEP", "$STEP /", &variables);
    EXPECT_NE(variables.GetDataVariables(data.get()), nullptr);
    EXPECT_EQ(read("OIL", ""), nullptr);
    EXPECT_THROW(read("ZMFVD", "1.0 0.5 /\n/\n"), DeckManagerException);
}

} // namespace
