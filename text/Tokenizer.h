#pragma once

#include "text/IStringTokenizer.h"

namespace Tarn::Fjel::Core::DeckManager {

/// Cuts a line into words, quoted strings, terminators, and the defaulted items that commas make. What lies behind
/// column 132 is ignored, with a warning.
class Tokenizer final : public IStringTokenizer
{
public:
    /// The last column that keyword data may use.
    static constexpr int MaxLineLength = 132;

    void SetText(const std::string* text) override;
    bool Next(std::string& token, bool* quoted, bool allowCommas) override;
    bool AtBegin() const override { return m_text && m_cursor == m_text->data(); }
    bool NextView(std::string_view& token, bool* quoted, bool allowCommas) override;

    /// Makes `*` a token of its own. Kept across `SetText`.
    void SetRepeatAsToken(bool value) { m_repeatAsToken = value; }

    /// Where in the text the last token, or what the last `Consume` took, begins and ends, quotes and repeat included.
    /// A default that commas make begins with the first of the two, or is empty.
    std::size_t TokenBegin() const { return static_cast<std::size_t>(m_begin - m_text->data()); }
    std::size_t TokenEnd() const { return static_cast<std::size_t>(m_cursor - m_text->data()); }

    /// What the tokenizer has still to look at, up to column 132; empty behind a comment.
    std::string_view Remaining() const
    {
        return m_cursor < m_limit && !m_ended ? std::string_view(m_cursor, static_cast<std::size_t>(m_limit - m_cursor))
                                              : std::string_view();
    }
    /// Takes `count` characters of `Remaining()`, at least one whole token, as if they had been read token by token.
    void Consume(std::size_t count)
    {
        m_begin = m_cursor;
        m_cursor += count;
        m_atStart = false;
    }

    /// Takes the next token where it is of the forms that lines are full of, and has no `$`: a word without commas,
    /// quotes, repeats or double dashes, a quoted string, a terminator, "1*". It is then the token that `NextView`
    /// gives, whether commas are allowed or not, and a repeat has no say in it. False, with nothing taken, for all
    /// else.
    bool TakeSimple(std::string_view& token, bool& quoted);

private:
    bool Quoted(std::string_view& token);
    bool Comma(std::string_view& token);
    std::string_view Word(bool allowCommas);
    void ReportUnbalancedQuote() const;

    const std::string* m_text = nullptr;
    const char* m_cursor = nullptr;
    const char* m_textEnd = nullptr;
    const char* m_limit = nullptr;
    bool m_atStart = false;
    bool m_ended = false;
    bool m_repeatAsToken = false;
    std::string m_scratch;
    const char* m_begin = nullptr; ///< of the last token
};

} // namespace Tarn::Fjel::Core::DeckManager
