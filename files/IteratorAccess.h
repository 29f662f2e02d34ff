#pragma once

#include <memory>

#include "files/KeywordFile.h"
#include <deckmanager/KeywordFileIterator.h>
#include <deckmanager/KeywordIterator.h>

namespace Tarn::Fjel::Core::DeckManager {

/// The library's own way into the positions that it hands out.
struct IteratorAccess
{
    static KeywordFile* File(const KeywordFileIterator& position) { return position.File(); }

    static KeywordIterator Walk(KeywordFile* file, bool atBegin, bool ignoreLogicalEnds)
    {
        return KeywordIterator(file, atBegin, ignoreLogicalEnds);
    }

    /// Stands at a place of the top file; an INCLUDE there is not entered by the next step.
    static KeywordIterator At(const KeywordFileIterator& position)
    {
        return KeywordIterator(position.File(), position);
    }

    /// Stands at a place of the top file as a walk does that came there: an INCLUDE is entered by the next step.
    static KeywordIterator Standing(const KeywordFileIterator& position, bool ignoreLogicalEnds)
    {
        KeywordIterator walk(position.File(), position);
        walk.m_ignoreLogicalEnds = ignoreLogicalEnds;
        if (!position.AtBeforeBegin() && position != position.File()->End()) {
            walk.m_inner =
                KeywordIterator::FindSingleKeywordIterator(position.File(), position, true, ignoreLogicalEnds);
        }
        return walk;
    }

    /// Stands below an INCLUDE of the top file.
    static KeywordIterator Around(const KeywordFileIterator& include, std::unique_ptr<ISingleKeywordIterator> inner,
                                  bool ignoreLogicalEnds)
    {
        KeywordIterator walk(include.File(), include);
        walk.m_ignoreLogicalEnds = ignoreLogicalEnds;
        walk.m_inner = std::move(inner);
        return walk;
    }

    static KeywordFile* TopFile(const KeywordIterator& position) { return position.m_topFile; }
    static const KeywordFileIterator& Position(const KeywordIterator& position) { return position.m_position; }
    static const ISingleKeywordIterator* Inner(const KeywordIterator& position) { return position.m_inner.get(); }
    static KeywordFile* CurrentFile(const KeywordIterator& position) { return position.CurrentFile(); }
    static KeywordFileIterator CurrentFileIter(const KeywordIterator& position) { return position.CurrentFileIter(); }
    static bool IsIdentical(const KeywordIterator& a, const KeywordIterator& b) { return a.IsIdentical(b); }
};

} // namespace Tarn::Fjel::Core::DeckManager
