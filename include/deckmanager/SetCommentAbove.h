#pragma once

#include <string>

namespace Tarn::Fjel::Core::DeckManager {

class IDeckKeywordsEditor;
class KeywordFileIterator;
class KeywordIterator;

/// Replaces the comment straight ahead of a keyword, as `IDeckKeywords::GetComment` gives it; for the first keyword of
/// a file that is the comment at its head, without a header that `SetHeaderComment` has put there.
///
/// Lines that are no comments become such, blank lines stay, and a blank text takes the comment away. Lines ahead of
/// the old comment that belong to no keyword are left alone. False where the editor refuses every edit, and for a
/// keyword without a place in a file. Throws `DeckManagerException` when the text ahead of the keyword cannot be read.
bool SetCommentAbove(IDeckKeywordsEditor& editor, const KeywordIterator& position, const std::string& text);
bool SetCommentAbove(IDeckKeywordsEditor& editor, const KeywordFileIterator& position, const std::string& text);

} // namespace Tarn::Fjel::Core::DeckManager
