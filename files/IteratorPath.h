#pragma once

#include <vector>

#include <deckmanager/KeywordFileIterator.h>
#include <deckmanager/KeywordIterator.h>

namespace Tarn::Fjel::Core::DeckManager {

/// The way to a position of a deck's walk: the places of the INCLUDE keywords from the top file down, and behind them
/// the place in the innermost file.
class IteratorPath
{
public:
    using Places = std::vector<KeywordFileIterator>;

    static Places Of(const KeywordIterator& position);

    /// The position at the end of that way, as a walk from the top would stand there. REQUIRES: at least one place.
    static KeywordIterator ToPosition(const Places& places, bool ignoreLogicalEnds);
};

} // namespace Tarn::Fjel::Core::DeckManager
