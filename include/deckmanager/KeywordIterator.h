#pragma once

#include <memory>

#include <deckmanager/ISingleKeywordIterator.h>
#include <deckmanager/KeywordFileIterator.h>

namespace Tarn::Fjel::Core::DeckManager {

class IKeyword;
class IKeywordFile;
class KeywordFile;

/// A position in a whole deck, walked in deck order: an INCLUDE keyword, every keyword of the included file and of what
/// that includes, then the keyword behind the INCLUDE. Backwards exactly the reverse.
///
/// A value type; a copy walks on its own. Two iterators that reached one keyword by different paths are equal.
class KeywordIterator
{
public:
    KeywordIterator() = default;
    KeywordIterator(const KeywordIterator& other);
    KeywordIterator(KeywordIterator&& other) noexcept = default;
    KeywordIterator& operator=(const KeywordIterator& other);
    KeywordIterator& operator=(KeywordIterator&& other) noexcept = default;
    ~KeywordIterator() = default;

    /// The keyword; null without a file, ahead of the first keyword and at the end.
    const IKeyword* operator*() const;
    const IKeyword* operator->() const { return **this; }

    KeywordIterator& operator++();
    KeywordIterator operator++(int);
    /// Throws `DeckManagerException` when it stands ahead of the first keyword already.
    KeywordIterator& operator--();
    KeywordIterator operator--(int);

    bool operator==(const KeywordIterator& other) const;
    bool operator!=(const KeywordIterator& other) const { return !(*this == other); }

    /// Stands ahead of `other`. False unless both walk the same top file.
    bool operator<(const KeywordIterator& other) const;

    /// Walk on past the keywords that end a file.
    void SetIgnoreLogicalEnds(bool ignore) const;

    /// A keyword that ends a file was passed while logical ends are ignored.
    bool afterLogicalEnd() const;

private:
    friend class KeywordINCLUDEIterator;
    friend class DeckKeywords;
    friend struct IteratorAccess;

    KeywordIterator(KeywordFile* file, bool atBegin, bool ignoreLogicalEnds);
    KeywordIterator(IKeywordFile* file, bool atBegin, bool ignoreLogicalEnds);
    KeywordIterator(KeywordFile* file, const KeywordFileIterator& position);
    KeywordIterator(IKeywordFile* file, const KeywordFileIterator& position);

    void Init(KeywordFile* file, bool atBegin);
    // One step; whether the walk then stands on a keyword.
    bool Increment();
    bool Decrement();
    KeywordFile* CurrentFile() const { return m_inner ? m_inner->CurrentFile() : m_topFile; }
    KeywordFileIterator CurrentFileIter() const { return m_inner ? m_inner->CurrentFileIter() : m_position; }
    bool IsIdentical(const KeywordIterator& other) const;
    bool AtBeforeBegin() const { return m_position.AtBeforeBegin(); }
    bool AtEnd() const;

    static std::unique_ptr<ISingleKeywordIterator> FindSingleKeywordIterator(KeywordFile* file,
                                                                             const KeywordFileIterator& position,
                                                                             bool atBegin, bool ignoreLogicalEnds);

    KeywordFile* m_topFile = nullptr;
    KeywordFileIterator m_position;
    mutable std::unique_ptr<ISingleKeywordIterator> m_inner;
    mutable bool m_ignoreLogicalEnds = false;
    mutable bool m_afterLogicalEnd = false;
};

} // namespace Tarn::Fjel::Core::DeckManager
