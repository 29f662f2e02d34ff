// Maps, raw text, and what is tested at the end of lists and records.

#include <algorithm>
#include <limits>

#include <deckmanager/IKeyword.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordMapData.h>
#include <tarn/keywords/IKeywordRawTextData.h>
#include <tarn/keywords/VariablesString.h>
#include <tarn/service/Log.h>
#include <tarn/service/Strings.h>

#include "keywords/KeywordDataDeserializer.h"
#include "keywords/SlotPlaces.h"
#include "keywords/ValueConversions.h"
#include <deckmanager/KeywordVariables.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

/// How the tokens up to the next terminator end a container.
enum class EndOfTokens
{
    AtTerminator, ///< nothing stood ahead of the terminator
    Later,        ///< surplus tokens did
    Nowhere,      ///< no terminator on this line, nor first on the next
    Dropped       ///< the same, and surplus tokens stood on the line
};

EndOfTokens SkipToTerminator(KeywordDataStore& store)
{
    const std::int64_t count = store.CountTokensToTerminator();
    if (count > 0) return count == 1 ? EndOfTokens::AtTerminator : EndOfTokens::Later;
    store.AdvanceLine();
    if (!store.ExpectToken(VeldaneDeckInfo::TERMINATION_TOKEN, true, false))
        return count == 0 ? EndOfTokens::Nowhere : EndOfTokens::Dropped;
    return count == 0 ? EndOfTokens::AtTerminator : EndOfTokens::Later;
}

/// Completes a name whose value stands behind blanks around the "=" (NAME = 2, NAME= 2, NAME =2), on the same line.
/// False when nothing of that follows it.
bool TakeSpacedValue(KeywordDataStore& store, std::string& token)
{
    const std::size_t mark = token.find('=');
    const bool isName = !token.empty() && Service::IsAlpha(token.front());
    if (!isName || (mark != std::string::npos && mark + 1 < token.size())) return false;
    bool taken = false;
    std::string_view next;
    const auto takeNext = [&] {
        store.NextTokenView(next, true, false, nullptr);
        token += next;
        taken = true;
    };
    if (mark == std::string::npos) {
        if (!store.PeekTokenView(next, true, nullptr) || !next.starts_with('=')) return false;
        takeNext();
    }
    const auto beginsValue = [](char c) { return Service::IsDigit(c) || c == '-' || c == '+' || c == '$'; };
    if (token.ends_with('=') && store.PeekTokenView(next, true, nullptr) && !next.empty() && beginsValue(next.front()))
        takeNext();
    return taken;
}

/// Sets entries of a map by name: NAME or NAME=value. False when something of that can't be kept.
bool SetNamedEntry(Keywords::IKeywordMapData& map, std::string_view token, KeywordVariables* variables)
{
    if (token.empty() || Service::IsDigit(token.front())) return false;
    const std::size_t mark = token.find('=');
    const std::string_view name = token.substr(0, mark);
    const std::string_view value = mark == std::string_view::npos ? std::string_view() : token.substr(mark + 1);
    const bool isKnown = map.GetMapMD()->FindEntry(name) >= 0;
    if (variables && Keywords::VariablesString::ContainsVariables(value)) {
        variables->SetMapVariable(map, std::string(name), Keywords::VariablesString(value));
        return isKnown;
    }
    int number = 1;
    const bool isNumber = value.empty() || ValueConversions::ToWholeInteger(value, number);
    map.SetEntry(name, isNumber ? number : ValueConversions::ToIntegerOrZero(value));
    return isKnown && isNumber;
}

} // namespace

DeserializeResult KeywordDataDeserializer::Deserialize(Keywords::IKeywordMapData& map, KeywordDataStore& store,
                                                       DeserializeState& state, KeywordVariables* variables)
{
    SlotPlaces* const places = state.places;
    const SlotPlaces::Scope scope(places, map, store);
    const std::int64_t entryCount = map.GetEntryCount();
    if (entryCount == 0) return {};
    std::string_view token;
    const bool positional = !store.NextTokenView(token, false, false, nullptr) || Service::AllDigits(token) ||
                            token == VeldaneDeckInfo::DEFAULT_TOKEN;
    store.ResetLine();

    const auto note = [&](std::int64_t entry, std::int64_t run) {
        if (places) places->Note(map, entry, run, store);
    };
    DeserializeResult result;
    std::string named; // a token with its value
    std::int64_t index = 0;
    while (store.NextTokenView(token, false, false, nullptr)) {
        if (token == VeldaneDeckInfo::TERMINATION_TOKEN) {
            result.terminated = true;
            break;
        }
        result.hasData = true;
        const std::int64_t run = 1 + store.TakeRun(std::numeric_limits<std::int32_t>::max());
        if (token == VeldaneDeckInfo::DEFAULT_TOKEN) {
            note(positional ? index : -1, run);
            index += run;
            continue;
        }
        if (!positional) {
            const int entry = map.GetMapMD()->FindEntry(token.substr(0, token.find('=')));
            note(entry, 1);
            const auto name = places ? store.LastToken() : KeywordDataStore::TracedToken();
            named = token;
            if (run == 1 && TakeSpacedValue(store, named) && places)
                places->Note(map, entry, name.linePosition, store.Line(), name.begin, store.LastToken().end);
            if (!SetNamedEntry(map, named, variables)) state.leftOut = true;
        } else {
            if (index + run > entryCount) state.leftOut = true;
            if (index >= entryCount) break;
            note(index, run);
            int value = 0;
            if (!ValueConversions::ToWholeInteger(token, value)) {
                state.leftOut = true;
            } else if (value != 0) {
                for (std::int64_t entry = index; entry < std::min(index + run, entryCount); ++entry)
                    map.SetEntry(static_cast<int>(entry), value);
            }
        }
        index += run;
    }
    return result;
}

DeserializeResult KeywordDataDeserializer::Deserialize(Keywords::IKeywordRawTextData& data, KeywordDataStore& store)
{
    std::string text;
    if (!store.ReadAllText(text)) return {};
    std::string terminator;
    data.GetRawTextMD()->GetTerminator(terminator);
    std::size_t end = std::string::npos;
    if (!terminator.empty() && text.starts_with(terminator))
        end = 0;
    else if (!terminator.empty() && (end = text.find("\n" + terminator)) != std::string::npos)
        ++end;
    if (end != std::string::npos) {
        text.resize(end);
        // The terminator's own line is the keyword's too.
        store.MarkTextTaken(std::count(text.begin(), text.end(), '\n') + 1);
    } else {
        store.MarkTextTaken(-1);
    }
    data.SetText(text);
    return {true, false, false};
}

void KeywordDataDeserializer::CheckListEnd(KeywordDataStore& store, DeserializeState& state, bool sawSlash)
{
    if (!sawSlash) {
        const EndOfTokens end = SkipToTerminator(store);
        if (end == EndOfTokens::Nowhere || end == EndOfTokens::Dropped) {
            if (end == EndOfTokens::Nowhere) ++state.harmlessMessages;
            Service::Log::SendLogMessage(
                fmt::format("List in keyword {} is not properly terminated", state.keyword.GetName()),
                Service::Log::Warning);
            return;
        }
        if (end == EndOfTokens::Later) {
            Service::Log::SendLogMessage(fmt::format("List in keyword {} has too many items", state.keyword.GetName()),
                                         Service::Log::Warning);
        }
    }
    store.AdvanceLine();
}

KeywordDataDeserializer::RecordEnd KeywordDataDeserializer::CheckRecordEnd(KeywordDataStore& store,
                                                                           DeserializeState& state,
                                                                           const RecordPlan& plan, bool first,
                                                                           bool lastFirst, bool terminated)
{
    if (lastFirst && !terminated && store.IsAtEnd()) terminated = true;
    if (!terminated) {
        const EndOfTokens end = SkipToTerminator(store);
        if (end == EndOfTokens::Nowhere || end == EndOfTokens::Dropped) {
            if (end == EndOfTokens::Nowhere) ++state.harmlessMessages;
            Service::Log::SendLogMessage(
                fmt::format("Record in keyword {} not properly terminated", state.keyword.GetName()),
                Service::Log::Warning);
            return {false, true};
        }
        if (end == EndOfTokens::Later) {
            Service::Log::SendLogMessage(
                fmt::format("Record in keyword {} has too many items", state.keyword.GetName()), Service::Log::Warning);
        }
        store.AdvanceLine();
        return {true, true};
    }
    // A terminator alone is the parent's where the record can't be all defaults.
    if (first && !plan.standsAlone) return {true, false};
    store.AdvanceLine();
    return {true, true};
}

} // namespace Tarn::Fjel::Core::DeckManager
