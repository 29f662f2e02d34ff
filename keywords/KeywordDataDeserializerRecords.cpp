// Records and their items.

#include <algorithm>
#include <typeinfo>

#include <deckmanager/Context.h>
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordOptionMD.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/IKeywordStringMD.h>
#include <tarn/keywords/VariablesString.h>
#include <tarn/service/Log.h>
#include <tarn/service/Strings.h>

#include "keywords/IDeserializer.h"
#include "keywords/KeywordDataDeserializer.h"
#include "keywords/ShortNumbers.h"
#include "keywords/SlotPlaces.h"
#include "keywords/ValueConversions.h"
#include <deckmanager/KeywordVariables.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::MDType;
using Keywords::Termination;

namespace {

/// The text that a string item gets: cut and in capitals where that is asked for. May point into `scratch`.
std::string_view StringValue(std::string_view text, const Keywords::IKeywordStringMD& md, const DeserializeState& state,
                             std::string& scratch)
{
    if (state.limitStringLength && md.GetMaxLength() > 0)
        text = text.substr(0, static_cast<std::size_t>(md.GetMaxLength()));
    if (!state.upperCase || md.PreservesCase()) return text;
    scratch.assign(text);
    Service::StringToUpper(scratch);
    return scratch;
}

bool HasLowerCase(std::string_view text)
{
    return std::any_of(text.begin(), text.end(), [](char c) { return c >= 'a' && c <= 'z'; });
}

/// Sets an item from a token in its usual form; false, and nothing is set, for what needs a closer look. REQUIRES: the
/// token holds no `$`, is no terminator and no default.
bool SetPlainItem(std::string_view token, const RecordPlan::Item& item, Keywords::IKeywordRecordData& record, int index,
                  DeserializeState& state)
{
    const char* at = token.data();
    const char* const end = at + token.size();
    switch (item.type) {
    case MDType::Integer: {
        int value = 0;
        if (!ShortNumbers::TakeInteger(at, end, value) || at != end) return false;
        Keywords::Slot(record, index).SetInteger(value);
        return true;
    }
    case MDType::Real: {
        double value = 0.0;
        if (!ShortNumbers::TakeReal(at, end, value) || at != end) return false;
        Keywords::Slot(record, index).SetReal(value);
        return true;
    }
    case MDType::Option: {
        const int value = static_cast<const Keywords::IKeywordOptionMD*>(item.md)->FindOption(token, state.reason);
        if (value < 0) return false;
        Keywords::Slot(record, index).SetOption(value);
        return true;
    }
    case MDType::String: {
        const auto& md = static_cast<const Keywords::IKeywordStringMD&>(*item.md);
        if (HasLowerCase(token))
            token = StringValue(token, md, state, state.text);
        else if (state.limitStringLength && md.GetMaxLength() > 0)
            token = token.substr(0, static_cast<std::size_t>(md.GetMaxLength()));
        Keywords::Slot(record, index).SetString(token);
        return true;
    }
    default:
        return false;
    }
}

void ReportBadItem(const IKeyword& keyword, std::string_view token, std::string_view reason)
{
    Service::Log::SendLogMessage(
        fmt::format("A problem was encountered when parsing the keyword {}. Item value \"{}\" is not valid. {}.",
                    keyword.GetName(), token == "%" ? "%%" : token, reason),
        Service::Log::Error);
}

} // namespace

DeserializeResult KeywordDataDeserializer::Deserialize(Keywords::IKeywordRecordData& record, const RecordPlan& plan,
                                                       KeywordDataStore& store, const Context& context,
                                                       DeserializeState& state, KeywordVariables* variables)
{
    if (state.places && state.places->NeedsScope(record)) [[unlikely]] {
        const SlotPlaces::Scope scope(state.places, record, store);
        return Deserialize(record, plan, store, context, state, variables);
    }
    if (plan.custom) {
        if (plan.custom->Deserialize(record, store, context, state, variables)) return {true, false, false};
        state.customRefused = true;
    }
    const bool slash = plan.termination == Termination::Slash;
    const bool endOfLine = plan.termination == Termination::EndOfLine;
    const int count = static_cast<int>(plan.items.size());
    if (record.GetItemCount() != count) {
        throw DeckManagerException(
            "KeywordDataDeserializer::Deserialize: mismatch number of item records between data & "
            "metadata");
    }
    if (count == 0) return {};

    bool counted = false;
    bool lastFirst = false;
    bool first = false;
    bool terminated = false;
    bool lineTaken = false; // as a whole, and the store is on the next one
    for (int index = 0; index < count; ++index) {
        const RecordPlan::Item& item = plan.items[static_cast<std::size_t>(index)];
        DeserializeResult step;
        if (item.type == MDType::Record || item.type == MDType::List) {
            if (endOfLine) {
                throw DeckManagerException(
                    "KeywordDataDeserializer::Deserialize: currently EOL-termination can only be "
                    "handled for records containing primitive types.");
            }
            step = Deserialize(record.GetContainer(index), store, context, state, variables);
        } else {
            const ItemStep found = DeserializeItem(record, index, item, endOfLine, store, context, state, variables);
            if (found == ItemStep::Nothing && endOfLine) break;
            step.hasData = found == ItemStep::Value;
            step.terminated = step.firstWasTerminator = found == ItemStep::Terminator;
            lineTaken = item.type == MDType::RestOfLine;
        }
        if (step.hasData) {
            counted = true;
            lastFirst = step.firstWasTerminator;
        }
        first = index == 0 && step.firstWasTerminator;
        if (step.terminated) {
            terminated = true;
            break;
        }
        if (store.IsAtEnd()) break;
    }

    DeserializeResult result;
    result.firstWasTerminator = first;
    result.hasData = counted;
    if (slash && (counted || first)) {
        const RecordEnd end = CheckRecordEnd(store, state, plan, first, lastFirst, terminated);
        result.terminated = end.terminated && !end.consumed;
        result.hasData = counted || (end.terminated && end.consumed);
    } else if (endOfLine && !terminated && !lineTaken) {
        if (store.CountTokensToTerminator() > 0)
            result.terminated = true;
        else
            store.AdvanceLine();
    } else {
        result.terminated = terminated;
    }
    return result;
}

KeywordDataDeserializer::ItemStep
KeywordDataDeserializer::DeserializeItem(Keywords::IKeywordRecordData& record, int index, const RecordPlan::Item& item,
                                         bool endOfLine, KeywordDataStore& store, const Context& context,
                                         DeserializeState& state, KeywordVariables* variables)
{
    std::string_view token;
    bool quoted = false;
    const bool wholeLine = item.type == MDType::RestOfLine;
    if (!item.optional && !wholeLine && store.TakeSimpleToken(token, quoted)) {
        if (token == VeldaneDeckInfo::TERMINATION_TOKEN) return ItemStep::Terminator;
        if (token != VeldaneDeckInfo::DEFAULT_TOKEN && SetPlainItem(token, item, record, index, state)) {
            if (state.places) state.places->Note(record, index, 1, store);
            return ItemStep::Value;
        }
    } else if (wholeLine) {
        if (store.IsAtEnd()) return ItemStep::Nothing;
        state.line = store.Line();
        store.MarkLineTaken();
        if (state.places) {
            store.TraceCharacters(0, state.line.size());
            state.places->Note(record, index, 1, store);
        }
        store.AdvanceLine();
        token = state.line;
    } else if (item.optional ? !store.PeekTokenView(token, endOfLine, &quoted)
                             : !store.NextTokenView(token, endOfLine, false, &quoted))
    {
        return ItemStep::Nothing;
    }

    // The most frequent tokens of long rows: nothing to convert, and the item of a fresh record is unset already.
    if (token == VeldaneDeckInfo::DEFAULT_TOKEN && !quoted && !item.optional && !wholeLine && !state.customRefused) {
        if (state.places) state.places->Note(record, index, 1, store);
        return ItemStep::Value;
    }

    bool taken = true;
    ItemStep found = ItemStep::Terminator;
    if (token != VeldaneDeckInfo::TERMINATION_TOKEN) {
        found = ItemStep::Value;
        std::string& reason = state.reason;
        if (item.optional) {
            const Service::LogEnabler silence(false);
            taken = DeserializeOptionalData(token, quoted, *item.md, record, index, context, state, variables, reason);
        } else if (!DeserializeOptionalData(token, quoted, *item.md, record, index, context, state, variables,
                                            reason) &&
                   (quoted || token != VeldaneDeckInfo::DEFAULT_TOKEN) && state.TakesMessage(store))
        {
            ReportBadItem(state.keyword, token, reason);
        }
    }
    // What an optional item can't take stays for the next item.
    if (item.optional && taken && !wholeLine) store.NextTokenView(token, true, false, nullptr);
    if (state.places && taken && !wholeLine && found == ItemStep::Value) state.places->Note(record, index, 1, store);
    return found;
}

bool KeywordDataDeserializer::DeserializeOptionalData(std::string_view token, bool quoted,
                                                      const Keywords::IKeywordMD& itemMD,
                                                      Keywords::IKeywordRecordData& record, int index,
                                                      const Context& context, DeserializeState& state,
                                                      KeywordVariables* variables, std::string& reason)
{
    const MDType type = itemMD.GetType();
    switch (type) {
    case MDType::YesNo:
    case MDType::Option:
    case MDType::Integer:
    case MDType::RestOfLine:
    case MDType::Real:
    case MDType::String:
        break;
    default:
        throw DeckManagerException(fmt::format("DeckManager::KeywordDataDeserializer::DeserializeOptionalData(): "
                                               "unhandled metadata type \"{}\"",
                                               typeid(itemMD).name()));
    }
    Keywords::Slot slot(record, index);

    // Quotes make a literal of the default token in a string only.
    const bool isDefault =
        type != MDType::RestOfLine && token == VeldaneDeckInfo::DEFAULT_TOKEN && !(type == MDType::String && quoted);
    if (!isDefault && token.find('$') != std::string_view::npos) {
        if (state.hasPaths) {
            state.text.assign(token);
            context.ResolvePathAliases(&state.keyword, state.text, state.path);
            token = state.path;
        }
        if (variables && Keywords::VariablesString::ContainsVariables(token)) {
            variables->SetRecordVariable(record, index, Keywords::VariablesString(token));
            slot.SetUnset();
            return true;
        }
    }

    switch (type) {
    case MDType::YesNo: {
        signed char value = 0;
        if (!isDefault && ValueConversions::ConvertYesNo(token, value)) {
            slot.SetYesNo(value);
            return true;
        }
        reason = "Must be either YES or NO";
        break;
    }
    case MDType::Option: {
        const int value = static_cast<const Keywords::IKeywordOptionMD&>(itemMD).FindOption(token, reason);
        if (!isDefault && value >= 0) {
            slot.SetOption(value);
            return true;
        }
        break;
    }
    case MDType::Integer: {
        int value = 0;
        if (!isDefault && ValueConversions::ToInteger(token, value)) {
            slot.SetInteger(value);
            return true;
        }
        reason = "Must be a whole number";
        break;
    }
    case MDType::Real: {
        double value = 0.0;
        if (!isDefault && ValueConversions::ToReal(token, value)) {
            slot.SetReal(value);
            return true;
        }
        reason = "Must be a real number";
        break;
    }
    case MDType::RestOfLine:
        slot.SetString(token);
        return true;
    default:
        if (!isDefault) {
            slot.SetString(
                StringValue(token, static_cast<const Keywords::IKeywordStringMD&>(itemMD), state, state.text));
            return true;
        }
        break;
    }
    slot.SetUnset();
    return false;
}

} // namespace Tarn::Fjel::Core::DeckManager
