#pragma once

#include <unordered_map>

#include <deckmanager/KeywordIterator.h>
#include <tarn/keywords/SectionType.h>
#include <tarn/service/Time.h>

namespace Tarn::Fjel::Core::DeckManager {

class IDeck;
class IKeyword;

/// The position of a section's keyword, behind the deck's end too; the end of the walk for a section that the deck
/// lacks.
KeywordIterator FindSectionKeyword(const IDeck& deck, Keywords::SectionType section);

/// Where time stands behind each time keyword of a deck's SCHEDULE section.
class TimeLine
{
public:
    TimeLine() = default;
    explicit TimeLine(const IDeck& deck);

    /// Undefined for a keyword that isn't in it.
    Service::Time Of(const IKeyword* keyword) const;
    bool Holds(const IKeyword* keyword) const { return m_times.count(keyword) > 0; }
    void Enter(const IKeyword* keyword, const Service::Time& time) { m_times[keyword] = time; }
    void Drop(const IKeyword* keyword) { m_times.erase(keyword); }

    /// Where it begins.
    const Service::Time& Start() const { return m_start; }

private:
    Service::Time m_start;
    std::unordered_map<const IKeyword*, Service::Time> m_times;
};

/// The two are no more than a millisecond apart. Undefined times are near to nothing.
bool IsSameMoment(const Service::Time& left, const Service::Time& right);

} // namespace Tarn::Fjel::Core::DeckManager
