// Every definition's example, in one deck: the scan finds each keyword, and the reader takes the data without a
// message.
#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <deckmanager/Context.h>
#include <deckmanager/DeckManagerFactory.h>
#include <deckmanager/IKeyword.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/KeywordDataFactory.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/keywords/KeywordSyntaxTable.h>

#include "keywords/KeywordDataDeserializer.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/TestDeck.h"
#include "text/LineStringReader.h"

namespace {

namespace Keywords = Tarn::Fjel::Core::Keywords;
namespace DeckManager = Tarn::Fjel::Core::DeckManager;
using Keywords::SectionType;

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

TEST(CatalogueExamples, AreFoundAndReadWithoutAMessage)
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
        long long takenEnd = -1;
        DeckManager::KeywordDataDeserializer::Deserialize(
            **position, *data, reader, 0, static_cast<long long>(example.size()), context, false, nullptr, &takenEnd);
        EXPECT_EQ(takenEnd, static_cast<long long>(example.size()))
            << section << " " << position->GetName() << " leaves a part of its example unread";
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

/// The decks that users are shown first: each keyword is known, in its place, and its data fit its definition.
TEST(CatalogueExamples, ExampleDecksAreReadWithoutAMessage)
{
    for (const char* name : {"single/SKERROW.DATA", "field/FIELD.DATA"}) {
        SCOPED_TRACE(name);
        const TestSupport::CleanEnvironment clean;
        DeckManager::Environment::Instance().SetPATHSSupport(true);
        TestSupport::LogRecorder log;
        const auto manager = DeckManager::DeckManagerFactory::Create();
        DeckManager::IDeck* deck =
            manager->ImportDeck("Example", std::string(DECK_SOURCE_DIR "/examples/decks/") + name, false, false, false);
        ASSERT_NE(deck, nullptr);
        int count = 0;
        DeckManager::KeywordIterator position = deck->GetDeckKeywords()->Begin();
        for (; *position != nullptr; ++position, ++count) {
            if (position->GetSyntax()->GetMetaData()) {
                EXPECT_NE(deck->GetDeckKeywords()->GetKeywordData(*position), nullptr) << position->GetName();
            }
            for (const auto& message : log.Messages()) {
                if (!message.probe) ADD_FAILURE() << position->GetName() << ": " << message.text;
            }
            log.Clear();
        }
        EXPECT_GT(count, 50);
    }
}

} // namespace
