#pragma once

#include <memory>
#include <string>

namespace Tarn::Fjel::Core::DeckManager {

class Deck;
class IKeywordFileManager;

/// Makes decks; their manager is its one user.
class DeckFactory
{
    friend class DeckManager;

    static std::unique_ptr<Deck> Create(IKeywordFileManager& fileManager, const std::string& name, bool openExisting,
                                        bool allowVariables);
};

} // namespace Tarn::Fjel::Core::DeckManager
