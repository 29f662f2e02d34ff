#include "benchmarks/KeywordRemoval.h"

#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <deckmanager/DeckManagerFactory.h>
#include <deckmanager/IDeck.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/IDeckManager.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/KeywordIterator.h>

#include "benchmarks/Measure.h"

namespace Benchmarks {

namespace {

using namespace Tarn::Fjel::Core::DeckManager;

class FullDeck
{
public:
    FullDeck(const std::filesystem::path& folder, int keywords)
        : m_file(folder / ("REMOVE" + std::to_string(keywords) + ".DATA"))
    {
        std::ofstream out(m_file, std::ios::binary);
        out << "GRID\n";
        for (int i = 0; i < keywords; ++i)
            out << "-- " << i << "\nMULTFLT\n'F" << i << "' 0.5 /\n/\n";
        out << "PROPS\n";
        out.close();
        if (!out) throw std::runtime_error(m_file.string() + ": cannot be written");
    }
    ~FullDeck() { std::filesystem::remove(m_file); }
    FullDeck(const FullDeck&) = delete;
    FullDeck& operator=(const FullDeck&) = delete;

    double SecondsToEmpty() const
    {
        const std::unique_ptr<IDeckManager> manager = DeckManagerFactory::Create();
        IDeck* deck = manager->ImportDeck("Deck", m_file.string(), false, true, false);
        if (deck == nullptr) throw std::runtime_error(m_file.string() + ": cannot be opened");
        KeywordIterator first = deck->GetDeckKeywords()->Begin();
        ++first;
        KeywordIterator last = first;
        while (last->GetName() != "PROPS")
            ++last;
        IDeckKeywordsEditor* editor = manager->GetEditor(deck);
        const double seconds = Seconds([&] { editor->RemoveKeywords(first, last); });
        if ((++deck->GetDeckKeywords()->Begin())->GetName() != "PROPS")
            throw std::runtime_error(m_file.string() + ": keywords are left");
        return seconds;
    }

private:
    std::filesystem::path m_file;
};

} // namespace

RemovalResult MeasureRemoval(const std::filesystem::path& folder, int keywords, int fewer, int repeats)
{
    const FullDeck many(folder, keywords);
    const FullDeck few(folder, fewer);
    std::vector<double> seconds;
    std::vector<double> fewSeconds;
    many.SecondsToEmpty();
    // By turns, so that what else goes on in the machine meets both.
    for (int i = 0; i < repeats; ++i) {
        seconds.push_back(many.SecondsToEmpty());
        fewSeconds.push_back(few.SecondsToEmpty());
    }
    return {Median(std::move(seconds)), Median(std::move(fewSeconds))};
}

} // namespace Benchmarks
