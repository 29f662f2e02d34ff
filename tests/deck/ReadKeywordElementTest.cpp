#include <deckmanager/ReadKeywordElement.h>

#include <fmt/format.h>

#include "tests/support/DeckTest.h"
#include <deckmanager/KeywordVariables.h>
#include <deckmanager/ReadKeywordData.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordListDataVariables.h>

namespace {

using namespace DeckTests;

class ReadKeywordElementTest : public testing::Test
{
protected:
    /// The element, and each message with its line; "none" where there is no list.
    std::string Element(const TestDeck& deck, const std::string& name, int index)
    {
        m_log.Clear();
        KeywordVariables variables;
        const auto element = ReadKeywordElement(deck.Keywords(), **deck.At(name), index, &variables);
        if (!element) return "none";
        EXPECT_LE(element->list->GetElementCount(), 1);
        return Told(*element->list, element->count, 0, variables);
    }

    /// The same out of all data.
    std::string ElementOfAll(const TestDeck& deck, const std::string& name, int index)
    {
        m_log.Clear();
        KeywordVariables variables;
        const auto data = ReadKeywordData(deck.Keywords(), **deck.At(name), &variables);
        const auto& list = static_cast<const Keywords::IKeywordListData&>(*data);
        return Told(list, list.GetElementCount(), index, variables);
    }

    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;

private:
    std::string Told(const Keywords::IKeywordListData& list, int count, int index, const KeywordVariables& variables)
    {
        std::string told = fmt::format("of {}:", count);
        if (index >= 0 && index < list.GetElementCount()) {
            const Keywords::ConstSlot slot = list.GetElement(index);
            if (slot.HasValue() && slot.Kind() == Keywords::MDType::Real) told += fmt::format(" {}", slot.GetReal());
            if (slot.HasValue() && slot.Kind() == Keywords::MDType::Integer)
                told += fmt::format(" {}", slot.GetInteger());
            if (slot.HasValue() && slot.Kind() == Keywords::MDType::String)
                told += fmt::format(" {}", slot.GetString());
            if (list.IsElementDefaulted(index)) told += " default";
            if (const auto* found = variables.GetDataVariables(&list)) {
                const auto& references = static_cast<const Keywords::IKeywordListDataVariables&>(*found);
                for (const int place : references.GetVariableIndices())
                    if (place == index) told += " " + references.GetVariable(place).GetString();
            }
        }
        for (const auto& message : m_log.Messages())
            told += fmt::format("; {}: {}", message.line, message.text);
        return told;
    }
};

TEST_F(ReadKeywordElementTest, IsThatOfTheReadOfAllData)
{
    const std::string wide(140, ' ');
    const struct
    {
        std::string poro;
        int index;
        std::string element;
    } cases[] = {
        {"0.1 0.2 0.3 /\n", 2, "of 3: 0.3"},
        {"0.1 3*0.2\n0.3 /\n", 1, "of 5: 0.2"}, // the repeat's ends, and what stands beside it
        {"0.1 3*0.2\n0.3 /\n", 3, "of 5: 0.2"},
        {"0.1 3*0.2\n0.3 /\n", 4, "of 5: 0.3"},
        {"0.1 3* 0.3 /\n", 0, "of 5: 0.1"},
        {"0.1 3* 0.3 /\n", 3, "of 5: default"},
        {"0.1,,0.3 /\n", 1, "of 3: default"},
        {"0.1 0.2 /\n", 2, "of 2:"},
        {"0.1 0.2 /\n", -1, "of 2:"},
        {"0.1 0.2 /\n", 2147483647, "of 2:"},
        {"/\n", 0, "of 0:"},
        {"1000000*0.1 999999*0.2 0.3\n/\n", 1999999, "of 2000000: 0.3"},
        {"-- layer 1\n0.1 -- and more / 7\n\n  -- layer 2\n0.2 /\n", 1, "of 2: 0.2"},
        {"0.1\r\n0.2\r\n\r\n0.3 /\r\n", 2, "of 3: 0.3"},
        {"0.1 --@@@ 7\n--@@@ 0.2\n0.3 /\n", 1, "of 3: 0.2"},
        {"0.1 '0.2' 2*'0.3' 4.D-1 /\n", 4, "of 5: 0.4"},
        {"0.1 0.2 / 0.3\n", 1, "of 2: 0.2"},
        {"0.1" + wide + "\n0.2 /\n", 1, "of 2: 0.2"},
        // What is told of the data is told, wherever it stands, and in its line.
        {"0.1 bad 0.2\n0.3 /\n", 1, "of 3: 0.2; 4: \"bad\" can not be converted into double"},
        {"0.1\n0.2 bad /\n", 0, "of 2: 0.1; 5: \"bad\" can not be converted into double"},
        {"0.1\n0.2\n", 1, "of 2: 0.2; 5: List in keyword PORO is not properly terminated"},
        {"0.1\n0.2 'q /\n", 1,
         "of 2: 0.2; 5: Unbalanced quote while reading keyword data: 0.2 'q /; "
         "5: \"q\" can not be converted into double"},
        {"0.1" + wide + "7\n0.2 /\n", 1,
         "of 2: 0.2; 4: Line exceeds the maximum VELDANE keyword line length of 132 "
         "characters.  Anything beyond 132 characters will be ignored."},
        {"0.1 /\n" + wide + "7\n", 0,
         "of 1: 0.1; 5: Line exceeds the maximum VELDANE keyword line length of 132 "
         "characters.  Anything beyond 132 characters will be ignored."},
        // References stand beside the data.
        {"0.1 $A 0.2 /\n", 1, "of 3: default $A"},
        {"0.1 2*$A 0.2 /\n", 2, "of 4: default $A"},
        {"0.1 $A 0.2 /\n", 2, "of 3: 0.2"},
    };
    for (const auto& c : cases) {
        const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\nGRID\nPORO\n" + c.poro + "NTG\n 5*1 /\n"}});
        EXPECT_EQ(Element(deck, "PORO", c.index), c.element) << c.poro;
        EXPECT_EQ(ElementOfAll(deck, "PORO", c.index), c.element) << c.poro;
        EXPECT_FALSE(static_cast<const Keyword&>(**deck.At("PORO")).IsDirty());
    }
}

TEST_F(ReadKeywordElementTest, ALongArrayWithAllThatMayStandInIt)
{
    // Larger than the reader's window, so that lines, comments and blocks meet its ends in all ways.
    std::string text = "GRID\nACTNUM\n";
    std::vector<int> values;
    for (int line = 0; values.size() < 300000; ++line) {
        if (line % 37 == 0) text += fmt::format("-- row {}'s cells\n", line);
        for (int i = 0; i < 1 + line % 13; ++i) {
            const int value = line * 20 + i;
            if (i % 7 == 3) {
                text += fmt::format(" {}*{}", 1 + line % 5, value);
                values.insert(values.end(), static_cast<std::size_t>(1 + line % 5), value);
            } else {
                text += fmt::format(" {}", value);
                values.push_back(value);
            }
        }
        text += line % 41 == 0 ? " --\n" : line % 43 == 0 ? "\r\n" : "\n";
    }
    const TestDeck deck(TestDeck::Texts{{"A.DATA", text + "/\nPORO\n 0.1 /\n"}});
    const IKeyword& keyword = **deck.At("ACTNUM");
    const auto count = static_cast<int>(values.size());
    for (int index = 0; index < count; index += 1 + index % 701) {
        const auto element = ReadKeywordElement(deck.Keywords(), keyword, index);
        ASSERT_TRUE(element && element->list->GetElementCount() == 1 && element->count == count) << index;
        ASSERT_EQ(element->list->GetElement(0).GetInteger(), values[static_cast<std::size_t>(index)]) << index;
    }
    EXPECT_EQ(Element(deck, "ACTNUM", count), fmt::format("of {}:", count));
    EXPECT_TRUE(m_log.Empty());
}

TEST_F(ReadKeywordElementTest, UncommittedChangesCount)
{
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "GRID\nPORO\n 0.1 0.2 /\nNTG\n 1 /\n"}});
    IDeckKeywordsEditor& editor = *deck.Manager().GetEditor(&deck.Deck());
    ASSERT_TRUE(editor.SetDataText(deck.At("PORO"), " 2*0.5 bad 0.7 /"));
    EXPECT_EQ(Element(deck, "PORO", 2).substr(0, 10), "of 3: 0.7;");
    EXPECT_EQ(Element(deck, "PORO", 2), ElementOfAll(deck, "PORO", 2));
    ASSERT_TRUE(editor.SetDataText(deck.At("PORO"), " 2*0.5 0.6 0.7 /"));
    EXPECT_EQ(Element(deck, "PORO", 3), "of 4: 0.7");

    std::unique_ptr<Keywords::IKeywordData> data = ReadKeywordData(deck.Keywords(), **deck.At("NTG"));
    auto& list = static_cast<Keywords::IKeywordListData&>(*data);
    list.AppendDefaults(1);
    list.AppendRealRun(0.25, 2);
    ASSERT_TRUE(editor.SetData(deck.At("NTG"), std::move(data)));
    EXPECT_EQ(Element(deck, "NTG", 1), "of 4: default");
    EXPECT_EQ(Element(deck, "NTG", 3), "of 4: 0.25");
    EXPECT_EQ(Element(deck, "NTG", 4), "of 4:");
}

TEST_F(ReadKeywordElementTest, OnlyListsOfSingleValuesHaveElements)
{
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\nOIL\nTABDIMS\n 2 /\nPROPS\nCNAMES\n C1 'c two' C3 /\n"
                                                   "SCHEDULE\nRPTSCHED\n FIP=1 /\nWELTARG\n A ORAT 1 /\n/\n"}});
    for (const char* name : {"OIL", "TABDIMS", "RPTSCHED", "WELTARG"})
        EXPECT_EQ(Element(deck, name, 0), "none") << name;
    EXPECT_EQ(Element(deck, "CNAMES", 0), "of 3: C1");
    EXPECT_EQ(Element(deck, "CNAMES", 1), ElementOfAll(deck, "CNAMES", 1));
    EXPECT_FALSE(ReadKeywordElement(deck.Keywords(), **deck.At("OIL"), 0));
}

} // namespace
