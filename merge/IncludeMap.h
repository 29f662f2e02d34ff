#pragma once

#include <memory>

#include "merge/IPositionSearch.h"

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
class IKeywordSyntax;
} // namespace Tarn::Fjel::Core::Keywords

namespace Tarn::Fjel::Core::DeckManager {

/// The data of an INCLUDE of the source with the name that its file has in the target, whether the map has names in
/// quotes or not. Null for other keywords, and for a file that isn't in the map.
std::unique_ptr<Keywords::IKeywordData> MapIncludeData(const Keywords::IKeywordSyntax& syntax,
                                                       const Keywords::IKeywordData* data, const IncludeNames& names);

} // namespace Tarn::Fjel::Core::DeckManager
