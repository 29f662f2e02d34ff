#include "keywords/KeywordDataDeserializer.h"

#include <limits>
#include <new>
#include <typeinfo>

#include <deckmanager/Context.h>
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <deckmanager/ILineReader.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordMapData.h>
#include <tarn/keywords/IKeywordRawTextData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/service/FileName.h>
#include <tarn/service/Log.h>
#include <tarn/service/MessageCapper.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::MDType;
using Keywords::Termination;

namespace {

/// Where messages are placed: the line of the keyword's file that is being read.
struct ReadPlace
{
    const IKeyword& keyword;
    const KeywordDataStore& store;
    bool textIsInFile;             ///< the store reads the file that the keyword's line number counts
    Service::Log::Location around; ///< of a text that stands in no keyword file: where whoever has it reads it from

    bool IsLoose() const { return keyword.GetFile() == nullptr && around.IsKnown(); }

    static int Line(const void* context)
    {
        const auto& place = *static_cast<const ReadPlace*>(context);
        const bool isLoose = place.IsLoose();
        const int line = isLoose ? place.around.line : place.keyword.GetLine();
        return line > 0 && (isLoose || place.textIsInFile) ? line + place.store.LineInExtent() : line;
    }

    std::string_view File() const
    {
        if (IsLoose()) return around.file;
        const IKeywordFile* const file = keyword.GetFile();
        return file ? std::string_view(file->GetFileName().GetFullName()) : std::string_view();
    }
};

std::int64_t SaturatingProduct(std::int64_t left, std::int64_t right)
{
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    if (right != 0 && left > largest / right) return largest;
    return left * right;
}

} // namespace

void KeywordDataDeserializer::Deserialize(const IKeyword& keyword, Keywords::IKeywordData& data, ILineReader& reader,
                                          long long start, long long length, const Context& context,
                                          bool firstLineIsKeywordName, KeywordVariables* variables, ReadReport* report,
                                          SlotPlaces* places)
{
    if (report) *report = {};
    Service::MessageCapper::instance().setCurrentKeyword(keyword.GetName());
    const long long position = reader.Tell();
    KeywordDataStore store(&reader);
    const ReadPlace place{keyword, store, firstLineIsKeywordName, Service::Log::CurrentPlace()};
    const Service::Log::Place logPlace(place.File(), &ReadPlace::Line, &place);
    if (places) store.Trace();
    const Service::Log::Witness witness;
    if (!store.Open(keyword, start, length, firstLineIsKeywordName)) return;
    DeserializeState state(keyword, data);
    state.places = places;
    try {
        Deserialize(data, store, context, state, variables);
    } catch (const std::bad_alloc&) {
        Service::Log::SendLogMessage(
            fmt::format("Failed to read data of keyword {}: there is not enough memory.", keyword.GetName()),
            Service::Log::Error);
    }
    if (report) *report = {store.TakenEnd(), witness.Count() == state.harmlessMessages && !state.leftOut};
    reader.Seek(position, 0);
}

DeserializeResult KeywordDataDeserializer::Deserialize(Keywords::IKeywordData& data, KeywordDataStore& store,
                                                       const Context& context, DeserializeState& state,
                                                       KeywordVariables* variables)
{
    switch (data.GetType()) {
    case MDType::List:
        return Deserialize(static_cast<Keywords::IKeywordListData&>(data), store, context, state, variables, false);
    case MDType::Map:
        return Deserialize(static_cast<Keywords::IKeywordMapData&>(data), store, state, variables);
    case MDType::RawText:
        return Deserialize(static_cast<Keywords::IKeywordRawTextData&>(data), store);
    case MDType::Record: {
        auto& record = static_cast<Keywords::IKeywordRecordData&>(data);
        return Deserialize(record, state.PlanOf(*record.GetRecordMD()), store, context, state, variables);
    }
    default:
        throw DeckManagerException(
            fmt::format("DeckManager::KeywordDataDeserializer::Deserialize(IKeywordData &, ...): "
                        "unhandled keyword data type \"{}\"",
                        typeid(data).name()));
    }
}

/// The number of elements that a list has by its metadata; -1 when these don't tell it.
std::int64_t KeywordDataDeserializer::ListSize(const Keywords::IKeywordListMD& md, const Context& context,
                                               DeserializeState& state)
{
    if (md.GetTermination() != Termination::None || &md == state.root.GetMetaData()) return -1;
    const std::string* const expression = md.GetSizeExpression();
    if (!expression) return -1;
    int value = -1;
    const std::int64_t size = context.EvaluateIntegerExpr(*expression, value) ? value : SelfSize(*expression, state);
    return size < 0 || size > std::numeric_limits<int>::max() ? -1 : size;
}

/// A size that stands earlier in the same keyword; -1 for an expression of another kind.
std::int64_t KeywordDataDeserializer::SelfSize(const std::string& expression, DeserializeState& state)
{
    constexpr std::string_view prefix = "self:";
    if (!std::string_view(expression).starts_with(prefix) || expression.size() == prefix.size()) return -1;

    const std::string_view name = std::string_view(expression).substr(prefix.size());
    const std::string& keyword = state.keyword.GetName();
    const auto unhandled = [&] {
        return DeckManagerException(
            fmt::format("DeckManager::KeywordDataDeserializer(): unhandled size \"{}\" while parsing keyword {}. ",
                        expression, keyword));
    };
    // A host's table may give these keywords another shape.
    const auto elementCount = [&](int item) -> std::int64_t {
        if (state.root.GetType() != MDType::Record) throw unhandled();
        const auto& root = static_cast<const Keywords::IKeywordRecordData&>(state.root);
        if (item >= root.GetItemCount()) throw unhandled();
        const Keywords::IKeywordData* const list = root.GetItem(item).GetContainer();
        if (!list || list->GetType() != MDType::List) throw unhandled();
        return static_cast<const Keywords::IKeywordListData*>(list)->GetElementCount();
    };
    if (name == "SIZEPRSVALUES" && keyword == "VFPINJ") {
        if (state.sizePRSValues < 0) state.sizePRSValues = elementCount(2);
        return state.sizePRSValues;
    }
    if (name == "SIZEFLOVALUES" && (keyword == "VFPINJ" || keyword == "VFPPROD")) {
        if (state.sizeFLOValues < 0) state.sizeFLOValues = elementCount(1);
        return state.sizeFLOValues;
    }
    if (name == "SIZEVALUESLIST" && keyword == "VFPPROD") {
        if (state.sizeValuesList < 0) {
            state.sizeValuesList = elementCount(2);
            for (const int item : {3, 4, 5})
                state.sizeValuesList = SaturatingProduct(state.sizeValuesList, elementCount(item));
        }
        return state.sizeValuesList;
    }
    throw unhandled();
}

bool KeywordDataDeserializer::IsEmptyRecord(const Keywords::IKeywordRecordData* record)
{
    if (!record) return true;
    for (int index = 0; index < record->GetItemCount(); ++index) {
        const Keywords::IKeywordMD& md = *record->GetRecordMD()->GetItemMD(index);
        bool empty = true;
        switch (md.GetType()) {
        case MDType::YesNo:
        case MDType::Option:
        case MDType::Integer:
        case MDType::Real:
        case MDType::RestOfLine:
        case MDType::String:
            empty = !record->GetItem(index).HasValue();
            break;
        default:
            empty = IsEmptyContainer(record->GetItem(index).GetContainer());
        }
        if (!empty) return false;
    }
    return true;
}

bool KeywordDataDeserializer::IsEmptyContainer(const Keywords::IKeywordData* data)
{
    if (!data) return true;
    switch (data->GetType()) {
    case MDType::List:
        return static_cast<const Keywords::IKeywordListData*>(data)->GetElementCount() == 0;
    case MDType::Record:
        return IsEmptyRecord(static_cast<const Keywords::IKeywordRecordData*>(data));
    case MDType::Map:
    case MDType::RawText:
        return false;
    default: {
        const Keywords::IKeywordMD& md = *data->GetMetaData();
        throw DeckManagerException(fmt::format("DeckManager::KeywordDataDeserializer::IsEmptyRecord(): unhandled "
                                               "metadata type \"{}\"",
                                               typeid(md).name()));
    }
    }
}

} // namespace Tarn::Fjel::Core::DeckManager
