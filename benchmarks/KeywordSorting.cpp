#include "benchmarks/KeywordSorting.h"

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

class UnsortedDeck
{
public:
    UnsortedDeck(const std::filesystem::path& folder, int keywords)
        : m_file(folder / ("SORT" + std::to_string(keywords) + ".DATA")), m_keywords(keywords)
    {
        std::ofstream out(m_file, std::ios::binary);
        out << "GRID\n";
        for (int i = 0; i < keywords; i += 2)
            out << "MULTFLT\n'F" << i << "' 0.5 /\n/\nFAULTS\n'F" << i << "' 1 1 1 1 1 1 'I' /\n/\n";
        out.close();
        if (!out) throw std::runtime_error(m_file.string() + ": cannot be written");
    }
    ~UnsortedDeck() { std::filesystem::remove(m_file); }
    UnsortedDeck(const UnsortedDeck&) = delete;
    UnsortedDeck& operator=(const UnsortedDeck&) = delete;

    /// The seconds of a scan and of the sort behind it.
    std::pair<double, double> ScanAndSort() const
    {
        const std::unique_ptr<IDeckManager> manager = DeckManagerFactory::Create();
        IDeck* deck = nullptr;
        const double scan = Seconds([&] {
            deck = manager->ImportDeck("Deck", m_file.string(), false, true, false);
            if (deck == nullptr) throw std::runtime_error(m_file.string() + ": cannot be opened");
            deck->GetDeckKeywords()->LogicalEnd();
        });
        IDeckKeywordsEditor* editor = manager->GetEditor(deck);
        const double sort = Seconds([&] { editor->SortKeywords(); });
        int ahead = 0;
        for (KeywordIterator position = deck->GetDeckKeywords()->Begin(); (++position)->GetName() == "FAULTS";)
            ++ahead;
        if (2 * ahead != m_keywords) throw std::runtime_error(m_file.string() + ": is not sorted");
        return {scan, sort};
    }

private:
    std::filesystem::path m_file;
    int m_keywords;
};

} // namespace

SortingResult MeasureSorting(const std::filesystem::path& folder, int keywords, int repeats)
{
    const UnsortedDeck whole(folder, keywords);
    const UnsortedDeck half(folder, keywords / 2);
    std::vector<double> scans;
    std::vector<double> sorts;
    std::vector<double> halfSorts;
    whole.ScanAndSort();
    // By turns, so that what else goes on in the machine meets both.
    for (int i = 0; i < repeats; ++i) {
        const auto [scan, sort] = whole.ScanAndSort();
        scans.push_back(scan);
        sorts.push_back(sort);
        halfSorts.push_back(half.ScanAndSort().second);
    }
    SortingResult result;
    result.seconds = Median(std::move(sorts));
    result.halfSeconds = Median(std::move(halfSorts));
    result.scanSeconds = Median(std::move(scans));
    return result;
}

} // namespace Benchmarks
