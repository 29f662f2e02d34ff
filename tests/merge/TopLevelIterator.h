#pragma once

#include <utility>

#include <deckmanager/KeywordIterator.h>

namespace Tarn::Fjel::Core::DeckManager {
class IDeck;
class IKeyword;
} // namespace Tarn::Fjel::Core::DeckManager

namespace MergeTests {

using namespace Tarn::Fjel::Core::DeckManager;

/// A walk over the top level of a scope: the scopes that generated heads open inside it are stepped over.
class TopLevelIterator
{
public:
    TopLevelIterator(KeywordIterator position, const IDeck& deck) : m_position(std::move(position)), m_deck(&deck) {}

    const IKeyword* operator*() const { return *m_position; }
    const IKeyword* operator->() const { return *m_position; }
    TopLevelIterator& operator++();

    const KeywordIterator& Position() const { return m_position; }
    /// Goes on from another place.
    void Jump(KeywordIterator position) { m_position = std::move(position); }
    /// A step may pass the end of a range that lies inside a scope.
    bool IsAheadOf(const KeywordIterator& end) const;

    bool operator==(const TopLevelIterator& other) const { return m_position == other.m_position; }
    bool operator!=(const TopLevelIterator& other) const { return m_position != other.m_position; }

private:
    KeywordIterator m_position;
    const IDeck* m_deck;
};

} // namespace MergeTests
