// Every definition's example, in one deck: the scan finds each keyword, and the reader takes the data without a
// message, and takes them again from what the writer makes of them.
#include <algorithm>
#include <iterator>
#include <string_view>

#include <deckmanager/Context.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/KeywordDataFactory.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/keywords/KeywordSyntaxTable.h>

#include "keywords/KeywordDataDeserializer.h"
#include "keywords/KeywordDataSerializer.h"
#include "tests/support/DeckTest.h"
#include "text/LineStringReader.h"
#include "text/LineStringWriter.h"

namespace {

using namespace DeckTests;
namespace DeckManager = Tarn::Fjel::Core::DeckManager;

constexpr const char* sectionNames[] = {"RUNSPEC",  "GRID",    "EDIT",     "PROPS",   "REGIONS",
                                        "SOLUTION", "SUMMARY", "SCHEDULE", "OPTIMIZE"};

/// Keywords that would leave parts of the deck out, end it, or call for a further file.
bool ActsOnTheDeck(const Keywords::IKeywordSyntax& syntax)
{
    static const std::set<std::string, std::less<>> names = {"SKIP",   "SKIP100", "SKIP300",
                                                             "GDFILE", "ORDGRID", "IMPORT"};
    return syntax.GetKind() != Keywords::KeywordKind::Ordinary || names.count(syntax.GetName()) != 0;
}

/// A name that a pattern stands for.
std::string NameOf(const Keywords::IKeywordSyntax& syntax)
{
    std::string name = syntax.GetName();
    if (name.ends_with('*')) name.replace(name.size() - 1, 1, "XY");
    return name;
}

/// A deck of all examples, and the names of its keywords in turn.
std::string DeckOfExamples(std::vector<std::string>& names)
{
    std::string text;
    for (int section = 0; section < Keywords::SectionCount; ++section) {
        names.emplace_back(sectionNames[section]);
        text += names.back() + "\n";
        for (const Keywords::IKeywordSyntax* syntax :
             Keywords::KeywordSyntaxTable::Instance(false, true)->GetSyntaxes()) {
            if (ActsOnTheDeck(*syntax)) continue;
            if (!syntax->IsValidForSection(static_cast<SectionType>(section), Keywords::SimulatorType::Any)) continue;
            names.push_back(NameOf(*syntax));
            text += names.back() + "\n";
            text += syntax->GetExampleText();
            if (!text.ends_with('\n')) text += '\n';
        }
    }
    return text;
}

/// With plain line ends: raw text keeps those that it was read with.
std::string Written(const Keywords::IKeywordData& data)
{
    DeckManager::LineStringWriter writer;
    DeckManager::KeywordDataSerializer::Serialize(data, writer, false, Keywords::SimulatorType::Any);
    std::string text = writer.GetText();
    std::erase(text, '\r');
    return text;
}

/// What is written of the data reads as data of which the same is written.
void ExpectWrittenAsRead(const DeckManager::IKeyword& keyword, const Keywords::IKeywordData& data,
                         const DeckManager::Context& context, const std::string& place)
{
    const std::string written = Written(data);
    const auto again = Keywords::KeywordDataFactory::Instance().ConstructSafely(keyword.GetSyntax());
    DeckManager::LineStringReader reader(written);
    DeckManager::KeywordDataDeserializer::Deserialize(keyword, *again, reader, 0,
                                                      static_cast<long long>(written.size()), context, false, nullptr);
    EXPECT_EQ(Written(*again), written) << place;
}

TEST(CatalogueExamples, AreFoundReadWrittenAndReadAgainWithoutAMessage)
{
    const TestSupport::CleanEnvironment clean;
    DeckManager::Environment::Instance().SetPATHSSupport(true);
    std::vector<std::string> names;
    const std::string text = DeckOfExamples(names);
    TestSupport::LogRecorder log;
    const TestSupport::TestDeck deck({{"EXAMPLES.DATA", text}}, false);

    std::size_t index = 0;
    DeckManager::KeywordIterator position = deck.Keywords().Begin();
    for (; *position != nullptr; ++position, ++index) {
        ASSERT_LT(index, names.size());
        ASSERT_EQ(position->GetName(), names[index]) << "behind " << (index > 0 ? names[index - 1] : "");
    }
    EXPECT_EQ(index, names.size());
    for (const std::string& message : log.Texts())
        ADD_FAILURE() << "on load: " << message;

    const DeckManager::Context context(&deck.Keywords());
    std::string section;
    for (position = deck.Keywords().Begin(); *position != nullptr; ++position) {
        if (position->GetSyntax()->GetKind() == Keywords::KeywordKind::Section) section = position->GetName();
        log.Clear();
        const Keywords::IKeywordSyntax* syntax = position->GetSyntax();
        const auto data = Keywords::KeywordDataFactory::Instance().ConstructSafely(syntax);
        if (!data) continue;
        const std::string example(syntax->GetExampleText());
        DeckManager::LineStringReader reader(example);
        DeckManager::ReadReport report;
        DeckManager::KeywordDataDeserializer::Deserialize(
            **position, *data, reader, 0, static_cast<long long>(example.size()), context, false, nullptr, &report);
        EXPECT_TRUE(report.isComplete);
        EXPECT_EQ(report.takenEnd, static_cast<long long>(example.size()))
            << section << " " << position->GetName() << " leaves a part of its example unread";
        ExpectWrittenAsRead(**position, *data, context, section + " " + position->GetName());
        for (const auto& message : log.Messages()) {
            if (!message.probe) ADD_FAILURE() << section << " " << position->GetName() << ": " << message.text;
        }
    }
}

TEST(CatalogueExamples, StandForEveryKeywordWithData)
{
    for (const Keywords::IKeywordSyntax* syntax : Keywords::KeywordSyntaxTable::Instance(false, true)->GetSyntaxes()) {
        EXPECT_EQ(syntax->GetExampleText().empty(), syntax->GetMetaData() == nullptr) << syntax->GetName();
        EXPECT_FALSE(syntax->GetSummary().empty()) << syntax->GetName();
        std::string_view rest = syntax->GetExampleText();
        for (std::size_t end = 0; !rest.empty(); rest.remove_prefix(std::min(end, rest.size()))) {
            end = rest.find('\n');
            end = end == std::string_view::npos ? rest.size() : end + 1;
            EXPECT_LE(end, 133u) << syntax->GetName() << ": no line is read beyond column 132";
        }
    }
}

/// Each region's table ends where it should: by its terminator, its rows, or as a copy of the one before.
TEST(CatalogueExamples, TablesOfTwoRegionsAreToldApart)
{
    const struct
    {
        std::string name, data;
    } tables[] = {
        {"SWOF", " 0.2 0 1 1\n 1 1 0 0 /\n 0.3 0 1 1\n 1 1 0 0 /\n"},
        {"SOF32D", " 0.2 0.8 /\n 0 0.1 0.2 /\n 0.2 0 0.1 /\n /\n 0.2 0.5 /\n 0 0.1 0.2 /\n /\n"},
        {"ROCK", " 100 4E-5 /\n 200 5E-5 /\n"},
        {"PVTO", " 1 50 1.05 1.2 /\n 20 150 1.15 1\n 250 1.13 1.1 /\n /\n 1 50 1.05 1.2 /\n 30 150 1.2 1 /\n /\n"},
        {"PVTG", " 50 1E-5 0.02 0.01\n 0 0.02 0.01 /\n /\n 60 1E-5 0.02 0.01 /\n 90 0 0.01 0.01 /\n /\n"},
        {"PVDG", " 50 0.02 0.01\n 200 0.01 0.02 /\n /\n"},
        {"PVZG", " 100 /\n 50 0.9 0.015\n 200 0.85 0.02 /\n 120 /\n 50 0.91 0.015 /\n"},
        {"PVTWSALT", " 250 0 /\n 0 1 4E-5 0.5 0\n 30 1 4E-5 0.5 0 /\n 260 0 /\n 0 1 4E-5 0.5 0 /\n"},
        {"PLYVISCS", " 0 1 1 /\n 1 10 8 /\n /\n 0 1 1 /\n 2 20 15 /\n /\n"},
        {"PLYSHLOG", " 1 10 /\n 0.1 1\n 10 0.5 /\n 1 /\n 0.1 1\n 10 0.4 /\n"},
        {"ROCKTABH", " 1 1 1\n 2 1 1 /\n 1.5 1 1\n 2 1 1 /\n /\n 1 1 1\n 2 1 1 /\n /\n"},
        {"OILVISCT", " 20 5\n 100 1 /\n 20 6\n 100 2 /\n"},
        {"EOS", " PR /\n SRK /\n"},
        {"BIC", " 0.01 0.02\n 0.03 /\n 3*0 /\n"},
        {"KVTABT", " 50 1.2 0.4 /\n 100 1.5 0.6 /\n /\n 50 1.3 0.4 /\n /\n"},
    };
    std::string text = "RUNSPEC\nTABDIMS\n 2 2 6* 2 2 2* 2 /\nROCKCOMP\n HYSTER 2 /\nPROPS\n";
    for (const auto& table : tables)
        text += table.name + "\n" + table.data;
    TestSupport::LogRecorder log;
    const TestSupport::TestDeck deck({{"TABLES.DATA", text}}, false);
    std::size_t index = 0;
    for (DeckManager::KeywordIterator position = deck.Keywords().Begin(); *position != nullptr; ++position) {
        if (index == std::size(tables) || position->GetName() != tables[index].name) continue;
        const Keywords::IKeywordData* data = deck.Keywords().GetKeywordData(*position);
        ASSERT_NE(data, nullptr) << tables[index].name;
        EXPECT_EQ(static_cast<const Keywords::IKeywordListData*>(data)->GetElementCount(), 2) << tables[index].name;
        ++index;
    }
    EXPECT_EQ(index, std::size(tables));
    for (const auto& message : log.Messages()) {
        if (!message.probe) ADD_FAILURE() << message.text;
    }
}

/// The decks that users are shown first, and those in the styles of many people: each keyword is known, in its place,
/// its data fit its definition, and what is written of them says the same.
TEST(CatalogueExamples, DecksAreReadWrittenAndReadAgainWithoutAMessage)
{
    const struct
    {
        const char* name;
        bool isQuiet; ///< no words behind END, and no quantities of the user's in the place of numbers
    } decks[] = {
        {"examples/decks/single/SKERROW.DATA", true},
        {"examples/decks/field/FIELD.DATA", true},
        {"tests/deckman/decks/HORIZONTAL.DATA", true},
        {"tests/deckman/decks/torne/TORNE_E7.DATA", true},
        {"tests/deckman/decks/condensate/CONDENSATE.DATA", true},
        {"tests/deckman/decks/LOMVI.DATA", false},
        {"tests/deckman/decks/ACTIONS.DATA", false},
        {"tests/deckman/decks/lower/lower.data", false},
    };
    for (const auto& [name, isQuiet] : decks) {
        SCOPED_TRACE(name);
        const TestSupport::CleanEnvironment clean;
        DeckManager::Environment::Instance().SetPATHSSupport(true);
        TestSupport::LogRecorder log;
        const auto manager = DeckManager::DeckManagerFactory::Create();
        DeckManager::IDeck* deck =
            manager->ImportDeck("Example", std::string(DECK_SOURCE_DIR "/") + name, false, false, false);
        ASSERT_NE(deck, nullptr);
        const DeckManager::Context context(deck->GetDeckKeywords());
        int count = 0;
        DeckManager::KeywordIterator position = deck->GetDeckKeywords()->Begin();
        for (; *position != nullptr; ++position, ++count) {
            if (position->GetSyntax()->GetMetaData()) {
                const Keywords::IKeywordData* data = deck->GetDeckKeywords()->GetKeywordData(*position);
                ASSERT_NE(data, nullptr) << position->GetName();
                ExpectWrittenAsRead(**position, *data, context,
                                    position->GetName() + " on line " + std::to_string(position->GetLine()));
            }
            for (const auto& message : log.Messages()) {
                if (!message.probe && isQuiet)
                    ADD_FAILURE() << position->GetName() << " on line " << position->GetLine() << ": " << message.text;
            }
            log.Clear();
        }
        EXPECT_GT(count, 50);
    }
}

} // namespace
