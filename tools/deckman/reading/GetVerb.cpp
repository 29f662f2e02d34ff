#include <optional>
#include <utility>

#include <deckmanager/IKeyword.h>
#include <deckmanager/KeywordVariables.h>
#include <deckmanager/ReadKeywordElement.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordSyntax.h>

#include "command/Verbs.h"
#include "data/DataJson.h"
#include "data/DataText.h"
#include "session/DeckSession.h"
#include "session/DeckUnits.h"
#include "session/Schedule.h"
#include "session/Where.h"

namespace Deckman {

namespace {

ExitStatus TellNoData(DeckSession& session, const Where::Place& place, const Options& options, Output& out)
{
    const std::string& name = place.keyword->GetName();
    if (!place.items.IsEmpty()) throw Failure(NotThere, fmt::format("{} has no data, and so no items.", name));
    if (options.json)
        out.Append("null\n");
    else
        session.Log().Note(session.PlaceOf(*place.keyword), fmt::format("{} has no data.", name));
    return Done;
}

/// What `read` gives; data that can't be read are told with the keyword's place.
template <class Read>
auto OrFailAt(DeckSession& session, const DeckManager::IKeyword& keyword, const Read& read)
{
    try {
        return read();
    } catch (const Service::Exception& exception) {
        throw Failure(NotThere, exception.what(), session.PlaceOf(keyword));
    }
}

/// One value of a list, and the variable that stands in its place, if one does.
struct ValueOfList
{
    DeckManager::KeywordElement element;
    DeckManager::KeywordVariables reference;
};

/// The value to which the place leads, read alone: the list may be an array of millions. Empty for other places.
std::optional<ValueOfList> ReadValue(DeckSession& session, const Where::Place& place)
{
    const std::optional<int> number = place.items.AsNumber();
    if (!number) return std::nullopt;
    ValueOfList value;
    auto element = OrFailAt(session, *place.keyword, [&] {
        return DeckManager::ReadKeywordElement(session.Keywords(), *place.keyword, *number, &value.reference);
    });
    if (!element) return std::nullopt;
    value.element = std::move(*element);
    return value;
}

void Write(DeckSession& session, const Options& options, const ItemPath::Item& item, const DataReading& reading,
           Output& out)
{
    if (options.json) {
        WriteJson(out, item, reading);
        out.Append('\n');
    } else {
        WriteText(out, item, options.where, reading, UnitSystemOf(session));
    }
}

} // namespace

ExitStatus RunGet(DeckSession& session, const Options& options, Output& out)
{
    const Where::Place place = Where::Parse(options.where).Find(session, LimitsOf(session, options));
    const DeckManager::IKeyword& keyword = *place.keyword;
    if (keyword.GetSyntax()->GetMetaData() == nullptr) return TellNoData(session, place, options, out);

    DataReading reading;
    reading.fillsDefaults = options.defaults;
    reading.simulator = options.simulator.value_or(Keywords::SimulatorType::Any);
    if (const auto value = ReadValue(session, place)) {
        reading.variables = &value->reference;
        Write(session, options, place.items.FindAlone(*value->element.list, value->element.count, keyword.GetName()),
              reading, out);
    } else {
        const Keywords::IKeywordData* const data =
            OrFailAt(session, keyword, [&] { return session.Keywords().GetKeywordData(&keyword); });
        if (data == nullptr) return TellNoData(session, place, options, out);
        reading.variables = session.Keywords().GetVariables(&keyword);
        Write(session, options, place.items.Find(*data, keyword.GetName()), reading, out);
    }
    if (keyword.GetSize() == 0) {
        session.Log().Note(session.PlaceOf(keyword),
                           fmt::format("With --simulator, {} is listed without its text.", keyword.GetName()));
    }
    return Done;
}

} // namespace Deckman
