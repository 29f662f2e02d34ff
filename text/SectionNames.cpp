#include "text/SectionNames.h"

#include <array>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

using Table = std::array<std::string, Keywords::SectionCount>;

/// Indexed by the value of the section.
const Table& Names()
{
    static const Table names = {"RUNSPEC",  "GRID",    "EDIT",     "PROPS",   "REGIONS",
                                "SOLUTION", "SUMMARY", "SCHEDULE", "OPTIMIZE"};
    return names;
}

} // namespace

const std::string& SectionName(Keywords::SectionType section)
{
    static const std::string none;
    const auto index = static_cast<std::size_t>(static_cast<int>(section));
    return index < Names().size() ? Names()[index] : none;
}

bool FindSection(std::string_view name, Keywords::SectionType& section)
{
    const Table& names = Names();
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (names[i] == name) {
            section = static_cast<Keywords::SectionType>(i);
            return true;
        }
    }
    return false;
}

} // namespace Tarn::Fjel::Core::DeckManager
