#pragma once

#include <list>
#include <memory>

namespace Tarn::Fjel::Core::DeckManager {

class IKeyword;
class KeywordFile;

/// A position in the keyword list of one file. It knows nothing of INCLUDE.
///
/// A value type; good as long as its list element exists, since elements do not move when others come and go. The file
/// must outlive it.
class KeywordFileIterator
{
public:
    /// No file, no keyword.
    KeywordFileIterator() = default;

    /// The keyword; null without a file or before the first keyword. Must not be asked at `End()` of the file.
    const IKeyword* operator*() const;
    const IKeyword* operator->() const { return **this; }

    bool operator==(const KeywordFileIterator& other) const
    {
        return m_file == other.m_file &&
               (m_file == nullptr || (m_node == other.m_node && m_beforeBegin == other.m_beforeBegin));
    }
    bool operator!=(const KeywordFileIterator& other) const { return !(*this == other); }

    /// From before the first keyword to the first one; nothing happens without a file. REQUIRES: not at `End()`.
    KeywordFileIterator& operator++();
    KeywordFileIterator operator++(int);

    /// From the first keyword to the place before it. Throws `DeckManagerException` when it stands there already.
    KeywordFileIterator& operator--();
    KeywordFileIterator operator--(int);

    /// Stands ahead of `other` in the same file. False for positions of different files.
    bool operator<(const KeywordFileIterator& other) const;

    /// Stands one step ahead of the first keyword.
    bool AtBeforeBegin() const { return m_beforeBegin; }

private:
    friend class KeywordFile;
    friend class KeywordIterator;
    friend class KeywordINCLUDEIterator;
    friend class DeckKeywords;
    friend struct IteratorAccess;

    using List = std::list<std::shared_ptr<IKeyword>>;

    KeywordFileIterator(KeywordFile* file, List::iterator node) : m_file(file), m_node(node) {}

    KeywordFile* File() const { return m_file; }
    List::iterator GetKeywordListIter() const { return m_node; }

    KeywordFile* m_file = nullptr;
    List::iterator m_node{};
    bool m_beforeBegin = false;
};

} // namespace Tarn::Fjel::Core::DeckManager
