#pragma once

#include <deckmanager/ISectionContextQuery.h>
#include <tarn/keywords/SectionType.h>

namespace Tarn::Fjel::Core::DeckManager {

/// The section of a text that has no deck around it: always SCHEDULE.
class ScheduleSectionContextQuery : public ISectionContextQuery
{
public:
    Keywords::SectionType GetSection() const override { return Keywords::SectionType::SCHEDULE; }
};

} // namespace Tarn::Fjel::Core::DeckManager
