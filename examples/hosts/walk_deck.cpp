// Opens a deck, walks all its keywords, and reads typed values from some of them.
//
//   walk_deck DECK

#include <exception>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include <deckmanager/DeckManagerFactory.h>
#include <deckmanager/Environment.h>
#include <deckmanager/IDeck.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/IDeckManager.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/KeywordIterator.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/service/Log.h>

using namespace Tarn::Fjel::Core;
using DeckManager::IDeckKeywords;
using DeckManager::KeywordIterator;

namespace {

/// How many keywords of each name the deck has, whatever file they stand in. Reads no data.
std::map<std::string, int> CountNames(const IDeckKeywords& keywords)
{
    std::map<std::string, int> counts;
    for (KeywordIterator position = keywords.Begin(); position != keywords.End(); ++position)
        ++counts[position->GetName()];
    return counts;
}

/// Prints the size of the grid, from the record of DIMENS. The keyword's data are read and parsed here, on first
/// demand.
void PrintGrid(const IDeckKeywords& keywords)
{
    for (KeywordIterator position = keywords.Begin(); position != keywords.End(); ++position) {
        if (position->GetName() != "DIMENS") continue;
        const Keywords::IKeywordData* data = keywords.GetKeywordData(*position);
        if (!data || data->GetType() != Keywords::MDType::Record) return;
        const auto& record = static_cast<const Keywords::IKeywordRecordData&>(*data);
        std::cout << "grid:";
        for (int item = 0; item < record.GetItemCount(); ++item)
            std::cout << (item == 0 ? " " : " x ") << record.GetItem(item).GetInteger();
        std::cout << '\n';
        return;
    }
}

/// Prints the name of every well and the line that introduces it, from the records of all WELSPECS.
void PrintWells(const IDeckKeywords& keywords)
{
    for (KeywordIterator position = keywords.Begin(); position != keywords.End(); ++position) {
        if (position->GetName() != "WELSPECS") continue;
        const Keywords::IKeywordData* data = keywords.GetKeywordData(*position);
        if (!data || data->GetType() != Keywords::MDType::List) continue;
        const auto& records = static_cast<const Keywords::IKeywordListData&>(*data);
        for (int i = 0; i < records.GetElementCount(); ++i) {
            const auto& record = static_cast<const Keywords::IKeywordRecordData&>(records.GetContainer(i));
            std::cout << "well: " << record.GetItem(0).GetString() << ", keyword at line " << position->GetLine()
                      << '\n';
        }
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: walk_deck DECK\n";
        return 2;
    }
    try {
        // The library writes nothing of its own to a console: a host shows the messages, or drops them.
        Service::Log::SetHandler([](std::string_view text, int) { std::cerr << text << '\n'; });
        DeckManager::Environment::Instance().SetPATHSSupport(true);

        const std::unique_ptr<DeckManager::IDeckManager> manager = DeckManager::DeckManagerFactory::Create();
        const DeckManager::IDeck* deck = manager->ImportDeck("Deck", argv[1], false, true, false);
        if (!deck) {
            std::cerr << argv[1] << ": cannot be opened\n";
            return 3;
        }
        const IDeckKeywords& keywords = *deck->GetDeckKeywords();

        const std::map<std::string, int> counts = CountNames(keywords);
        int total = 0;
        for (const auto& [name, count] : counts)
            total += count;
        std::cout << "keywords: " << total << ", of " << counts.size() << " names\n";
        PrintGrid(keywords);
        PrintWells(keywords);
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << argv[1] << ": " << failure.what() << '\n';
        return 1;
    }
}
