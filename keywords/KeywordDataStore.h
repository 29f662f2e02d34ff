#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "text/ExpandingTokenizer.h"
#include "text/PeekingTokenizer.h"
#include "text/PlainNumbers.h"

namespace Tarn::Fjel::Core::Keywords {
class IListEndDetector;
}

namespace Tarn::Fjel::Core::DeckManager {

class IKeyword;
class ILineReader;

/// The tokens of one keyword: confines a line reader to the keyword's extent, feeds its data lines one at a time to the
/// tokenizers, and tells whether more text is left. Lives as long as one read of a keyword's data.
class KeywordDataStore
{
public:
    /// `reader` isn't owned, and must outlive the store. Null is told by `Open`.
    explicit KeywordDataStore(ILineReader* reader);
    KeywordDataStore(const KeywordDataStore&) = delete;
    KeywordDataStore& operator=(const KeywordDataStore&) = delete;

    /// Goes to the first data line of the extent that begins at byte `start` and is `length` bytes long. With
    /// `firstLineIsKeywordName` the extent's first line is the keyword's own and is passed over. True when data can be
    /// read. A few keywords may have no data line at all; for them it is true with nothing to read. Otherwise a message
    /// goes out and the store stays at its end.
    bool Open(const IKeyword& keyword, long long start, long long length, bool firstLineIsKeywordName);

    /// No line is left.
    bool IsAtEnd() const { return m_atEnd; }

    /// Goes to the next data line. False, and the store is at its end, when the extent has no more.
    bool AdvanceLine();

    /// Takes the next token. Unless `stayOnLine`, goes on to further lines. With `allowCommas` a comma is part of a
    /// token. `quoted` may be null. False when there is no token.
    bool NextToken(std::string& token, bool stayOnLine, bool allowCommas, bool* quoted);

    /// The next token, which stays to be taken. Goes on to further lines as `NextToken` does.
    bool PeekToken(std::string& token, bool stayOnLine, bool* quoted);

    /// Whether the next token is `expected`; if it is and `consume`, takes it.
    bool ExpectToken(std::string_view expected, bool consume, bool stayOnLine);

    /// Takes tokens from the current line up to and with the next terminator. Returns how many, the terminator
    /// included. When the line has no terminator all of its tokens are taken and the result is their number, negated.
    std::int64_t CountTokensToTerminator();

    /// The line in the tokenizer, without blanks at its right end.
    std::string CurrentLine() const { return m_currentLine; }

    /// Reads the current line from its beginning again.
    void ResetLine();

    /// All text of the keyword, for data that is one block. False when there is none.
    bool ReadAllText(std::string& text);

    // What a reader of numbers, long runs and whole lines needs beside tokens.

    /// As `NextToken` and `PeekToken`, without a copy: the view is good until the next call of this class.
    bool NextTokenView(std::string_view& token, bool stayOnLine, bool allowCommas, bool* quoted);
    bool PeekTokenView(std::string_view& token, bool stayOnLine, bool* quoted);

    /// Takes the next token where it is one that the tokenizers need no thought for, and holds no reference. False,
    /// with nothing taken, for all else.
    bool TakeSimpleToken(std::string_view& token, bool& quoted)
    {
        if (m_atEnd || m_tokenizer.HasPeeked() || m_chain->RepeatCount() != 0 ||
            !m_chain->Inner().TakeSimple(token, quoted))
            return false;
        MarkLineTaken();
        if (m_traced) TraceToken();
        return true;
    }

    /// Whether a list ends ahead of the next token, as its detector says; takes the token where that belongs to the
    /// list. Null detects nothing.
    bool AtListEnd(const Keywords::IListEndDetector* detector);

    /// Takes up to `most` of the copies of the token just taken that its repeat has still to give, and returns how
    /// many.
    std::int64_t TakeRun(std::int64_t most)
    {
        if (m_tokenizer.HasPeeked() || m_chain->RepeatCount() == 0) return 0;
        ++m_takenCount;
        return m_chain->TakeRepeats(static_cast<std::int32_t>(std::min<std::int64_t>(most, INT32_MAX)));
    }

    /// Leaves out what the repeat being read has still to give. True if there was something.
    bool DropRun() { return m_chain->TakeRepeats() > 0; }

    /// Grows with everything that is taken: what took no text leaves it as it was.
    std::uint64_t TakenCount() const { return m_takenCount; }

    /// Identifies the place in the text from which tokens come. While it stays the same, all tokens are copies out of
    /// one repeat.
    struct Place
    {
        std::int64_t line;     ///< position of the line's first byte
        std::size_t remaining; ///< characters of the line that no tokenizer has looked at
        bool operator==(const Place&) const = default;
    };
    Place TextPlace() const { return {m_linePosition, m_chain->Inner().Remaining().size()}; }

    /// What is left of the current line where it can be read without the tokenizers: up to column 132, and nothing
    /// while a peeked token or copies out of a repeat are still to come.
    std::string_view RestOfLine()
    {
        const bool clean = !m_atEnd && !m_tokenizer.HasPeeked() && m_chain->RepeatCount() == 0;
        return clean ? m_chain->Inner().Remaining() : std::string_view();
    }

    /// Takes the first `count` characters of `RestOfLine`: one or more whole tokens.
    void TakeFromLine(std::size_t count)
    {
        m_chain->Inner().Consume(count);
        MarkLineTaken();
        if (m_traced) TraceToken();
    }

    /// Passes over the lines behind the current one that hold plain numbers or nothing, and returns how many values
    /// these stand for, at most `most`: a line with more of them ends it. The store stays on its line, whose rest
    /// counts as read. REQUIRES: that line has no token left.
    std::int64_t PassPlainLines(PlainNumbers::Rules rules, std::int64_t most);

    /// The current line as it stands in the tokenizer; good until the next line.
    const std::string& Line() const { return m_currentLine; }

    /// Counts as having taken the current line as a whole: the line's text is part of the data.
    void MarkLineTaken()
    {
        m_takenEnd = m_lineEnd;
        ++m_takenCount;
    }

    /// Counts as having taken the first `lines` lines of the text that `ReadAllText` gave; all of it when negative.
    void MarkTextTaken(std::int64_t lines);

    /// The position behind the last line from which something was taken; -1 when nothing was.
    std::int64_t TakenEnd() const { return m_takenEnd; }

    /// Position of the first byte of the line being read; -1 when there is none.
    std::int64_t LinePosition() const { return m_linePosition; }

    /// The line being read, counted from 0 at the extent's first line; 0 when there is none. Counts the lines of the
    /// text anew, from where the last count ended: for messages, not for loops.
    int LineInExtent() const;

    // For who asks where tokens stand.

    /// A token as the store took it, quotes and repeat included: characters of the line that begins at that position.
    struct TracedToken
    {
        std::int64_t linePosition = -1; ///< -1: nothing was taken yet
        std::size_t begin = 0;
        std::size_t end = 0;
    };

    /// Keeps the place of the last token from now on.
    void Trace() { m_traced = true; }

    /// The token last taken; of numbers taken in one go all of them. REQUIRES: `Trace` was called.
    const TracedToken& LastToken() const { return m_lastToken; }

    /// Counts these characters of the current line as the last token.
    void TraceCharacters(std::size_t begin, std::size_t end) { m_lastToken = {m_linePosition, begin, end}; }

    /// The copies of the token last taken that are still to come.
    std::int64_t CopiesToCome() const { return m_chain->RepeatCount(); }

private:
    void TraceToken()
    {
        const Tokenizer& tokenizer = m_chain->Inner();
        TraceCharacters(tokenizer.TokenBegin(), tokenizer.TokenEnd());
    }
    std::int64_t End() const;
    void TakeOverLine(std::int64_t position);

    ILineReader* m_reader;
    std::int64_t m_start = -1;
    std::int64_t m_length = -1;
    bool m_firstLineIsKeywordName = false;
    std::string m_currentLine;
    bool m_atEnd = true;
    ExpandingTokenizer* m_chain;
    PeekingTokenizer m_tokenizer;

    std::string m_nextLine;
    std::int64_t m_linePosition = -1;
    std::int64_t m_lineEnd = -1;
    std::int64_t m_takenEnd = -1;
    std::uint64_t m_takenCount = 0;
    std::int64_t m_textStart = -1;
    mutable std::int64_t m_countedPosition = -1;
    mutable int m_countedLines = 0;
    bool m_traced = false;
    TracedToken m_lastToken;
};

} // namespace Tarn::Fjel::Core::DeckManager
