#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <deckmanager/DeckPositions.h>
#include <deckmanager/IKeyword.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>

#include "DeckSession.h"
#include "DeckWalk.h"
#include "Json.h"
#include "Table.h"
#include "Verbs.h"

namespace Deckman {

namespace {

struct Scope
{
    const DeckManager::IKeyword* head;
    int begin;
    const DeckManager::IKeyword* behind; // null at the end of the deck
    int end = 0;                         // exclusive
    int depth = 0;
    std::string place;
};

/// The walk's keywords by address, each with its indices in ascending order: a file that is included twice shows the
/// same keywords twice.
class KeywordIndices
{
public:
    void Add(const DeckManager::IKeyword* keyword, int index) { m_indices.emplace_back(keyword, index); }
    void Sort() { std::sort(m_indices.begin(), m_indices.end()); }
    /// The first index of `keyword` behind `index`; `otherwise` when there is none.
    int FirstBehind(const DeckManager::IKeyword* keyword, int index, int otherwise) const
    {
        const auto found = std::upper_bound(m_indices.begin(), m_indices.end(), std::pair(keyword, index));
        return found != m_indices.end() && found->first == keyword ? found->second : otherwise;
    }

private:
    std::vector<std::pair<const DeckManager::IKeyword*, int>> m_indices;
};

std::vector<Scope> FindScopes(DeckSession& session)
{
    std::vector<Scope> scopes;
    KeywordIndices indices;
    DeckWalk walk(session, false);
    while (walk.Next()) {
        const DeckManager::IKeyword& keyword = walk.Keyword();
        indices.Add(&keyword, walk.Index());
        if (!keyword.GetSyntax()->IsScopeStart()) continue;
        const DeckManager::KeywordIterator behind = DeckManager::ScopeEnd(walk.Position(), session.Deck(), false);
        scopes.push_back({&keyword, walk.Index(), *behind, 0, 0,
                          fmt::format("{}:{}", session.FileShown(walk.File()), keyword.GetLine())});
    }
    indices.Sort();

    const int deckEnd = walk.Index() + 1;
    std::vector<int> openEnds;
    for (Scope& scope : scopes) {
        scope.end = scope.behind == nullptr ? deckEnd : indices.FirstBehind(scope.behind, scope.begin, deckEnd);
        while (!openEnds.empty() && openEnds.back() <= scope.begin)
            openEnds.pop_back();
        scope.depth = static_cast<int>(openEnds.size());
        openEnds.push_back(scope.end);
    }
    return scopes;
}

} // namespace

ExitStatus RunScopes(DeckSession& session, const Options& options, Output& out)
{
    Table table({{"scope"}, {"begin", true}, {"end", true}, {"keywords", true}, {"place"}});
    for (const Scope& scope : FindScopes(session)) {
        if (options.json) {
            out.Append("{\"head\":");
            AppendJsonString(out, scope.head->GetName());
            out.Append(",\"begin\":");
            out.AppendNumber(scope.begin);
            out.Append(",\"end\":");
            out.AppendNumber(scope.end);
            out.Append(",\"depth\":");
            out.AppendNumber(scope.depth);
            out.Append("}\n");
            continue;
        }
        const bool isSection = scope.head->GetSyntax()->GetKind() == Tarn::Fjel::Core::Keywords::KeywordKind::Section;
        table.Add(std::string(2 * static_cast<std::size_t>(scope.depth), ' ') + scope.head->GetName(),
                  isSection ? Style::Strong : Style::Plain);
        table.Add(scope.begin);
        table.Add(scope.end);
        table.Add(scope.end - scope.begin);
        table.Add(scope.place);
    }
    table.Print(out);
    return Done;
}

} // namespace Deckman
