#include "keywords/CustomDeserializerUDTRecord.h"

#include <algorithm>
#include <limits>
#include <optional>

#include <deckmanager/DeckManagerException.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/IKeywordIntegerMD.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/VariablesString.h>

#include "keywords/KeywordDataDeserializer.h"
#include "keywords/KeywordDataStore.h"
#include "keywords/MetadataShape.h"
#include "keywords/SlotPlaces.h"
#include "keywords/ValueConversions.h"
#include "text/Tokenizer.h"
#include <deckmanager/KeywordVariables.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::MDType;

namespace {

constexpr std::int64_t anyCount = std::numeric_limits<std::int32_t>::max();

void NotePlace(const DeserializeState& state, const Keywords::IKeywordData& container, int index, std::int64_t run,
               const KeywordDataStore& store)
{
    if (state.places) state.places->Note(container, index, run, store);
}

/// Appends a token to a list of strings or numbers, `count` times. False for a token that is no such number.
bool Append(Keywords::IKeywordListData& list, std::string_view token, std::int64_t count, DeserializeState& state)
{
    const std::int64_t room = std::clamp<std::int64_t>(state.limits.elementsOfList - list.GetElementCount(), 0, count);
    std::int64_t appended = 0;
    switch (list.GetElementType()) {
    case MDType::Real: {
        double value = 0.0;
        if (!ValueConversions::ToReal(token, value)) return false;
        appended = list.AppendRealRun(value, room);
        break;
    }
    case MDType::Integer: {
        int value = 0;
        if (!ValueConversions::ToInteger(token, value)) return false;
        appended = list.AppendIntegerRun(value, room);
        break;
    }
    default:
        appended = list.AppendStringRun(token, room);
    }
    if (appended < count) state.ReportTruncation();
    return true;
}

/// Notes a reference in place of `count` elements. False when the token holds none.
bool AppendVariable(Keywords::IKeywordListData& list, std::string_view token, std::int64_t count,
                    DeserializeState& state, KeywordVariables* variables)
{
    if (!variables || !Keywords::VariablesString::ContainsVariables(token)) return false;
    const std::int64_t room = std::clamp<std::int64_t>(state.limits.elementsOfList - list.GetElementCount(), 0,
                                                       std::min(count, state.limits.variablesOfRun));
    const int begin = list.GetElementCount();
    const std::int64_t appended = list.AppendDefaults(room);
    for (int copy = 0; copy < appended; ++copy)
        variables->SetListVariable(list, begin + copy, Keywords::VariablesString(token));
    if (appended < count) state.ReportTruncation();
    return true;
}

Keywords::IKeywordRecordData& AddRecord(Keywords::IKeywordListData& list)
{
    list.AddElement();
    return static_cast<Keywords::IKeywordRecordData&>(list.GetContainer(list.GetElementCount() - 1));
}

} // namespace

CustomDeserializerUDTRecord::CustomDeserializerUDTRecord(const Keywords::IKeywordMD* root)
{
    namespace Shape = MetadataShape;
    m_record = Shape::AsRecord(root, 3);
    const auto* const header = Shape::AsRecord(Shape::ItemOf(m_record, 0), 2);
    const auto* const dimensions =
        static_cast<const Keywords::IKeywordIntegerMD*>(Shape::AsItem(Shape::ItemOf(header, 1), MDType::Integer));
    const auto* const dimension = Shape::AsRecord(Shape::ElementOf(Shape::AsList(Shape::ItemOf(m_record, 1))), 2);
    const auto* const row = Shape::AsRecord(Shape::ElementOf(Shape::AsList(Shape::ItemOf(m_record, 2))), 1);
    if (!Shape::AsItem(Shape::ItemOf(header, 0), MDType::String) || !dimensions ||
        dimensions->GetMaxValue() != maxDimensions || !Shape::AsOption(Shape::ItemOf(dimension, 0)) ||
        !Shape::AsList(Shape::ItemOf(dimension, 1)) || !Shape::AsList(Shape::ItemOf(row, 0)))
    {
        throw DeckManagerException("DeckManager::CustomDeserializerUDTRecord: syntax mismatch");
    }
}

bool CustomDeserializerUDTRecord::Deserialize(Keywords::IKeywordData& data, KeywordDataStore& store,
                                              const Context& context, DeserializeState& state,
                                              KeywordVariables* variables)
{
    if (data.GetMetaData() != m_record || store.IsAtEnd()) return false;
    const Read read{store, context, state, variables};
    auto& record = static_cast<Keywords::IKeywordRecordData&>(data);
    auto& header = static_cast<Keywords::IKeywordRecordData&>(record.GetContainer(0));

    const std::string line = store.CurrentLine();
    Tokenizer tokenizer;
    tokenizer.SetText(&line);
    std::string_view token;
    bool quoted = false;
    std::optional<SlotPlaces::Scope> headerScope;
    headerScope.emplace(state.places, header, store);
    const auto note = [&](int index) {
        store.TraceCharacters(tokenizer.TokenBegin(), tokenizer.TokenEnd());
        NotePlace(state, header, index, 1, store);
    };
    if (!tokenizer.NextView(token, &quoted, false)) return false;
    note(0);
    std::string reason;
    KeywordDataDeserializer::DeserializeOptionalData(token, quoted, *header.GetRecordMD()->GetItemMD(0), header, 0,
                                                     context, state, variables, reason);
    store.MarkLineTaken();
    if (!tokenizer.NextView(token, &quoted, false)) return true;
    int dimensionCount = 0;
    if (!ValueConversions::ToInteger(token, dimensionCount) || dimensionCount > maxDimensions) return false;
    note(1);
    header.GetItem(1).SetInteger(dimensionCount);
    headerScope.reset();

    Counts counts{};
    for (int dimension = 0; dimension < dimensionCount; ++dimension) {
        if (!ReadDimension(static_cast<Keywords::IKeywordListData&>(record.GetContainer(1)), read,
                           counts[static_cast<std::size_t>(dimension)]))
        {
            return false;
        }
    }
    return ReadRows(static_cast<Keywords::IKeywordListData&>(record.GetContainer(2)), counts, read) &&
           ReadEnd(dimensionCount, read);
}

bool CustomDeserializerUDTRecord::ReadDimension(Keywords::IKeywordListData& dimensions, const Read& read,
                                                std::int64_t& count)
{
    Keywords::IKeywordRecordData& dimension = AddRecord(dimensions);
    const SlotPlaces::Scope scope(read.state.places, dimension, read.store);
    std::string_view token;
    bool quoted = false;
    if (!read.store.AdvanceLine() || !read.store.NextTokenView(token, false, false, &quoted)) return false;
    NotePlace(read.state, dimension, 0, 1, read.store);
    std::string reason;
    KeywordDataDeserializer::DeserializeOptionalData(token, quoted, *dimension.GetRecordMD()->GetItemMD(0), dimension,
                                                     0, read.context, read.state, read.variables, reason);
    auto& values = static_cast<Keywords::IKeywordListData&>(dimension.GetContainer(1));
    const SlotPlaces::Scope valuesScope(read.state.places, values, read.store);
    while (read.store.NextTokenView(token, false, false, nullptr)) {
        if (token == VeldaneDeckInfo::TERMINATION_TOKEN) break;
        const std::int64_t run = 1 + read.store.TakeRun(anyCount);
        NotePlace(read.state, values, values.GetElementCount(), run, read.store);
        // An element that is no value holds its place, so that the count stays the dimension's.
        if (!AppendVariable(values, token, run, read.state, read.variables) && !Append(values, token, run, read.state))
            values.AddElement();
        count += run;
    }
    return true;
}

/// A block of rows for each value of the dimensions beyond the first; behind the last of a dimension an empty row.
bool CustomDeserializerUDTRecord::ReadRows(Keywords::IKeywordListData& rows, const Counts& counts, const Read& read)
{
    const auto closes = [](std::int64_t index, std::int64_t last) { return index == last && index > 0; };
    for (std::int64_t outer = 0; outer <= counts[3]; ++outer) {
        if (closes(outer, counts[3])) {
            if (!ReadRow(rows, 0, read)) return false;
            continue;
        }
        for (std::int64_t middle = 0; middle <= counts[2]; ++middle) {
            if (closes(middle, counts[2])) {
                if (!ReadRow(rows, 0, read)) return false;
                continue;
            }
            for (std::int64_t inner = 0; inner <= counts[1]; ++inner) {
                if (!ReadRow(rows, closes(inner, counts[1]) ? 0 : counts[0], read)) return false;
            }
        }
    }
    return true;
}

bool CustomDeserializerUDTRecord::ReadRow(Keywords::IKeywordListData& rows, std::int64_t expected, const Read& read)
{
    std::string_view token;
    if (!read.store.NextTokenView(token, false, false, nullptr)) return false;
    Keywords::IKeywordRecordData& row = AddRecord(rows);
    auto& values = static_cast<Keywords::IKeywordListData&>(row.GetContainer(0));
    const SlotPlaces::Scope scope(read.state.places, row, read.store);
    const SlotPlaces::Scope valuesScope(read.state.places, values, read.store);
    read.state.NoteContainer(read.store);
    std::int64_t count = 0;
    while (token != VeldaneDeckInfo::TERMINATION_TOKEN) {
        const std::int64_t run = 1 + read.store.TakeRun(anyCount);
        NotePlace(read.state, values, values.GetElementCount(), run, read.store);
        if (!AppendVariable(values, token, run, read.state, read.variables) && !Append(values, token, run, read.state))
            return false;
        count += run;
        if (!read.store.NextTokenView(token, false, false, nullptr)) return false;
    }
    return count == expected;
}

/// The terminator of the table, behind that of the only dimension if there is but one, and nothing more.
bool CustomDeserializerUDTRecord::ReadEnd(int dimensionCount, const Read& read)
{
    if (dimensionCount == 1) {
        std::string_view token;
        if (!read.store.NextTokenView(token, false, false, nullptr) || token != VeldaneDeckInfo::TERMINATION_TOKEN)
            return false;
    }
    std::string_view token;
    return read.store.AdvanceLine() && read.store.NextTokenView(token, false, false, nullptr) &&
           token == VeldaneDeckInfo::TERMINATION_TOKEN && !read.store.AdvanceLine();
}

} // namespace Tarn::Fjel::Core::DeckManager
