#pragma once

#include <string>

#include <tarn/keywords/IKeywordSyntaxTable.h>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordSyntax;
}

namespace Tarn::Fjel::Core::DeckManager {

/// A keyword that the scanner has found, with what it learnt in passing.
struct ScannedKeyword
{
    /// As the deck knows it: in capitals, cut to eight characters where its syntax asks for that.
    std::string name;
    /// The position of the keyword line's first byte; after a miss, where the scan ended.
    long long pos = -1;
    const Keywords::IKeywordSyntax* syntax = nullptr;
    /// The word stands behind column 1.
    bool indented = false;
    /// The line's number, counted from 1; -1 if the reader doesn't know it.
    int line = -1;
    /// The line begins, white space aside, with a suppress marker.
    bool suppressed = false;
    /// The keyword tag stands on the keyword line.
    bool lineHasTag = false;
    /// `tagged` is decided. False only where the lines that decide it weren't at hand.
    bool tagKnown = false;
    /// The keyword bears a generated tag, on its line or on the first line behind it that isn't blank: what
    /// `LineReaderUtil::AdvanceToNonTagLine` finds for an extent of one byte or more.
    bool tagged = false;
    /// The line holds a terminator.
    bool terminated = false;
    /// What the table knows of the word's first eight characters, where it is longer, and of the whole word.
    Keywords::SyntaxList headSyntaxes;
    Keywords::SyntaxList wordSyntaxes;
};

} // namespace Tarn::Fjel::Core::DeckManager
