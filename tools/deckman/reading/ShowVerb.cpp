#include <deckmanager/IKeyword.h>
#include <deckmanager/KeywordText.h>
#include <fmt/format.h>

#include "command/Verbs.h"
#include "output/Json.h"
#include "session/DeckSession.h"
#include "session/Schedule.h"
#include "session/Where.h"

namespace Deckman {

ExitStatus RunShow(DeckSession& session, const Options& options, Output& out)
{
    const Where::Place place = Where::Parse(options.where).FindKeyword(session, LimitsOf(session, options), "show");
    const DeckManager::IKeyword& keyword = *place.keyword;
    const DeckManager::KeywordText text(keyword);

    if (options.json) {
        out.Append("{\"name\":");
        AppendJsonString(out, keyword.GetName());
        out.Append(",\"text\":");
        AppendJsonString(out, text.Own());
        out.Append(",\"comment\":");
        AppendJsonString(out, keyword.GetComment());
        out.Append(",\"above\":");
        AppendJsonString(out, session.Keywords().GetComment(place.position, true));
        out.Append("}\n");
    } else {
        if (options.comments) out.Append(session.Keywords().GetComment(place.position, true));
        out.Append(text.Own());
        if (!text.Own().empty() && !text.Own().ends_with('\n')) out.Append('\n');
    }
    if (text.All().empty()) {
        session.Log().Note(fmt::format("{}:{}", session.PlaceOf(*keyword.GetFile()), keyword.GetLine()),
                           fmt::format("With --simulator, {} is listed without its text.", keyword.GetName()));
    }
    return Done;
}

} // namespace Deckman
