#pragma once

#include <string>
#include <vector>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordSyntax;
}

namespace Tarn::Fjel::Core::DeckManager {

/// Help with deck text that belongs to no deck.
class DeckUtils
{
public:
    DeckUtils() = delete;

    /// Cuts a piece of deck text, such as a block that a user has pasted, into keywords as the SCHEDULE section knows
    /// them. Entry i that is appended to each of the three vectors belongs to one keyword: its name; its text behind
    /// the keyword line and the tag lines, trimmed at the right; its syntax, not owned, from the table of
    /// `Environment`. The vectors are not cleared.
    ///
    /// `errors` is cleared first; its messages are joined by line feeds. True when there is a keyword in `keywords` and
    /// no message: with a false result, what could be cut is in the vectors all the same. A word that is no keyword
    /// there counts as data of the keyword ahead of it; text ahead of the first keyword is dropped.
    ///
    /// Throws `DeckManagerException` only where the scanner does: at a `PATHS` that the table allows in the section
    /// while `Environment::PATHSSupport` is false.
    static bool getKeywordsAndDataFromString(const std::string& text, std::vector<std::string>& keywords,
                                             std::vector<std::string>& data,
                                             std::vector<const Keywords::IKeywordSyntax*>& syntaxes,
                                             std::string& errors);
};

} // namespace Tarn::Fjel::Core::DeckManager
