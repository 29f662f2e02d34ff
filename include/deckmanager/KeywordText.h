#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordSyntax;
}

namespace Tarn::Fjel::Core::DeckManager {

class IKeyword;

/// The text of one keyword's extent, told apart into what is the keyword's own and the trailing block.
///
/// An extent runs to the next keyword line, so it ends with the blank and comment lines that stand above the keyword
/// below, or at the end of the file. These are the trailing block; the rest is the keyword's own:
///
///     WELTARG                 -- Generated     keyword line
///     -- after the workover                    data text, with the comments in it
///        'SK-P2' 'ORAT' 280.0 /                the last data line
///                                             \ trailing block
///     -- Forecast from here on                /
///
/// The block begins behind the last data line. For `TITLE` the line behind the keyword line is data whatever it looks
/// like; raw text goes through the line of its terminator, and has no block when that is missing; a keyword without
/// data lines keeps the comment that begins straight behind its line, up to the first blank line.
///
/// Works on the text alone and reads no data. Views are good as long as the object.
class KeywordText
{
public:
    /// The text of `keyword` as `IKeyword::GetText` gives it now.
    explicit KeywordText(const IKeyword& keyword);
    /// A text with "\n" line ends: the line of the keyword `name`, what belongs to it, and perhaps a comment ahead.
    KeywordText(const Keywords::IKeywordSyntax& syntax, std::string_view name, std::string text);

    KeywordText(const KeywordText&) = delete;
    KeywordText& operator=(const KeywordText&) = delete;

    /// The whole text.
    const std::string& All() const { return m_text; }
    /// Keyword line, tag lines, keyword comment and data, line ends included.
    std::string_view Own() const { return std::string_view(m_text).substr(m_ownBegin, m_ownEnd - m_ownBegin); }
    /// The own text behind the keyword line and the tag lines. Empty for a keyword without data or comment.
    std::string_view Data() const { return std::string_view(m_text).substr(m_dataBegin, m_ownEnd - m_dataBegin); }
    /// What belongs to the keyword below, or to the end of the file.
    std::string_view TrailingBlock() const { return std::string_view(m_text).substr(m_ownEnd); }

private:
    void Divide(const Keywords::IKeywordSyntax& syntax, std::string_view name);
    std::size_t KeywordLineBegin() const;
    std::size_t BehindTagLines(std::size_t begin) const;
    std::size_t BehindRawText(std::string_view terminator) const;
    std::size_t BehindLastDataLine() const;
    std::size_t BehindComment() const;

    std::string m_text;
    std::size_t m_ownBegin = 0;
    std::size_t m_dataBegin = 0;
    std::size_t m_ownEnd = 0;
};

} // namespace Tarn::Fjel::Core::DeckManager
