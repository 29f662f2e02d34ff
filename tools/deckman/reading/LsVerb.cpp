#include "command/Verbs.h"
#include "reading/KeywordRows.h"
#include "session/DeckSession.h"
#include "session/DeckWalk.h"
#include "session/Schedule.h"

namespace Deckman {

ExitStatus RunLs(DeckSession& session, const Options& options, Output& out)
{
    const WhereLimits limits = LimitsOf(session, options);
    KeywordRows rows(session, out, options.json);
    DeckWalk walk(session, options.all);
    while (!out.Closed() && walk.Next()) {
        if (limits.Hold(walk.Index()) && Passes(options.filter, walk)) rows.Add(walk);
    }
    rows.Finish();
    if (walk.Index() == 0)
        session.Log().Note(session.PlaceOf(*session.Keywords().GetDataFile()), "There are no keywords in this deck.");
    return Done;
}

} // namespace Deckman
