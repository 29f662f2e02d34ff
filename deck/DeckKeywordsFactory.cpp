#include "deck/DeckKeywordsFactory.h"

#include "deck/DeckKeywords.h"

namespace Tarn::Fjel::Core::DeckManager {

std::unique_ptr<DeckKeywords> DeckKeywordsFactory::Create(const std::shared_ptr<KeywordFile>& file,
                                                          bool variablesAllowed)
{
    return std::make_unique<DeckKeywords>(file, variablesAllowed);
}

} // namespace Tarn::Fjel::Core::DeckManager
