#include <deckmanager/KeywordFileIterator.h>

#include "files/KeywordFile.h"
#include <deckmanager/DeckManagerException.h>

namespace Tarn::Fjel::Core::DeckManager {

const IKeyword* KeywordFileIterator::operator*() const
{
    return m_file == nullptr || m_beforeBegin ? nullptr : m_node->get();
}

KeywordFileIterator& KeywordFileIterator::operator++()
{
    if (m_file == nullptr) return *this;
    if (m_beforeBegin) {
        *this = m_file->Begin();
    } else {
        ++m_node;
    }
    return *this;
}

KeywordFileIterator KeywordFileIterator::operator++(int)
{
    KeywordFileIterator before = *this;
    ++*this;
    return before;
}

KeywordFileIterator& KeywordFileIterator::operator--()
{
    if (m_beforeBegin) {
        throw DeckManagerException("KeywordFileIterator::operator--(): can not decrement anymore");
    }
    if (m_file == nullptr) return *this;
    if (*this == m_file->Begin()) {
        m_beforeBegin = true;
    } else {
        --m_node;
    }
    return *this;
}

KeywordFileIterator KeywordFileIterator::operator--(int)
{
    KeywordFileIterator before = *this;
    --*this;
    return before;
}

bool KeywordFileIterator::operator<(const KeywordFileIterator& other) const
{
    if (m_file == nullptr || m_file != other.m_file || *this == other) return false;
    // The ends need no search, and most questions are about them.
    if (m_beforeBegin || other.m_beforeBegin) return m_beforeBegin;
    const KeywordFileIterator end = m_file->End();
    if (other.m_node == end.m_node) return true;
    if (m_node == end.m_node) return false;
    return m_file->OrdinalOf(*this) < m_file->OrdinalOf(other);
}

} // namespace Tarn::Fjel::Core::DeckManager
