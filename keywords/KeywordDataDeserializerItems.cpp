// Lists of items. The six kinds share one loop, which a list of ten million numbers goes through in blocks.

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <span>
#include <type_traits>
#include <typeinfo>

#include <deckmanager/DeckManagerException.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordOptionMD.h>
#include <tarn/keywords/IKeywordStringMD.h>
#include <tarn/keywords/IListEndDetector.h>
#include <tarn/keywords/VariablesString.h>
#include <tarn/service/Log.h>
#include <tarn/service/Strings.h>

#include "keywords/KeywordDataDeserializer.h"
#include "keywords/ShortNumbers.h"
#include "keywords/SlotPlaces.h"
#include "keywords/ValueConversions.h"
#include <deckmanager/KeywordVariables.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::MDType;
using Keywords::Termination;

namespace {

/// The number that stands for itself in a text: digits and what else `std::from_chars` takes, with a blank, a
/// terminator or the end behind it. Such a token means the same to the tokenizers, which needn't be asked.
template <class Number>
bool TakePlainNumber(const char*& at, const char* end, Number& value)
{
    const char* stop = at;
    bool isShort = false;
    if constexpr (std::is_same_v<Number, double>)
        isShort = ShortNumbers::TakeReal(stop, end, value);
    else
        isShort = ShortNumbers::TakeInteger(stop, end, value);
    if (!isShort) {
        const auto [behind, error] = std::from_chars(at, end, value);
        if (error != std::errc()) return false;
        stop = behind;
    }
    if (stop != end && !VeldaneDeckInfo::IsSpace(*stop) && *stop != VeldaneDeckInfo::TERMINATION) return false;
    at = stop;
    return true;
}

/// Elements of a kind are converted by Convert and appended in runs. A kind with blocks also takes many numbers at
/// once.
struct YesNoElements
{
    using Value = signed char;
    static constexpr bool hasBlocks = false;
    static constexpr const char* typeName = "bool";
    bool Convert(std::string_view token, Value& value) const { return ValueConversions::ConvertYesNo(token, value); }
    static std::int64_t Append(Keywords::IKeywordListData& list, Value value, std::int64_t count)
    {
        return list.AppendYesNoRun(value, count);
    }
};

struct OptionElements
{
    using Value = int;
    static constexpr bool hasBlocks = false;
    static constexpr const char* typeName = "int";
    const Keywords::IKeywordOptionMD& md;
    std::string reason = {};
    bool Convert(std::string_view token, Value& value)
    {
        value = md.FindOption(token, reason);
        return value >= 0;
    }
    static std::int64_t Append(Keywords::IKeywordListData& list, Value value, std::int64_t count)
    {
        return list.AppendOptionRun(value, count);
    }
};

struct IntegerElements
{
    using Value = int;
    static constexpr bool hasBlocks = true;
    static constexpr const char* typeName = "int";
    bool Convert(std::string_view token, Value& value) const { return ValueConversions::ToInteger(token, value); }
    static bool TakePlain(const char*& at, const char* end, Value& value)
    {
        const char* const begin = at;
        if (!TakePlainNumber(at, end, value)) return false;
        if (value != std::numeric_limits<int>::min()) return true;
        at = begin; // would read as unset; the conversion holds it at the value beside
        return false;
    }
    static std::int64_t Append(Keywords::IKeywordListData& list, Value value, std::int64_t count)
    {
        return list.AppendIntegerRun(value, count);
    }
    static std::int64_t AppendBlock(Keywords::IKeywordListData& list, std::span<const Value> values)
    {
        return list.AppendIntegers(values);
    }
};

struct RealElements
{
    using Value = double;
    static constexpr bool hasBlocks = true;
    static constexpr const char* typeName = "double";
    bool Convert(std::string_view token, Value& value) const { return ValueConversions::ToReal(token, value); }
    static bool TakePlain(const char*& at, const char* end, Value& value) { return TakePlainNumber(at, end, value); }
    static std::int64_t Append(Keywords::IKeywordListData& list, Value value, std::int64_t count)
    {
        return list.AppendRealRun(value, count);
    }
    static std::int64_t AppendBlock(Keywords::IKeywordListData& list, std::span<const Value> values)
    {
        return list.AppendReals(values);
    }
};

struct RestOfLineElements
{
    using Value = std::string_view;
    static constexpr bool hasBlocks = false;
    static constexpr const char* typeName = "string";
    bool Convert(std::string_view token, Value& value) const
    {
        value = token;
        return true;
    }
    static std::int64_t Append(Keywords::IKeywordListData& list, Value value, std::int64_t count)
    {
        return list.AppendStringRun(value, count);
    }
};

struct StringElements
{
    using Value = std::string_view;
    static constexpr bool hasBlocks = false;
    static constexpr const char* typeName = "string";
    std::size_t maxLength; ///< 0: no limit
    bool upperCase;
    std::string& scratch;
    bool Convert(std::string_view token, Value& value)
    {
        value = maxLength > 0 ? token.substr(0, maxLength) : token;
        if (upperCase) {
            scratch.assign(value);
            Service::StringToUpper(scratch);
            value = scratch;
        }
        return true;
    }
    static std::int64_t Append(Keywords::IKeywordListData& list, Value value, std::int64_t count)
    {
        return list.AppendStringRun(value, count);
    }
};

/// What the elements of a list are read with, beside their kind.
struct ItemListRead
{
    Keywords::IKeywordListData& list;
    std::int64_t size; ///< -1: not known
    bool allowsDefault;
    bool allowCommas;
    KeywordDataStore& store;
    DeserializeState& state;
    KeywordVariables* variables;

    /// Elements that the list may still gain.
    std::int64_t Room(std::int64_t wanted) const
    {
        return std::clamp<std::int64_t>(state.limits.elementsOfList - list.GetElementCount(), 0, wanted);
    }

    /// Tells when less was appended than there was.
    void NoteAppended(std::int64_t appended, std::int64_t wanted) const
    {
        if (appended < wanted) state.ReportTruncation();
    }
};

/// The element, counted like `index`, from which on tokens go one by one to whoever asks for their places.
std::int64_t NotedLimit(const ItemListRead& read, std::int64_t index, std::int64_t limit)
{
    const std::int64_t held = read.list.GetElementCount(); // a token that is no value holds none
    const std::int64_t unnoted = read.state.places->UnnotedLimit(read.list, held);
    return unnoted == std::numeric_limits<std::int64_t>::max() ? limit : std::min(limit, index + unnoted - held);
}

/// Reads plain numbers straight from the lines, through a block on the stack, up to the first token that is anything
/// else or the element `limit`. Returns how many there were; the values, the messages and the place in the text are
/// those that the tokenizers would have led to.
template <class Elements>
std::int64_t TakePlainNumbers(const ItemListRead& read, std::int64_t index, std::int64_t limit)
{
    using Value = typename Elements::Value;
    std::array<Value, 1024> block;
    std::size_t filled = 0;
    const auto flush = [&] {
        const std::int64_t wanted = static_cast<std::int64_t>(filled);
        const std::span<const Value> values(block.data(), static_cast<std::size_t>(read.Room(wanted)));
        read.NoteAppended(Elements::AppendBlock(read.list, values), wanted);
        filled = 0;
    };

    const std::int64_t most = limit - index;
    std::int64_t count = 0;
    for (bool more = true; more;) {
        const std::string_view rest = read.store.RestOfLine();
        const char* at = rest.data();
        const char* const end = at + rest.size();
        const char* taken = at;
        for (;;) {
            while (at != end && VeldaneDeckInfo::IsSpace(*at))
                ++at;
            if (at == end || count >= most || !Elements::TakePlain(at, end, block[filled])) break;
            taken = at;
            ++count;
            if (++filled == block.size()) flush();
        }
        if (taken != rest.data()) read.store.TakeFromLine(static_cast<std::size_t>(taken - rest.data()));
        // The line must have ended with a number: what else stands there, a comment say, is the tokenizers' to read.
        more = at == end && taken != rest.data() && count < most && read.store.AdvanceLine();
    }
    if (filled > 0) flush();
    return count;
}

template <class Elements>
DeserializeResult ReadItems(const ItemListRead& read, Elements elements, bool& needsEndCheck)
{
    const Keywords::IKeywordListMD& md = *read.list.GetListMD();
    const Keywords::IListEndDetector* const detector = md.GetListEndDetector();
    const bool slash = md.GetTermination() == Termination::Slash;
    bool anyValue = false;
    bool sawSlash = false;
    bool endDetected = false;
    bool firstWasTerminator = false;
    bool defaultReported = false;
    for (std::int64_t index = 0; read.size < 0 || index < read.size;) {
        if constexpr (Elements::hasBlocks) {
            if (!detector) {
                std::int64_t limit = read.size >= 0 ? read.size : std::numeric_limits<std::int64_t>::max();
                if (read.state.places) limit = NotedLimit(read, index, limit);
                const std::int64_t count = TakePlainNumbers<Elements>(read, index, limit);
                anyValue = anyValue || count > 0;
                index += count;
                if (read.size >= 0 && index >= read.size) break;
            }
        }
        if (read.store.AtListEnd(detector)) {
            endDetected = true;
            break;
        }
        std::string_view token;
        if (!read.store.NextTokenView(token, false, read.allowCommas, nullptr)) break;
        if (token == VeldaneDeckInfo::TERMINATION_TOKEN) {
            firstWasTerminator = !anyValue;
            if (!slash) return {anyValue, true, firstWasTerminator};
            sawSlash = true;
            break;
        }
        anyValue = true;
        const std::int64_t run =
            1 + read.store.TakeRun(read.size >= 0 ? read.size - index - 1 : std::numeric_limits<std::int32_t>::max());
        if (read.state.places) read.state.places->Note(read.list, read.list.GetElementCount(), run, read.store);
        typename Elements::Value value{};
        if (token == VeldaneDeckInfo::DEFAULT_TOKEN) {
            if (read.allowsDefault) {
                read.NoteAppended(read.list.AppendDefaults(read.Room(run)), run);
            } else if (!defaultReported) {
                defaultReported = true;
                Service::Log::SendLogMessage(
                    "Defaulted value \"1*\" used but item is not defaultable (has no default value).",
                    Service::Log::Error);
            }
        } else if (read.variables && token.find('$') != std::string_view::npos &&
                   Keywords::VariablesString::ContainsVariables(token))
        {
            const std::int64_t most = std::min(read.Room(run), read.state.limits.variablesOfRun);
            const std::int64_t last = std::numeric_limits<int>::max() - index;
            const Keywords::VariablesString text(token);
            const std::int64_t appended = read.list.AppendDefaults(std::min(most, last));
            for (std::int64_t copy = 0; copy < appended; ++copy)
                read.variables->SetListVariable(read.list, static_cast<int>(index + copy), text);
            read.NoteAppended(appended, run);
        } else if (elements.Convert(token, value)) {
            read.NoteAppended(Elements::Append(read.list, value, read.Room(run)), run);
        } else {
            for (std::int64_t copy = 0; copy < run && read.state.TakesMessage(read.store); ++copy) {
                Service::Log::SendLogMessage(
                    fmt::format("\"{}\" can not be converted into {}", token, Elements::typeName), Service::Log::Error);
            }
        }
        index += run;
    }
    needsEndCheck = slash && (anyValue || sawSlash) && !endDetected;
    return {anyValue || sawSlash, sawSlash, firstWasTerminator};
}

} // namespace

DeserializeResult KeywordDataDeserializer::DeserializeItemList(Keywords::IKeywordListData& list, std::int64_t size,
                                                               bool allowsDefault, KeywordDataStore& store,
                                                               DeserializeState& state, KeywordVariables* variables)
{
    const Keywords::IKeywordMD& itemMD = *list.GetListMD()->GetElementMD();
    ItemListRead read{list, size, allowsDefault, false, store, state, variables};
    bool needsEndCheck = false;
    DeserializeResult result;
    switch (itemMD.GetType()) {
    case MDType::YesNo:
        result = ReadItems(read, YesNoElements{}, needsEndCheck);
        break;
    case MDType::Option:
        result = ReadItems(read, OptionElements{static_cast<const Keywords::IKeywordOptionMD&>(itemMD)}, needsEndCheck);
        break;
    case MDType::Integer:
        result = ReadItems(read, IntegerElements{}, needsEndCheck);
        break;
    case MDType::Real:
        result = ReadItems(read, RealElements{}, needsEndCheck);
        break;
    case MDType::RestOfLine:
        result = ReadItems(read, RestOfLineElements{}, needsEndCheck);
        break;
    case MDType::String: {
        const auto& md = static_cast<const Keywords::IKeywordStringMD&>(itemMD);
        read.allowCommas = md.AllowsCommas();
        const bool limited = state.limitStringLength && md.GetMaxLength() > 0;
        result = ReadItems(read,
                           StringElements{limited ? static_cast<std::size_t>(md.GetMaxLength()) : 0,
                                          state.upperCase && !md.PreservesCase(), state.text},
                           needsEndCheck);
        break;
    }
    default:
        throw DeckManagerException(fmt::format("DeckManager::KeywordDataDeserializer::DeserializeItemList(): unhandled "
                                               "metadata type \"{}\"",
                                               typeid(itemMD).name()));
    }
    if (needsEndCheck) {
        CheckListEnd(store, state, result.terminated);
        result.terminated = false;
    }
    return result;
}

} // namespace Tarn::Fjel::Core::DeckManager
