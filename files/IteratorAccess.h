#pragma once

#include <deckmanager/KeywordFileIterator.h>
#include <deckmanager/KeywordIterator.h>

namespace Tarn::Fjel::Core::DeckManager {

/// The library's own way into the positions that it hands out.
struct IteratorAccess
{
    static KeywordFile* File(const KeywordFileIterator& position) { return position.File(); }
    static KeywordFileIterator::List::iterator Node(const KeywordFileIterator& position)
    {
        return position.GetKeywordListIter();
    }
    static KeywordIterator Walk(KeywordFile* file, bool atBegin, bool ignoreLogicalEnds)
    {
        return KeywordIterator(file, atBegin, ignoreLogicalEnds);
    }
    /// Stands at a place of the top file; an INCLUDE there is not entered by the next step.
    static KeywordIterator At(KeywordFile* file, const KeywordFileIterator& position)
    {
        return KeywordIterator(file, position);
    }
    static KeywordFile* CurrentFile(const KeywordIterator& position) { return position.CurrentFile(); }
    static KeywordFileIterator CurrentFileIter(const KeywordIterator& position) { return position.CurrentFileIter(); }
    static bool IsIdentical(const KeywordIterator& a, const KeywordIterator& b) { return a.IsIdentical(b); }
};

} // namespace Tarn::Fjel::Core::DeckManager
