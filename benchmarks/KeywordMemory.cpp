#include "benchmarks/KeywordMemory.h"

#include <memory>
#include <stdexcept>

#include <malloc.h>

#include <deckmanager/DeckManagerFactory.h>
#include <deckmanager/Environment.h>
#include <deckmanager/IDeck.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/IDeckManager.h>
#include <deckmanager/KeywordIterator.h>

namespace Benchmarks {

namespace {

using namespace Tarn::Fjel::Core::DeckManager;

std::size_t HeapBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

long long CountKeywords(IDeckManager& manager, const std::string& deckFile)
{
    IDeck* deck = manager.ImportDeck("Deck", deckFile, false, true, false);
    if (!deck) throw std::runtime_error(deckFile + ": cannot be opened");
    IDeckKeywords* keywords = deck->GetDeckKeywords();
    long long count = 0;
    for (KeywordIterator position = keywords->Begin(), end = keywords->End(); position != end; ++position)
        ++count;
    return count;
}

} // namespace

KeywordMemoryResult MeasureKeywordMemory(const std::string& deckFile)
{
    Environment::Instance().SetPATHSSupport(true);
    {
        // What a process makes once, the look-up tables of the catalogue above all, is made here and stays.
        const std::unique_ptr<IDeckManager> manager = DeckManagerFactory::Create();
        CountKeywords(*manager, deckFile);
    }
    const std::unique_ptr<IDeckManager> manager = DeckManagerFactory::Create();
    const std::size_t before = HeapBytes();
    KeywordMemoryResult result;
    result.keywords = CountKeywords(*manager, deckFile);
    const std::size_t after = HeapBytes();
    if (result.keywords > 0 && after > before)
        result.bytesPerKeyword = static_cast<double>(after - before) / static_cast<double>(result.keywords);
    return result;
}

} // namespace Benchmarks
