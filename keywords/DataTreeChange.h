#pragma once

#include <vector>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
}

namespace Tarn::Fjel::Core::DeckManager {

/// One change of a data tree.
struct DataTreeChange
{
    enum class Kind
    {
        Set,    ///< the item or entry `index` has another value
        Insert, ///< the element `index` is new
        Remove  ///< the element `index` has gone
    };

    Kind kind;
    std::vector<int> way; ///< from the root to the container, by item and element numbers
    int index;

    /// Whether the two trees of one syntax are the same but for the change. What has changed isn't looked at.
    bool LeadsFrom(const Keywords::IKeywordData& before, const Keywords::IKeywordData& after) const;
};

} // namespace Tarn::Fjel::Core::DeckManager
