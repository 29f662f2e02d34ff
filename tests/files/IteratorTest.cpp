#include "files/IteratorAccess.h"
#include "tests/support/DeckTest.h"

namespace {

using namespace DeckTests;

class IteratorTest : public testing::Test
{
protected:
    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
};

const TestDeck::Texts s_tree = {
    {"A.DATA", "RUNSPEC\nINCLUDE\n'b.inc' /\nOIL\nINCLUDE\n'empty.inc' /\nINCLUDE\n'gone.inc' /\nGAS\n"},
    {"b.inc", "WATER\nINCLUDE\n'c.inc' /\n"},
    {"c.inc", "METRIC\nDISGAS\n"},
    {"empty.inc", "-- nothing\n"},
};

TEST_F(IteratorTest, BackwardsIsForwardsReversed)
{
    const TestDeck deck(s_tree);
    EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE WATER INCLUDE METRIC DISGAS OIL INCLUDE INCLUDE GAS");
    EXPECT_EQ(deck.WalkBack(), "GAS INCLUDE INCLUDE OIL DISGAS METRIC INCLUDE WATER INCLUDE RUNSPEC");
    // Step by step there and back.
    std::vector<KeywordIterator> steps;
    for (KeywordIterator position = deck.Keywords().Begin(); *position != nullptr; ++position) {
        steps.push_back(position);
    }
    KeywordIterator position = deck.Keywords().PhysicalEnd();
    for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
        --position;
        EXPECT_TRUE(IteratorAccess::IsIdentical(position, *step)) << (*step)->GetName();
    }
}

TEST_F(IteratorTest, OrderIsThatOfTheWalk)
{
    const TestDeck deck(s_tree);
    std::vector<KeywordIterator> steps;
    for (KeywordIterator position = deck.Keywords().Begin(); *position != nullptr; ++position) {
        steps.push_back(position);
    }
    steps.push_back(deck.Keywords().PhysicalEnd());
    for (std::size_t a = 0; a < steps.size(); ++a) {
        for (std::size_t b = 0; b < steps.size(); ++b) {
            EXPECT_EQ(steps[a] < steps[b], a < b) << a << " " << b;
            EXPECT_EQ(steps[a] == steps[b], a == b) << a << " " << b;
        }
    }
}

TEST_F(IteratorTest, PlacesInAFile)
{
    const TestDeck deck(s_tree);
    KeywordFileIterator none;
    EXPECT_EQ(*none, nullptr);
    EXPECT_EQ(++none, KeywordFileIterator());
    EXPECT_FALSE(none < none);

    KeywordFileIterator place = deck.TopFile().Begin();
    --place;
    EXPECT_TRUE(place.AtBeforeBegin());
    EXPECT_EQ(*place, nullptr);
    EXPECT_TRUE(place < deck.TopFile().Begin());
    EXPECT_FALSE(deck.TopFile().Begin() < place);
    EXPECT_THROW(--place, DeckManagerException);
    EXPECT_EQ(++place, deck.TopFile().Begin());
    EXPECT_FALSE(place < deck.File("b.inc").End());
    EXPECT_EQ(deck.TopFile().Find(*place), place);
    EXPECT_EQ(deck.File("b.inc").Find(*place), deck.File("b.inc").End());
}

TEST_F(IteratorTest, OneKeywordReachedOnTwoWaysIsOnePosition)
{
    const TestDeck deck(s_tree);
    const KeywordIterator fromTop = deck.At("METRIC");
    const KeywordIterator fromFile = IteratorAccess::Walk(&deck.File("c.inc"), true, false);
    EXPECT_EQ(fromTop, fromFile);
    EXPECT_FALSE(fromTop < fromFile);
    EXPECT_EQ(IteratorAccess::CurrentFile(fromTop), &deck.File("c.inc"));
}

TEST_F(IteratorTest, PositionMadeFromAPlaceStepsOverTheIncludedFile)
{
    const TestDeck deck(s_tree);
    KeywordIterator position = IteratorAccess::At(deck.TopFile().GetINCLUDEKeywords().front());
    EXPECT_EQ((++position)->GetName(), "OIL");
}

TEST_F(IteratorTest, EndsOfFiles)
{
    const TestDeck deck(
        {{"A.DATA", "RUNSPEC\nINCLUDE\n'b.inc' /\nOIL\nENDINC\nGAS\n"}, {"b.inc", "WATER\nENDINC\nMETRIC\n"}});
    EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE WATER OIL");
    EXPECT_EQ(deck.Walk(true), "RUNSPEC INCLUDE WATER ENDINC METRIC OIL ENDINC GAS");

    KeywordIterator position = deck.At("METRIC");
    EXPECT_TRUE(position.afterLogicalEnd());
    ++position;
    EXPECT_FALSE(position.afterLogicalEnd()); // back in a file whose end is still ahead

    // The end of a deck doesn't end the walk through a file.
    const TestDeck ended(TestDeck::Texts{{"A.DATA", "RUNSPEC\nEND\nOIL\n"}});
    EXPECT_EQ(ended.Walk(), "RUNSPEC END OIL");
}

TEST_F(IteratorTest, EmptyDeck)
{
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "-- nothing\n"}});
    KeywordIterator position = deck.Keywords().Begin();
    EXPECT_EQ(*position, nullptr);
    EXPECT_EQ(position, deck.Keywords().PhysicalEnd());
    --position;
    EXPECT_THROW(--position, DeckManagerException);
    EXPECT_EQ(*KeywordIterator(), nullptr);
    EXPECT_EQ(KeywordIterator(), KeywordIterator());
}

} // namespace
