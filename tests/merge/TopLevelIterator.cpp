#include "tests/merge/TopLevelIterator.h"

#include "merge/MergeTerms.h"

namespace MergeTests {

TopLevelIterator& TopLevelIterator::operator++()
{
    const IKeyword* keyword = *m_position;
    if (keyword != nullptr && IsAnchorHead(*keyword))
        m_position = MergeScopeEnd(m_position, *m_deck);
    else
        ++m_position;
    return *this;
}

bool TopLevelIterator::IsAheadOf(const KeywordIterator& end) const
{
    return *m_position != nullptr && IsAhead(m_position, end);
}

} // namespace MergeTests
