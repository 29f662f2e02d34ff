#include "files/IteratorPath.h"

#include "files/IteratorAccess.h"
#include "files/KeywordFile.h"
#include "files/KeywordINCLUDEIterator.h"

namespace Tarn::Fjel::Core::DeckManager {

IteratorPath::Places IteratorPath::Of(const KeywordIterator& position)
{
    Places places;
    for (const KeywordIterator* level = &position; level != nullptr;) {
        places.push_back(IteratorAccess::Position(*level));
        const auto* include = static_cast<const KeywordINCLUDEIterator*>(IteratorAccess::Inner(*level));
        level = include != nullptr ? include->Nested() : nullptr;
    }
    return places;
}

KeywordIterator IteratorPath::ToPosition(const Places& places, bool ignoreLogicalEnds)
{
    const KeywordFileIterator& innermost = places.back();
    KeywordIterator position = IteratorAccess::Standing(innermost, ignoreLogicalEnds);
    for (std::size_t level = places.size() - 1; level-- > 0;) {
        KeywordFile* file = IteratorAccess::File(places[level]);
        auto walk =
            std::make_unique<KeywordINCLUDEIterator>(file, places[level], std::move(position), ignoreLogicalEnds);
        position = IteratorAccess::Around(places[level], std::move(walk), ignoreLogicalEnds);
    }
    return position;
}

} // namespace Tarn::Fjel::Core::DeckManager
