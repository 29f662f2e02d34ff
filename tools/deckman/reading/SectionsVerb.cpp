#include <string>
#include <vector>

#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <fmt/format.h>
#include <tarn/keywords/KeywordKind.h>

#include "command/Verbs.h"
#include "output/Json.h"
#include "output/Table.h"
#include "session/DeckSession.h"
#include "session/DeckWalk.h"
#include "session/Sections.h"

namespace Deckman {

namespace {

struct SectionRange
{
    SectionType section;
    int begin;
    int end; // exclusive
    std::string place;
};

/// A section ends at the next section keyword, whatever section that opens.
std::vector<SectionRange> FindSections(DeckSession& session)
{
    std::vector<SectionRange> sections;
    DeckWalk walk(session, false);
    while (walk.Next()) {
        if (walk.Kind() != Tarn::Fjel::Core::Keywords::KeywordKind::Section) continue;
        if (!sections.empty()) sections.back().end = walk.Index();
        sections.push_back({walk.Section(), walk.Index(), 0,
                            fmt::format("{}:{}", session.FileShown(walk.File()), walk.Keyword().GetLine())});
    }
    if (!sections.empty()) sections.back().end = walk.Index() + 1;
    return sections;
}

} // namespace

ExitStatus RunSections(DeckSession& session, const Options& options, Output& out)
{
    Table table(
        {{"section"}, {"begin", true}, {"end", true}, {"keywords", true}, {"place", false, {}, Table::Cut::Head}});
    for (const SectionRange& range : FindSections(session)) {
        if (options.json) {
            out.Append("{\"section\":");
            AppendJsonString(out, NameOf(range.section));
            out.Append(",\"begin\":");
            out.AppendNumber(range.begin);
            out.Append(",\"end\":");
            out.AppendNumber(range.end);
            out.Append("}\n");
            continue;
        }
        table.Add(NameOf(range.section), Style::Strong);
        table.Add(range.begin);
        table.Add(range.end);
        table.Add(range.end - range.begin);
        table.Add(range.place);
    }
    table.Print(out);

    std::string message;
    if (!session.Keywords().CheckSections(message))
        session.Log().Warning(session.PlaceOf(*session.Keywords().GetDataFile()), message);
    return Done;
}

} // namespace Deckman
