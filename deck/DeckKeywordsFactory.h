#pragma once

#include <memory>

namespace Tarn::Fjel::Core::DeckManager {

class DeckKeywords;
class KeywordFile;

/// Makes the view of a deck's keywords; the deck is its one user.
class DeckKeywordsFactory
{
    friend class Deck;

    static std::unique_ptr<DeckKeywords> Create(const std::shared_ptr<KeywordFile>& file, bool variablesAllowed);
};

} // namespace Tarn::Fjel::Core::DeckManager
