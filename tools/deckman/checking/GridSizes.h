#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "session/Sections.h"

namespace Tarn::Fjel::Core::DeckManager {
class IKeyword;
}

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
}

namespace Deckman {

class DeckSession;

/// How many values an array must have at each place of a deck: the cells of the grid, of a refinement, or of the box in
/// force there.
///
/// The catalogue tells it by expressions: `grid:cells`, `grid:columns` (the top layer, or more), `grid:corners` (eight
/// of each cell), `grid:lines` (six numbers for each line).
class GridSizes
{
public:
    /// Looks in a walk for the sizes of the grid. To be told of each keyword of the deck ahead of the second walk.
    void Survey(DeckSession& session, const Tarn::Fjel::Core::DeckManager::IKeyword& keyword);

    /// Takes note of a keyword with its data (null for none) as the second walk comes by.
    void Pass(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword, SectionType section,
              const Tarn::Fjel::Core::Keywords::IKeywordData* data);

    /// What is wrong with `count` values for that expression, such as "the grid has 300 cells (10 x 10 x 3)"; empty
    /// when nothing is, and when the deck doesn't tell.
    std::string Complaint(std::string_view expression, long long count) const;

private:
    using Size = std::array<long long, 3>;
    struct Box
    {
        std::array<long long, 3> first;
        std::array<long long, 3> last;
    };

    std::optional<Size> m_size; ///< of the grid
    std::map<std::string, Size, std::less<>> m_refinements;
    bool m_isDual = false; ///< of two media, each with half of the layers

    // where the walk is
    SectionType m_section = SectionType::None;
    bool m_isRefined = false;
    std::string m_refinement;
    std::optional<Box> m_box;
    bool m_isLost = false; ///< the box in force can't be told
};

} // namespace Deckman
