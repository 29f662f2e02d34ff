#include <map>
#include <random>

#include "tests/deckman/Program.h"
#include <deckmanager/DeckManagerFactory.h>
#include <deckmanager/DeckPositions.h>
#include <deckmanager/Environment.h>
#include <deckmanager/IDeck.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/IKeyword.h>
#include <tarn/keywords/IKeywordSyntax.h>

/// The program finds all scopes in one walk; the library walks for each. They must agree on every nesting, sound or
/// not.

namespace DeckmanTests {

namespace {

using namespace Tarn::Fjel::Core::DeckManager;

/// "head begin end" for each scope, as the library tells it, in deck order.
std::vector<std::string> ScopesOfLibrary(const std::string& path)
{
    const auto manager = DeckManagerFactory::Create();
    const IDeck& deck = *manager->ImportDeck("scopes", path, false, true, false);
    const IDeckKeywords& keywords = *deck.GetDeckKeywords();
    std::map<const IKeyword*, int> indices;
    int count = 0;
    for (KeywordIterator position = keywords.Begin(); position != keywords.End(); ++position)
        indices[*position] = ++count;

    std::vector<std::string> scopes;
    for (KeywordIterator position = keywords.Begin(); position != keywords.End(); ++position) {
        if (!position->GetSyntax()->IsScopeStart()) continue;
        const IKeyword* behind = *ScopeEnd(position, deck, false);
        const auto end = indices.find(behind);
        scopes.push_back(position->GetName() + " " + std::to_string(indices[*position]) + " " +
                         std::to_string(end == indices.end() ? count + 1 : end->second));
    }
    return scopes;
}

std::vector<std::string> ScopesOfProgram(const std::string& path)
{
    std::vector<std::string> scopes;
    for (const auto& scope : JsonLines(Deckman({"scopes", path, "--json"}).out)) {
        scopes.push_back(scope.at("head").get<std::string>() + " " + scope.at("begin").dump() + " " +
                         scope.at("end").dump());
    }
    return scopes;
}

} // namespace

TEST(Scopes, AreThoseOfTheLibraryInTheExamples)
{
    Environment::Instance().SetPATHSSupport(true);
    for (const char* deck : {"single/SKERROW.DATA", "field/FIELD.DATA"}) {
        const std::string path = std::string(DECK_SOURCE_DIR "/examples/decks/") + deck;
        EXPECT_EQ(ScopesOfProgram(path), ScopesOfLibrary(path)) << deck;
    }
    Environment::Instance().destroy();
}

TEST(Scopes, AreThoseOfTheLibraryInAnyNesting)
{
    const char* const pieces[] = {"SKIP\n",
                                  "SKIP100\n",
                                  "ENDSKIP\n",
                                  "ENDSKIP\n",
                                  "BOX\n 1 2 /\n",
                                  "ENDBOX\n",
                                  "CARFIN\n 'A' /\n",
                                  "ENDFIN\n",
                                  "REFINE\n 'A' /\n",
                                  "ACTIONX\n A /\n X > 1 /\n/\n",
                                  "ENDACTIO\n",
                                  "DATES\n 1 'JAN' 2020 /\n/\n",
                                  "TSTEP\n 1 /\n",
                                  "WELOPEN\n 'A' /\n/\n",
                                  "END\n"};
    std::mt19937 random(20240601);
    for (int round = 0; round < 60; ++round) {
        std::string text = "RUNSPEC\nOIL\n";
        const char* const sections[] = {"GRID\n", "PROPS\n", "SCHEDULE\n"};
        for (const char* section : sections) {
            text += section;
            for (auto length = random() % 25; length > 0; --length) {
                // The end of the deck comes seldom.
                const std::size_t piece = random() % std::size(pieces);
                if (piece + 1 < std::size(pieces) || random() % 10 == 0) text += pieces[piece];
            }
        }
        const TestSupport::TempDir folder;
        const std::string path = folder.Write("TOP.DATA", text);
        ASSERT_EQ(ScopesOfProgram(path), ScopesOfLibrary(path)) << text;
    }
}

} // namespace DeckmanTests
