#include <deckmanager/IKeyword.h>
#include <deckmanager/KeywordVariables.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordSyntax.h>

#include "DataJson.h"
#include "DataText.h"
#include "DeckSession.h"
#include "Schedule.h"
#include "Units.h"
#include "Verbs.h"
#include "Where.h"

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

} // namespace

ExitStatus RunGet(DeckSession& session, const Options& options, Output& out)
{
    const Where::Place place = Where::Parse(options.where).Find(session, LimitsOf(session, options));
    const DeckManager::IKeyword& keyword = *place.keyword;
    if (keyword.GetSyntax()->GetMetaData() == nullptr) return TellNoData(session, place, options, out);

    const Keywords::IKeywordData* data = nullptr;
    try {
        data = session.Keywords().GetKeywordData(&keyword);
    } catch (const Service::Exception& exception) {
        throw Failure(NotThere, exception.what(), session.PlaceOf(keyword));
    }
    if (data == nullptr) return TellNoData(session, place, options, out);

    DataReading reading;
    reading.variables = session.Keywords().GetVariables(&keyword);
    reading.fillsDefaults = options.defaults;
    reading.simulator = options.simulator.value_or(Keywords::SimulatorType::Any);
    const ItemPath::Item item = place.items.Find(*data, keyword.GetName());
    if (options.json) {
        WriteJson(out, item, reading);
        out.Append('\n');
    } else {
        WriteText(out, item, options.where, reading, UnitSystemOf(session));
    }
    if (keyword.GetSize() == 0) {
        session.Log().Note(session.PlaceOf(keyword),
                           fmt::format("With --simulator, {} is listed without its text.", keyword.GetName()));
    }
    return Done;
}

} // namespace Deckman
