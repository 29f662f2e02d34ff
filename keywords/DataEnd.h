#pragma once

#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordSyntax;
}

namespace Tarn::Fjel::Core::DeckManager {

/// The lines that the text of a keyword's data lacks at its end: a scan that doesn't find them takes the keyword lines
/// that follow for data. Empty for a text that lacks none.
std::string MissingDataEnd(const Keywords::IKeywordSyntax& syntax, std::string_view text);

} // namespace Tarn::Fjel::Core::DeckManager
