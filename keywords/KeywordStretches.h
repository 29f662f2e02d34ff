#pragma once

#include <string>

#include <deckmanager/ILineReader.h>

namespace Tarn::Fjel::Core::DeckManager {

/// Where the parts of one keyword's text lie in its file, in byte offsets:
///
///     begin          PORO           -- Generated
///     behindLine     -- Generated
///     head
///     comment.begin  -- the keyword comment
///     comment.end
///                    -- a further comment
///     data            1 2 3 /
///                    -- the block above the keyword below
///     end
///
/// Parts that are missing are empty.
struct KeywordStretches
{
    struct Stretch
    {
        long long begin;
        long long end;
    };

    long long begin;
    long long behindLine;
    long long head;  ///< behind the tag lines
    Stretch comment; ///< what the keyword's comment manager reads; at `head` where there is none
    long long data;  ///< the first data line, whosever it is; `end` where there is none
    long long end;
    std::string line;       ///< the keyword line as it stands, without its line end
    std::string behindTags; ///< what the tag lines say beyond the tag, on one line

    /// `hasComment`: the keyword can have a comment; else what is behind the tag lines counts as data.
    KeywordStretches(ILineReader& reader, long long position, long long size, bool hasComment);

    /// Behind the lines from `from` on, up to `end`, that are no data but stand where data should: up to a line that
    /// could be a keyword line.
    long long BehindLeftOverData(ILineReader& reader, long long from) const;
    /// Behind the last data line at or behind `from`; `from` where there is none.
    long long BehindLastDataLine(ILineReader& reader, long long from) const;
    /// Behind the line that begins at `from`.
    long long BehindLineAt(ILineReader& reader, long long from) const;

private:
    bool NextLine(ILineReader& reader, std::string& text, long long& position) const;
    void FindHead(ILineReader& reader);
    void FindComment(ILineReader& reader);
};

} // namespace Tarn::Fjel::Core::DeckManager
