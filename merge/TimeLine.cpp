#include "merge/TimeLine.h"

#include <string>

#include "merge/MergeTerms.h"
#include "text/SectionNames.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/DeckPositions.h>
#include <deckmanager/IDeck.h>
#include <deckmanager/IDeckKeywords.h>
#include <tarn/keywords/DataAccessUtils.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::DataAccessUtils;
using Keywords::SectionType;
using Service::Time;

namespace {

bool IsUnitKeyword(const std::string& name)
{
    return name == "METRIC" || name == "FIELD" || name == "LAB" || name == "PVT-M";
}

/// Shows the keywords of a section, but for its own.
template <class Visit>
void WalkSection(const IDeck& deck, SectionType section, const Visit& visit)
{
    KeywordIterator position = FindSectionKeyword(deck, section);
    if (*position == nullptr) return;
    const KeywordIterator end = ScopeEnd(position, deck, false);
    for (++position; *position != nullptr && IsAhead(position, end); ++position) {
        visit(**position);
    }
}

/// Null also for data that can't be read: they say nothing of the time.
const Keywords::IKeywordData* DataOf(const IDeck& deck, const IKeyword& keyword)
{
    try {
        return deck.GetDeckKeywords()->GetKeywordData(&keyword);
    } catch (const DeckManagerException&) {
        return nullptr;
    }
}

} // namespace

KeywordIterator FindSectionKeyword(const IDeck& deck, SectionType section)
{
    const IDeckKeywords& keywords = *deck.GetDeckKeywords();
    if (keywords.SectionBegin(section) != keywords.End()) return keywords.SectionBegin(section);
    const std::string& name = SectionName(section);
    KeywordIterator position = keywords.Begin();
    while (*position != nullptr && position->GetName() != name)
        ++position;
    return *position != nullptr ? position : keywords.PhysicalEnd();
}

TimeLine::TimeLine(const IDeck& deck) : m_start(1990, 1, 1)
{
    std::string unitName = "METRIC";
    WalkSection(deck, SectionType::RUNSPEC, [&](const IKeyword& keyword) {
        if (keyword.GetName() == "START")
            m_start = DataAccessUtils::GetTimeFromSTART(DataOf(deck, keyword));
        else if (IsUnitKeyword(keyword.GetName()))
            unitName = keyword.GetName();
    });
    const Service::TimeSpan unit = unitName == "LAB" ? Service::HOUR : Service::DAY;
    Time current = m_start;
    WalkSection(deck, SectionType::SCHEDULE, [&](const IKeyword& keyword) {
        if (!IsTimeKeyword(keyword)) return;
        current = DataAccessUtils::AdvanceTime(m_start, current, unit, DataOf(deck, keyword));
        m_times[&keyword] = current;
    });
}

Time TimeLine::Of(const IKeyword* keyword) const
{
    const auto found = m_times.find(keyword);
    return found != m_times.end() ? found->second : Time();
}

bool IsSameMoment(const Time& left, const Time& right)
{
    const Service::TimeSpan apart = left - right;
    return left.IsDef() && right.IsDef() && apart <= Service::MILLISECOND && apart >= -Service::MILLISECOND;
}

} // namespace Tarn::Fjel::Core::DeckManager
