#pragma once

#include <string>
#include <vector>

namespace Tarn::Fjel::Core::DeckManager {

/// What the move of a project changes in its files.
struct ProjectMovePlan
{
    /// An INCLUDE keyword that gets another path.
    struct Change
    {
        std::string file; ///< full name, as long as the project has not moved
        int line;         ///< of the keyword, from 1
        std::string before;
        std::string after; ///< both the keyword's text to the next keyword, "\n" between lines
    };

    std::vector<Change> changes; ///< by file, then as they stand in it
};

} // namespace Tarn::Fjel::Core::DeckManager
