#include "KeywordEdits.h"

#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <fmt/format.h>

#include "DeckSession.h"
#include "DeckWalk.h"
#include "EditRun.h"
#include "Json.h"
#include "Schedule.h"
#include "UnifiedDiff.h"

namespace Deckman {

KeywordEdits::KeywordEdits(DeckSession& session, const Options& options)
    : m_session(session), m_options(options), m_editor(*session.Manager().GetEditor(&session.EditedDeck()))
{
}

Where::Place KeywordEdits::Find(const std::string& where) const
{
    Where::Place place = Where::Parse(where).Find(m_session, LimitsOf(m_session, m_options));
    RequireOne(where, place);
    return place;
}

Where::Place KeywordEdits::FindKeyword(const std::string& where, std::string_view verb) const
{
    Where::Place place = Where::Parse(where).FindKeyword(m_session, LimitsOf(m_session, m_options), verb);
    RequireOne(where, place);
    return place;
}

/// A look at the first of several does no harm, but a change of it may be another one than was meant.
void KeywordEdits::RequireOne(const std::string& where, const Where::Place& place) const
{
    constexpr std::size_t mostShown = 5;
    const std::string_view keyword = std::string_view(where).substr(0, where.find_first_of("[.'\""));
    if (keyword.find_first_of("#@:") != std::string_view::npos) return;
    const bool namesSection = keyword.find('/') != std::string_view::npos;
    const WhereLimits limits = LimitsOf(m_session, m_options);
    const auto section = m_session.Keywords().SectionOf(place.position);
    std::string places;
    std::size_t count = 0;
    for (DeckWalk walk(m_session, limits.all); walk.Next();) {
        if (!limits.Hold(walk.Index()) || walk.Keyword().GetName() != place.keyword->GetName()) continue;
        if (namesSection && walk.Section() != section) continue;
        if (++count <= mostShown)
            places += fmt::format("\n{} is at {}, also @{}", count, m_session.PlaceOf(walk.Keyword()), walk.Index());
    }
    if (count < 2) return;
    if (count > mostShown) places += "\n...";
    throw Failure(NotThere,
                  fmt::format("{} stands in the deck {} times; {}#1 is the first, {}#2 the second.{}",
                              place.keyword->GetName(), count, keyword, keyword, places),
                  where);
}

void KeywordEdits::Finish(Output& out)
{
    if (m_options.dryRun) {
        Print(out);
        return;
    }
    EditRun(m_session, m_options).Finish();
    if (m_options.json) Print(out);
}

void KeywordEdits::Print(Output& out) const
{
    UnifiedDiff diff(out);
    const auto appendText = [&out](const std::string& text) {
        if (text.empty())
            out.Append("null");
        else
            AppendJsonString(out, text);
    };
    for (const Change& change : m_changes) {
        if (!m_options.json) {
            diff.Add(m_session.PlaceOf(*change.file), change.line, change.before, change.after);
            continue;
        }
        out.Append("{\"action\":\"changed\",\"file\":");
        AppendJsonString(out, m_session.Shown(change.file->GetFileName()));
        out.Append(fmt::format(",\"line\":{},\"name\":", change.line));
        AppendJsonString(out, change.name);
        out.Append(",\"old\":");
        appendText(change.before);
        out.Append(",\"new\":");
        appendText(change.after);
        out.Append("}\n");
    }
}

} // namespace Deckman
