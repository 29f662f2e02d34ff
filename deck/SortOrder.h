#pragma once

#include <cstddef>
#include <vector>

#include <tarn/keywords/SectionType.h>

namespace Tarn::Fjel::Core::DeckManager {

class IKeyword;

/// The order that the rules of a section want of some keywords, which stand as `keywords` says: places in `keywords`,
/// each at most once.
///
/// Those keywords take part that a rule between two of them names. Of those that wait for none of the others, the one
/// that stands first comes out next. Keywords of a ring of rules, and whatever waits for one of them, are left out.
/// Takes n log n.
std::vector<std::size_t> SortOrder(const std::vector<const IKeyword*>& keywords, Keywords::SectionType section);

} // namespace Tarn::Fjel::Core::DeckManager
