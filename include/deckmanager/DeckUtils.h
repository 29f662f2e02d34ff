#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <tarn/keywords/SectionType.h>

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

    /// A keyword's line in a piece of text.
    struct KeywordLine
    {
        std::string name;                                            ///< in capitals, as far as its letters count
        std::size_t begin = 0;                                       ///< the offset of the line
        const Keywords::IKeywordSyntax* syntax = nullptr;            ///< null: it may not stand in its section
        Keywords::SectionType section = Keywords::SectionType::None; ///< in which it stands
    };

    /// The lines of a text at which keywords begin, as an insert of the text into that section would have them (`None`:
    /// into any): each line that begins with the name of some keyword, unless the keyword ahead has it for its data. A
    /// section keyword in the text goes ahead of those of its section.
    static std::vector<KeywordLine> findKeywordLines(std::string_view text, Keywords::SectionType section);
};

} // namespace Tarn::Fjel::Core::DeckManager
