#include "session/DeckUnits.h"

#include <optional>
#include <string>

#include <deckmanager/IKeyword.h>
#include <tarn/keywords/SectionType.h>

#include "session/DeckLines.h"
#include "session/DeckSession.h"
#include "session/DeckWalk.h"

namespace Deckman {

UnitSystem UnitSystemOf(DeckSession& session)
{
    using Tarn::Fjel::Core::Keywords::SectionType;
    SkipTracker skips(std::nullopt);
    for (DeckWalk walk(session, false); walk.Next();) {
        const DeckManager::IKeyword& keyword = walk.Keyword();
        const bool isSkipped = keyword.GetSize() > 0 && skips.Hides(keyword);
        if (walk.Section() == SectionType::None) continue;
        if (walk.Section() != SectionType::RUNSPEC) break;
        if (isSkipped || keyword.IsSuppressed()) continue;
        const std::string& name = keyword.GetName();
        if (name == "METRIC") return UnitSystem::Metric;
        if (name == "FIELD") return UnitSystem::Field;
        if (name == "LAB") return UnitSystem::Lab;
        if (name == "PVT-M") return UnitSystem::PvtM;
    }
    return UnitSystem::Metric;
}

} // namespace Deckman
