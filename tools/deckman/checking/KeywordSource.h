#pragma once

#include <cstddef>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace Tarn::Fjel::Core::DeckManager {
class IKeyword;
}

namespace Deckman {

/// The text of keywords as the files have it, for a walk that asks one keyword after the other: the file of the last
/// one stays open.
class KeywordSource
{
public:
    /// A word or a "/" of the data.
    struct Token
    {
        std::string_view text; ///< of a repeat what is repeated, of a quoted word what the quotes enclose
        int line;              ///< in the file, from 1
        long long count;       ///< how many copies it stands for
        bool isQuoted;
        bool isSlash;       ///< ends the line
        bool isFirstOnLine; ///< and stands at column 1
        bool isAlone;       ///< nothing else but comment stands on the line
    };

    /// Reads the extent of a keyword. False for one that has none, and when the file can't be read.
    bool Read(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword);

    /// The words behind the keyword's line, as a simulator would cut them; comments and what stands behind a "/" left
    /// out. Good until the next `Read`.
    const std::vector<Token>& Tokens();
    /// The places among these of each "/": where the rows end.
    const std::vector<std::size_t>& RowEnds();
    /// A comma stands among the words: it may stand for a default.
    bool HasCommas() const { return m_hasCommas; }

private:
    void CutLine(std::string_view line, int number);

    std::ifstream m_stream;
    std::string m_file;
    std::string m_text;
    int m_line = 0;
    bool m_isCut = false;
    bool m_hasCommas = false;
    std::vector<Token> m_tokens;
    std::vector<std::size_t> m_rowEnds;
};

} // namespace Deckman
