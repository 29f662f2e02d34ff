#pragma once

#include <memory>
#include <string>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
class IKeywordSyntax;
} // namespace Tarn::Fjel::Core::Keywords

namespace Tarn::Fjel::Core::DeckManager {

class IDeckKeywords;
class IKeyword;
class KeywordVariables;

/// Reads a keyword's data afresh, as `IDeckKeywords::GetKeywordData` would at its first call, into a tree that the
/// caller owns.
///
/// The keyword keeps nothing: neither tree nor text. A pass over all data of a deck thus costs the memory of one
/// keyword at a time, while `GetKeywordData` would in the end hold all of them. Uncommitted changes count.
///
/// Where the deck allows variables, `variables` takes the keyword's references to them; it refers to the new tree, and
/// means nothing once that is gone. Null for a caller that doesn't ask. Null is returned for a keyword without data,
/// and for one that is being read. Throws `DeckManagerException` when a size that the data need cannot be told.
///
/// REQUIRES: `keyword` stands in a file of `deck`.
std::unique_ptr<Keywords::IKeywordData> ReadKeywordData(const IDeckKeywords& deck, const IKeyword& keyword,
                                                        KeywordVariables* variables = nullptr);

/// Reads the data of a keyword of that syntax and name from `text`, the lines behind the keyword's own, without a deck.
/// `variables`, if given, takes references to variables, else these are text. Messages stand where the text does: on
/// the line of the `Service::Log::Place` in scope, which is taken for the text's first line, and those below it.
///
/// Null for a keyword without data. Throws `DeckManagerException` when a size is one that only a deck can tell.
std::unique_ptr<Keywords::IKeywordData> ReadKeywordData(const Keywords::IKeywordSyntax& syntax, const std::string& name,
                                                        const std::string& text, KeywordVariables* variables = nullptr);

} // namespace Tarn::Fjel::Core::DeckManager
