#include <deckmanager/KeywordIterator.h>

#include "files/KeywordFile.h"
#include "files/KeywordINCLUDEIterator.h"
#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::KeywordKind;

KeywordIterator::KeywordIterator(const KeywordIterator& other)
    : m_topFile(other.m_topFile), m_position(other.m_position),
      m_inner(other.m_inner ? other.m_inner->Clone() : nullptr), m_ignoreLogicalEnds(other.m_ignoreLogicalEnds),
      m_afterLogicalEnd(other.m_afterLogicalEnd)
{
}

KeywordIterator& KeywordIterator::operator=(const KeywordIterator& other)
{
    if (this != &other) *this = KeywordIterator(other);
    return *this;
}

KeywordIterator::KeywordIterator(KeywordFile* file, bool atBegin, bool ignoreLogicalEnds)
    : m_topFile(file), m_ignoreLogicalEnds(ignoreLogicalEnds)
{
    if (file != nullptr) Init(file, atBegin);
}

KeywordIterator::KeywordIterator(IKeywordFile* file, bool atBegin, bool ignoreLogicalEnds)
    : KeywordIterator(file != nullptr ? file->AsKeywordFile() : nullptr, atBegin, ignoreLogicalEnds)
{
}

KeywordIterator::KeywordIterator(KeywordFile* file, const KeywordFileIterator& position)
    : m_topFile(file), m_position(position)
{
}

KeywordIterator::KeywordIterator(IKeywordFile* file, const KeywordFileIterator& position)
    : KeywordIterator(file != nullptr ? file->AsKeywordFile() : nullptr, position)
{
}

void KeywordIterator::Init(KeywordFile* file, bool atBegin)
{
    if (atBegin) {
        m_position = file->Begin();
        --m_position;
        Increment();
    } else {
        m_position = m_ignoreLogicalEnds ? file->End() : file->LogicalEnd();
        Decrement();
    }
}

std::unique_ptr<ISingleKeywordIterator> KeywordIterator::FindSingleKeywordIterator(KeywordFile* file,
                                                                                   const KeywordFileIterator& position,
                                                                                   bool atBegin, bool ignoreLogicalEnds)
{
    if (KeywordFile::IncludedFileOf(*position) == nullptr) return nullptr;
    return std::make_unique<KeywordINCLUDEIterator>(file, position, atBegin, ignoreLogicalEnds);
}

const IKeyword* KeywordIterator::operator*() const
{
    if (m_topFile == nullptr || AtBeforeBegin() || AtEnd()) return nullptr;
    return m_inner ? m_inner->Current() : *m_position;
}

/// Each level answers for itself and takes the answer of the level below as it is: a walk deep down a chain of files
/// must not ask the whole chain again at every level.
bool KeywordIterator::Increment()
{
    if (m_topFile == nullptr) return false;
    if (m_inner) {
        if (m_inner->Increment()) return true;
        m_inner.reset();
    }
    ++m_position;
    if (AtEnd()) return false;
    // A walk that has just been made stands on its INCLUDE keyword.
    m_inner = FindSingleKeywordIterator(m_topFile, m_position, true, m_ignoreLogicalEnds);
    return true;
}

bool KeywordIterator::Decrement()
{
    if (m_topFile == nullptr) return false;
    if (m_inner) {
        if (m_inner->Decrement()) return true;
        m_inner.reset();
    }
    --m_position;
    if (AtBeforeBegin()) return false;
    // From behind it stands on the last keyword of the included file, or on the INCLUDE keyword of an empty one.
    m_inner = FindSingleKeywordIterator(m_topFile, m_position, false, m_ignoreLogicalEnds);
    return true;
}

KeywordIterator& KeywordIterator::operator++()
{
    Increment();
    return *this;
}

KeywordIterator KeywordIterator::operator++(int)
{
    KeywordIterator before = *this;
    Increment();
    return before;
}

KeywordIterator& KeywordIterator::operator--()
{
    Decrement();
    return *this;
}

KeywordIterator KeywordIterator::operator--(int)
{
    KeywordIterator before = *this;
    Decrement();
    return before;
}

bool KeywordIterator::operator==(const KeywordIterator& other) const
{
    KeywordFile* file = CurrentFile();
    return file == other.CurrentFile() && (file == nullptr || CurrentFileIter() == other.CurrentFileIter());
}

bool KeywordIterator::operator<(const KeywordIterator& other) const
{
    if (m_topFile == nullptr || m_topFile != other.m_topFile) return false;
    if (m_position != other.m_position) return m_position < other.m_position;
    if (!m_inner || !other.m_inner) return !m_inner && other.m_inner;
    return m_inner->Less(*other.m_inner);
}

void KeywordIterator::SetIgnoreLogicalEnds(bool ignore) const
{
    m_ignoreLogicalEnds = ignore;
    if (m_inner) m_inner->SetIgnoreLogicalEnds(ignore);
}

bool KeywordIterator::afterLogicalEnd() const
{
    return m_inner ? m_inner->AfterLogicalEnd() : m_afterLogicalEnd;
}

bool KeywordIterator::IsIdentical(const KeywordIterator& other) const
{
    if (m_topFile != other.m_topFile) return false;
    if (m_topFile != nullptr && m_position != other.m_position) return false;
    if (!m_inner || !other.m_inner) return !m_inner && !other.m_inner;
    return m_inner->IsIdentical(*other.m_inner);
}

bool KeywordIterator::AtEnd() const
{
    if (m_position == m_topFile->End()) {
        if (m_ignoreLogicalEnds) m_afterLogicalEnd = false;
        return true;
    }
    if (AtBeforeBegin()) return false;
    if ((*m_position)->GetSyntax()->GetKind() != KeywordKind::EndInc) return false;
    if (!m_ignoreLogicalEnds) return true;
    m_afterLogicalEnd = true;
    return false;
}

} // namespace Tarn::Fjel::Core::DeckManager
