#include "keywords/DeserializeState.h"

#include <deckmanager/Context.h>
#include <deckmanager/Environment.h>
#include <deckmanager/IKeyword.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordItemMD.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/service/Log.h>

#include "keywords/IDeserializer.h"

namespace Tarn::Fjel::Core::DeckManager {

RecordPlan::RecordPlan(const Keywords::IKeywordRecordMD& md, IDeserializer* reader)
    : custom(reader), termination(md.GetTermination()), standsAlone(false)
{
    const Keywords::IRecordItemTraits* const traits = md.GetItemTraits();
    const int count = md.GetItemCount();
    items.reserve(static_cast<std::size_t>(count));
    for (int index = 0; index < count; ++index) {
        const Keywords::IKeywordMD* const item = md.GetItemMD(index);
        items.push_back({item, item->GetType(), traits && traits->IsOptionalOnRead(index)});
    }
    if (count > 0) {
        const Keywords::IKeywordMD* const first = items.front().md;
        standsAlone =
            md.IsItemDefaultable(0) ||
            (Keywords::KeywordUtils::IsItemMDType(first) &&
             static_cast<const Keywords::IKeywordItemMD*>(first)->HasDefaultFor(Keywords::SimulatorType::Any));
    }
}

DeserializeState::DeserializeState(const IKeyword& keywordRead, Keywords::IKeywordData& rootData)
    : keyword(keywordRead), root(rootData), customs(CustomDeserializers::InForce()), limits(DefaultLimits()),
      hasPaths(Context::HasPaths(&keywordRead)), autoFill(Environment::Instance().AutoFillEmptyListElements()),
      limitStringLength(Environment::Instance().LimitStringLengthOnRead()),
      upperCase(Environment::Instance().GetUppercaseKeywordStringsOnRead())
{
}

const RecordPlan& DeserializeState::PlanOf(const Keywords::IKeywordRecordMD& md)
{
    if (&md != m_lastMD) {
        auto found = m_plans.find(&md);
        if (found == m_plans.end()) found = m_plans.emplace(&md, RecordPlan(md, customs.Find(&md))).first;
        m_lastMD = &md;
        m_lastPlan = &found->second;
    }
    return *m_lastPlan;
}

void DeserializeState::NoteContainer(KeywordDataStore& store)
{
    const KeywordDataStore::Place place = store.TextPlace();
    if (place != m_runPlace) {
        m_runPlace = place;
        m_containersOfRun = 0;
    }
    if (++m_containersOfRun >= limits.containersOfRun && store.DropRun()) ReportTruncation();
}

bool DeserializeState::TakesMessage(const KeywordDataStore& store)
{
    const KeywordDataStore::Place place = store.TextPlace();
    if (place != m_messagePlace) {
        m_messagePlace = place;
        m_messagesOfRun = 0;
    }
    return ++m_messagesOfRun <= limits.messagesOfRun;
}

void DeserializeState::ReportTruncation()
{
    if (m_truncationReported) return;
    m_truncationReported = true;
    Service::Log::SendLogMessage(
        fmt::format("Keyword {} has more data than can be held; the rest is left out.", keyword.GetName()),
        Service::Log::Error);
}

DeserializeLimits& DeserializeState::DefaultLimits()
{
    static DeserializeLimits limits;
    return limits;
}

} // namespace Tarn::Fjel::Core::DeckManager
