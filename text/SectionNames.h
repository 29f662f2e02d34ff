#pragma once

#include <string>
#include <string_view>

#include <tarn/keywords/SectionType.h>

namespace Tarn::Fjel::Core::DeckManager {

/// The number of sections that a deck can have. Their `SectionType` values are 0 to 8, in the order of a deck.
inline constexpr int SectionCount = 9;

/// The keyword of a section; the empty text for any other value.
const std::string& SectionName(Keywords::SectionType section);

/// The section of a keyword, by exact comparison. False for any other text; `section` is then what it was.
bool FindSection(std::string_view name, Keywords::SectionType& section);

} // namespace Tarn::Fjel::Core::DeckManager
