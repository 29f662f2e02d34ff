#include "keywords/CustomDeserializerOILVISCC.h"

#include <algorithm>
#include <limits>

#include <deckmanager/DeckManagerException.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/UnsetValue.h>
#include <tarn/keywords/VariablesString.h>

#include "keywords/DeserializeState.h"
#include "keywords/KeywordDataStore.h"
#include "keywords/MetadataShape.h"
#include "keywords/ValueConversions.h"
#include <deckmanager/KeywordVariables.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::MDType;

CustomDeserializerOILVISCC::CustomDeserializerOILVISCC(const Keywords::IKeywordMD* root)
{
    namespace Shape = MetadataShape;
    m_rootList = Shape::AsList(root);
    m_innerList = Shape::AsList(Shape::ElementOf(m_rootList));
    m_record = Shape::AsRecord(Shape::ElementOf(m_innerList), 3);
    m_firstOption = Shape::AsOption(Shape::ItemOf(m_record, 0));
    m_secondOption = Shape::AsOption(Shape::ItemOf(m_record, 1));
    m_outerValues = Shape::AsList(Shape::ItemOf(m_record, 2));
    m_innerValues = Shape::AsList(Shape::ElementOf(m_outerValues));
    m_real = Shape::AsItem(Shape::ElementOf(m_innerValues), MDType::Real);
    if (!m_firstOption || !m_secondOption || !m_real)
        throw DeckManagerException("DeckManager::CustomDeserializerOILVISCC: syntax mismatch");
}

bool CustomDeserializerOILVISCC::Deserialize(Keywords::IKeywordData& data, KeywordDataStore& store,
                                             const Context& /*context*/, DeserializeState& state,
                                             KeywordVariables* variables)
{
    auto& tables = static_cast<Keywords::IKeywordListData&>(data);
    std::string_view token;
    while (store.PeekTokenView(token, false, nullptr)) {
        tables.AddElement();
        const int last = tables.GetElementCount() - 1;
        auto& table = static_cast<Keywords::IKeywordListData&>(tables.GetContainer(last));
        const SlotPlaces::Scope scope(state.places, table, store);
        bool read = true;
        while (read) {
            table.AddElement();
            const int record = table.GetElementCount() - 1;
            read = ReadRecord(static_cast<Keywords::IKeywordRecordData&>(table.GetContainer(record)), store, state,
                              variables);
            if (!read) table.RemoveElement(record);
            state.NoteContainer(store);
        }
        if (table.GetElementCount() == 0) tables.RemoveElement(last);
    }
    return true;
}

bool CustomDeserializerOILVISCC::ReadRecord(Keywords::IKeywordRecordData& record, KeywordDataStore& store,
                                            DeserializeState& state, KeywordVariables* variables) const
{
    const SlotPlaces::Scope scope(state.places, record, store);
    const auto readOption = [&](const Keywords::IKeywordOptionMD& md, int item) {
        std::string_view token;
        if (!store.NextTokenView(token, false, false, nullptr)) return -1;
        if (token == VeldaneDeckInfo::TERMINATION_TOKEN) {
            store.AdvanceLine();
            return -1;
        }
        if (state.places) state.places->Note(record, item, 1, store);
        std::string reason;
        return md.FindOption(token, reason);
    };
    const int first = readOption(*m_firstOption, 0);
    if (first < 0) return false;
    const int second = readOption(*m_secondOption, 1);
    if (second < 0) return false;
    record.GetItem(0).SetOption(first);
    record.GetItem(1).SetOption(second);

    const std::vector<Values> run = ReadValues(store, state.places);
    std::int64_t count = 0;
    for (const Values& values : run)
        count += values.count;

    auto next = run.begin();
    std::int64_t used = 0; // copies of *next
    auto& groups = static_cast<Keywords::IKeywordListData&>(record.GetContainer(2));
    for (std::int64_t size :
         GroupSizes(m_firstOption->GetOptionName(first), m_secondOption->GetOptionName(second), count)) {
        if (next == run.end()) break;
        groups.AddElement();
        auto& group = static_cast<Keywords::IKeywordListData&>(groups.GetContainer(groups.GetElementCount() - 1));
        const SlotPlaces::Scope groupScope(state.places, group, store);
        while (size > 0 && next != run.end()) {
            const std::int64_t copies = std::min(size, next->count - used);
            const std::int64_t room =
                std::clamp<std::int64_t>(state.limits.elementsOfList - group.GetElementCount(), 0, copies);
            const int begin = group.GetElementCount();
            const std::int64_t appended =
                next->defaulted ? group.AppendDefaults(room) : group.AppendRealRun(next->value, room);
            if (state.places) {
                SlotPlaces::Token place = next->place;
                place.copy += used;
                state.places->Note(group, begin, appended, place);
            }
            if (appended < copies) state.ReportTruncation();
            if (variables && !next->variable.empty()) {
                const std::int64_t noted = std::min(appended, state.limits.variablesOfRun);
                for (int copy = 0; copy < noted; ++copy)
                    variables->SetListVariable(group, begin + copy, Keywords::VariablesString(next->variable));
            }
            size -= copies;
            used += copies;
            if (used == next->count) {
                ++next;
                used = 0;
            }
        }
    }
    return true;
}

/// The values up to the record's terminator. One that is no number ends them where it stands.
std::vector<CustomDeserializerOILVISCC::Values> CustomDeserializerOILVISCC::ReadValues(KeywordDataStore& store,
                                                                                       SlotPlaces* places)
{
    std::vector<Values> run;
    std::string_view token;
    while (store.NextTokenView(token, false, false, nullptr)) {
        if (token == VeldaneDeckInfo::TERMINATION_TOKEN) {
            store.AdvanceLine();
            break;
        }
        Values values{Keywords::UnsetValue::Real, true, {}, 1, {}};
        if (Keywords::VariablesString::ContainsVariables(token)) {
            values.variable = token;
        } else if (token != VeldaneDeckInfo::DEFAULT_TOKEN) {
            values.defaulted = false;
            if (!ValueConversions::ToReal(token, values.value)) break;
        }
        values.count += store.TakeRun(std::numeric_limits<std::int32_t>::max());
        if (places) values.place = places->Taken(values.count, store);
        run.push_back(std::move(values));
    }
    return run;
}

/// How many values each coefficient has.
std::vector<std::int64_t> CustomDeserializerOILVISCC::GroupSizes(std::string_view first, std::string_view second,
                                                                 std::int64_t count)
{
    const bool correlation = second == "CORRELATION";
    const auto share = [count](std::int64_t spare, std::int64_t parts) {
        return std::max<std::int64_t>((count - spare) / parts, 0);
    };
    if (correlation || second == "FORMULA") {
        if (first == "ASTM" || first == "VOGEL") {
            const std::int64_t k = share(correlation ? 2 : 0, 3);
            return correlation ? std::vector{k + 1, k + 1, k} : std::vector{k, k, k};
        }
        if (first == "ANDRADE") {
            const std::int64_t k = share(correlation ? 1 : 0, 2);
            return correlation ? std::vector{k + 1, k} : std::vector{k, k};
        }
        if (first == "LOG") {
            const std::int64_t k = share(correlation ? 2 : 0, 2);
            return correlation ? std::vector{k + 1, k + 1} : std::vector{k, k};
        }
    }
    throw DeckManagerException("DeckManager::CustomDeserializerOILVISCC: unhandled type");
}

} // namespace Tarn::Fjel::Core::DeckManager
