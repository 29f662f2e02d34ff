#pragma once

#include <deckmanager/KeywordFileIterator.h>
#include <deckmanager/KeywordIterator.h>

namespace Tarn::Fjel::Core::DeckManager {

class IDeck;
class IKeyword;

/// The position in the deck's walk of a place in a file; `PhysicalEnd` when the walk never comes there. The result
/// ignores logical ends.
KeywordIterator DeckPositionOf(const KeywordFileIterator& position, const IDeck& deck);
KeywordIterator DeckPositionOf(const IKeyword* keyword, const IDeck& deck);

/// Moves a position to the next keyword of its own file, or out of that file at its end: an INCLUDE's whole file is
/// stepped over.
void StepOverInclude(KeywordIterator& position, const IDeck& deck);

/// The first position behind the scope that the keyword at `position` opens.
KeywordIterator ScopeEnd(const KeywordIterator& position, const IDeck& deck, bool generatedOnly);

/// The closing position of a scope within its file; the file's `End()` when it isn't closed there.
KeywordFileIterator FileScopeEnd(const KeywordFileIterator& position, bool generatedOnly);

/// The position behind a scope within its file.
KeywordFileIterator FileScopeBehind(const KeywordFileIterator& position, bool generatedOnly);

} // namespace Tarn::Fjel::Core::DeckManager
