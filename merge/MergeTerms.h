#pragma once

#include <string>
#include <string_view>

#include <deckmanager/IKeyword.h>

namespace Tarn::Fjel::Core::DeckManager {

class IDeck;
class IKeywordFile;
class KeywordFile;
class KeywordFileIterator;
class KeywordIterator;

// What the merge of two decks tells keywords apart by. An anchor is what both decks are expected to share
// (deck/Anchors.h); every other keyword is a user's.

bool IsUserKeyword(const IKeyword& keyword);
bool IsInclude(const IKeyword& keyword);
bool IsSectionKeyword(const IKeyword& keyword);
/// DATES, TSTEP or TIME.
bool IsTimeKeyword(const IKeyword& keyword);
/// An anchor that opens a scope.
bool IsAnchorHead(const IKeyword& keyword);
/// The effects of keywords of that name add up: one is no twin of another.
bool IsRepeatable(std::string_view name);

/// An ENDINC, or an END that is the last of its file: what stands behind is notes, whatever it looks like.
bool EndsFile(KeywordFileIterator place);

/// Whether whole lines of the one, white space around them aside, are lines of the other, whatever their line ends.
bool HoldsLines(const std::string& text, const std::string& lines);

/// A text without these lines, with "\n" line ends, where they stand in it one behind the other; else as it is.
std::string WithoutLines(const std::string& text, const std::string& lines);

/// The file that a position stands in; null for none.
KeywordFile* FileOf(const KeywordIterator& position);
/// The name of a file without its folder.
std::string LeafName(const IKeywordFile& file);

/// Stands ahead of `other`. Two positions on one INCLUDE are equal, and yet one may be less than the other.
bool IsAhead(const KeywordIterator& position, const KeywordIterator& other);

/// One keyword on; the end of the walk stays.
KeywordIterator Behind(KeywordIterator position);
/// The place straight behind a position in its own file.
KeywordFileIterator PlaceBehind(const KeywordIterator& position);
/// The position stands in a file, or in one that it includes.
bool IsWithin(const KeywordIterator& position, const IKeywordFile& file);

/// The first position behind the scope of the keyword at `position`, as the generated keywords have it. It is always
/// behind `position`, also for a section keyword that occurs again. What follows a TSTEP or TIME, which are no heads,
/// goes as far as the next time keyword.
KeywordIterator MergeScopeEnd(const KeywordIterator& position, const IDeck& deck);
/// Where that scope is closed; with its closing keyword, if it has one of its own.
KeywordIterator MergeScopeClose(const KeywordIterator& position, const IDeck& deck);

} // namespace Tarn::Fjel::Core::DeckManager
