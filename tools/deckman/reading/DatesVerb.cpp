#include <string>

#include <deckmanager/IKeyword.h>
#include <fmt/format.h>

#include "command/Verbs.h"
#include "data/DataValues.h"
#include "output/Table.h"
#include "session/DeckSession.h"
#include "session/Schedule.h"

namespace Deckman {

namespace {

void PrintJson(const Schedule::Moment& moment, Output& out)
{
    ValueReader values({}, ValueReader::Form::Json);
    out.Append("{\"index\":");
    out.AppendNumber(moment.index);
    out.Append(moment.date ? fmt::format(",\"date\":\"{}\"", moment.date->ToString()) : ",\"date\":null");
    out.Append(",\"days\":");
    out.Append(moment.days ? values.Real(*moment.days).text : "null");
    out.Append("}\n");
}

} // namespace

ExitStatus RunDates(DeckSession& session, const Options& options, Output& out)
{
    const Schedule schedule(session, options.all);
    Table table({{"index", true}, {"keyword"}, {"date"}, {"days", true}, {"place", false, {}, Table::Cut::Head}});
    for (const Schedule::Moment& moment : schedule.Moments()) {
        if (out.Closed()) break;
        if (options.json) {
            PrintJson(moment, out);
            continue;
        }
        table.Add(moment.index);
        table.Add(moment.keyword->GetName());
        table.Add(moment.date ? moment.date->ToString() : "");
        table.Add(moment.days ? fmt::format("{}", *moment.days) : "");
        table.Add(moment.place);
    }
    table.Print(out);
    for (const Schedule::Fault& fault : schedule.Faults()) {
        if (fault.isError)
            session.Log().Error(fault.place, fault.text);
        else
            session.Log().Warning(fault.place, fault.text);
    }
    return Done;
}

} // namespace Deckman
