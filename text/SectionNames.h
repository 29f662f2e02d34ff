#pragma once

#include <string>
#include <string_view>

#include <tarn/keywords/SectionType.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::SectionCount;

/// The keyword of a section; the empty text for any other value.
const std::string& SectionName(Keywords::SectionType section);

/// The section of a keyword, by exact comparison. False for any other text; `section` is then what it was.
bool FindSection(std::string_view name, Keywords::SectionType& section);

} // namespace Tarn::Fjel::Core::DeckManager
