#include "benchmarks/ProjectReopening.h"

#include <fstream>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <deckmanager/DeckManagerFactory.h>
#include <deckmanager/Environment.h>
#include <deckmanager/IDeck.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/IDeckManager.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/KeywordIterator.h>

#include "benchmarks/Measure.h"

namespace Benchmarks {

namespace {

using namespace Tarn::Fjel::Core::DeckManager;

struct Names
{
    long long keywords = 0;
    std::size_t different = 0; ///< bytes of the different ones
};

Names WalkNames(const std::string& project, const std::string& deckFile)
{
    const std::unique_ptr<IDeckManager> manager = DeckManagerFactory::Create(project);
    IDeck* deck = manager->ImportDeck("Deck", deckFile, false, true, false);
    if (!deck) throw std::runtime_error(deckFile + ": cannot be opened");
    IDeckKeywords* keywords = deck->GetDeckKeywords();
    Names names;
    for (KeywordIterator position = keywords->Begin(), end = keywords->End(); position != end; ++position) {
        if (!position->GetName().empty()) ++names.keywords;
    }
    return names;
}

/// A walk that makes the cache, and tells how many bytes the different names have.
Names FillCache(const std::string& project, const std::string& deckFile)
{
    Names names = WalkNames(project, deckFile);
    const std::unique_ptr<IDeckManager> manager = DeckManagerFactory::Create();
    IDeckKeywords* keywords = manager->ImportDeck("Deck", deckFile, false, true, false)->GetDeckKeywords();
    std::set<std::string> different;
    for (KeywordIterator position = keywords->Begin(), end = keywords->End(); position != end; ++position)
        different.insert(position->GetName());
    for (const std::string& name : different)
        names.different += name.size();
    return names;
}

} // namespace

ReopeningResult MeasureReopening(const std::filesystem::path& deckFile, bool binary, int repeats)
{
    Environment::Instance().SetPATHSSupport(true);
    const std::filesystem::path project = std::filesystem::absolute(deckFile).parent_path();
    const std::filesystem::path marker = project / "deck_cache_xml.lock";
    const std::filesystem::path table = project / "DeckCache.ptd";
    std::filesystem::remove(table);
    if (binary) std::ofstream(marker).flush();

    ReopeningResult result;
    const Names names = FillCache(project.string(), deckFile.string());
    if (!std::filesystem::exists(table)) throw std::runtime_error(table.string() + ": not written");
    result.keywords = names.keywords;
    result.bytesPerKeyword =
        static_cast<double>(std::filesystem::file_size(table) - names.different) / static_cast<double>(names.keywords);
    // By turns, so that what else goes on in the machine meets both.
    std::vector<double> scans;
    std::vector<double> cachedLoads;
    for (int i = 0; i < repeats; ++i) {
        scans.push_back(Seconds([&] { WalkNames({}, deckFile.string()); }));
        cachedLoads.push_back(Seconds([&] { WalkNames(project.string(), deckFile.string()); }));
    }
    result.scanSeconds = Median(std::move(scans));
    result.cachedSeconds = Median(std::move(cachedLoads));
    std::filesystem::remove(table);
    std::filesystem::remove(marker);
    return result;
}

} // namespace Benchmarks
