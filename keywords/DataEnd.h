#pragma once

#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordSyntax;
}

namespace Tarn::Fjel::Core::DeckManager {

class ILineReader;

/// The lines that the text of a keyword's data lacks at its end: a scan that doesn't find them takes the keyword lines
/// that follow for data. Empty for a text that lacks none.
std::string MissingDataEnd(const Keywords::IKeywordSyntax& syntax, std::string_view text);
/// The same of data that stand from `begin` to `end`, excluded, in a text that is not held. Moves the reader.
std::string MissingDataEnd(const Keywords::IKeywordSyntax& syntax, ILineReader& text, long long begin, long long end);

} // namespace Tarn::Fjel::Core::DeckManager
