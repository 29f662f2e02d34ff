#include "files/KeywordINCLUDEIterator.h"

#include "files/KeywordFile.h"

namespace Tarn::Fjel::Core::DeckManager {

KeywordINCLUDEIterator::KeywordINCLUDEIterator(KeywordFile* file, const KeywordFileIterator& position, bool atBegin,
                                               bool ignoreLogicalEnds)
    : m_file(file), m_position(position), m_ignoreLogicalEnds(ignoreLogicalEnds)
{
    if (atBegin) return;
    KeywordFile* included = KeywordFile::IncludedFileOf(*position);
    if (included == nullptr) return;
    // What the walk ends at from behind is the end that it will be shown up to.
    const bool isEmpty =
        ignoreLogicalEnds ? included->Begin() == included->End() : included->LogicalEnd() == included->Begin();
    if (isEmpty) return;
    m_state = State::Inside;
    m_nested.reset(new KeywordIterator(included, false, ignoreLogicalEnds));
}

KeywordINCLUDEIterator::KeywordINCLUDEIterator(KeywordFile* file, const KeywordFileIterator& position,
                                               KeywordIterator nested, bool ignoreLogicalEnds)
    : m_file(file), m_position(position), m_nested(std::make_unique<KeywordIterator>(std::move(nested))),
      m_ignoreLogicalEnds(ignoreLogicalEnds), m_state(State::Inside)
{
}

KeywordINCLUDEIterator::KeywordINCLUDEIterator(const KeywordINCLUDEIterator& other)
    : ISingleKeywordIterator(other), m_file(other.m_file), m_position(other.m_position),
      m_nested(other.m_nested ? std::make_unique<KeywordIterator>(*other.m_nested) : nullptr),
      m_ignoreLogicalEnds(other.m_ignoreLogicalEnds), m_state(other.m_state)
{
}

std::unique_ptr<ISingleKeywordIterator> KeywordINCLUDEIterator::Clone() const
{
    return std::make_unique<KeywordINCLUDEIterator>(*this);
}

/// The other walk, where it is of the same INCLUDE keyword; else null.
const KeywordINCLUDEIterator* KeywordINCLUDEIterator::Alike(const ISingleKeywordIterator& other) const
{
    const auto* walk = dynamic_cast<const KeywordINCLUDEIterator*>(&other);
    return walk != nullptr && walk->m_file == m_file && walk->m_position == m_position ? walk : nullptr;
}

bool KeywordINCLUDEIterator::Equals(const ISingleKeywordIterator& other) const
{
    const KeywordINCLUDEIterator* walk = Alike(other);
    if (walk == nullptr || walk->m_state != m_state) return false;
    if (m_state != State::Inside) return true;
    if (!m_nested || !walk->m_nested) return !m_nested && !walk->m_nested;
    return *m_nested == *walk->m_nested;
}

bool KeywordINCLUDEIterator::IsIdentical(const ISingleKeywordIterator& other) const
{
    const KeywordINCLUDEIterator* walk = Alike(other);
    if (walk == nullptr || walk->m_state != m_state) return false;
    if (!m_nested || !walk->m_nested) return !m_nested && !walk->m_nested;
    return m_nested->IsIdentical(*walk->m_nested);
}

const IKeyword* KeywordINCLUDEIterator::Current() const
{
    switch (m_state) {
    case State::OnKeyword:
        return *m_position;
    case State::Inside:
        return m_nested ? **m_nested : nullptr;
    case State::Ahead:
        break;
    }
    return nullptr;
}

bool KeywordINCLUDEIterator::Increment()
{
    if (m_state == State::Ahead) {
        m_state = State::OnKeyword;
        return true;
    }
    if (m_state == State::OnKeyword) {
        m_state = State::Inside;
        if (KeywordFile* included = KeywordFile::IncludedFileOf(*m_position)) {
            m_nested.reset(new KeywordIterator(included, true, m_ignoreLogicalEnds));
        }
        return IsValid();
    }
    return m_nested && m_nested->Increment();
}

bool KeywordINCLUDEIterator::Decrement()
{
    if (m_state == State::OnKeyword) {
        m_state = State::Ahead;
    } else if (m_state == State::Inside) {
        if (m_nested && m_nested->Decrement()) return true;
        m_nested.reset();
        m_state = State::OnKeyword;
        return true;
    }
    return false;
}

bool KeywordINCLUDEIterator::Less(const ISingleKeywordIterator& other) const
{
    const KeywordINCLUDEIterator* walk = m_file != nullptr ? Alike(other) : nullptr;
    if (walk == nullptr) return false;
    if (m_state != walk->m_state) return m_state < walk->m_state;
    return m_state == State::Inside && m_nested && walk->m_nested && *m_nested < *walk->m_nested;
}

KeywordFile* KeywordINCLUDEIterator::CurrentFile() const
{
    switch (m_state) {
    case State::OnKeyword:
        return m_file;
    case State::Inside:
        return m_nested ? m_nested->CurrentFile() : nullptr;
    case State::Ahead:
        break;
    }
    return nullptr;
}

KeywordFileIterator KeywordINCLUDEIterator::CurrentFileIter() const
{
    return m_state == State::Inside && m_nested ? m_nested->CurrentFileIter() : m_position;
}

bool KeywordINCLUDEIterator::AfterLogicalEnd() const
{
    return m_state == State::Inside && m_nested && m_nested->afterLogicalEnd();
}

void KeywordINCLUDEIterator::SetIgnoreLogicalEnds(bool ignore)
{
    m_ignoreLogicalEnds = ignore;
    if (m_nested) m_nested->SetIgnoreLogicalEnds(ignore);
}

} // namespace Tarn::Fjel::Core::DeckManager
