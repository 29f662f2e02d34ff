#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include <deckmanager/IKeyword.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>

#include "command/Verbs.h"
#include "output/Json.h"
#include "output/Table.h"
#include "session/DeckSession.h"
#include "session/DeckWalk.h"

namespace Deckman {

namespace {

using Tarn::Fjel::Core::Keywords::IKeywordSyntax;
using Tarn::Fjel::Core::Keywords::KeywordKind;

struct Scope
{
    const DeckManager::IKeyword* head;
    int begin;
    int end; // exclusive
    int depth;
    std::string place;
};

/// The scopes of a deck, found in one walk. DeckManager::ScopeEnd says the same of each head, but walks for each: with
/// scopes that nest ten thousand deep that takes a while.
class ScopeFinder
{
public:
    /// The next keyword of the walk.
    void Take(const DeckWalk& walk, const DeckSession& session)
    {
        const IKeywordSyntax& syntax = *walk.Keyword().GetSyntax();
        if (walk.Kind() == KeywordKind::Section)
            CloseAll(walk.Index());
        else
            CloseBy(syntax, walk.Index());
        if (!syntax.IsScopeStart()) return;
        m_open.push_back(m_scopes.size());
        m_scopes.push_back({&walk.Keyword(), walk.Index(), 0, static_cast<int>(m_open.size()) - 1,
                            fmt::format("{}:{}", session.FileShown(walk.File()), walk.Keyword().GetLine())});
    }
    /// A section keyword, and the end of the deck, end every scope.
    void CloseAll(int index)
    {
        for (const std::size_t scope : m_open)
            m_scopes[scope].end = index;
        m_open.clear();
    }
    const std::vector<Scope>& Scopes() const { return m_scopes; }

private:
    void CloseBy(const IKeywordSyntax& closer, int index)
    {
        for (bool again = true; again && !m_open.empty();) {
            Scope& innermost = m_scopes[m_open.back()];
            const IKeywordSyntax& head = *innermost.head->GetSyntax();
            if (!IsClosedBy(head, closer)) return;
            // A closing keyword belongs to its scope; a further head does not, nor what ends a scope without a closing
            // keyword of its own.
            const bool isWithin = !closer.IsScopeStart() && head.GetScopeEndSyntax() != nullptr;
            innermost.end = isWithin ? index + 1 : index;
            m_open.pop_back();
            again = ConcernsOuterScope(head, closer);
        }
    }

    static bool IsClosedBy(const IKeywordSyntax& head, const IKeywordSyntax& closer)
    {
        const auto& closers = head.GetScopeEndSyntaxes();
        return std::any_of(closers.begin(), closers.end(), [&closer](const IKeywordSyntax* candidate) {
            return candidate != nullptr && candidate->GetName() == closer.GetName();
        });
    }

    /// A further head may close several scopes, an ENDFIN a box with the refinement around it, an ENDSKIP a date with
    /// the skip around it.
    static bool ConcernsOuterScope(const IKeywordSyntax& closed, const IKeywordSyntax& closer)
    {
        return closer.IsScopeStart() || (closed.GetName() == "BOX" && closer.GetName() == "ENDFIN") ||
               (closed.GetName() == "DATES" && closer.GetKind() == KeywordKind::EndSkip);
    }

    std::vector<Scope> m_scopes;
    std::vector<std::size_t> m_open; // the scopes that are not closed yet, the innermost last
};

std::vector<Scope> FindScopes(DeckSession& session)
{
    ScopeFinder finder;
    DeckWalk walk(session, false);
    while (walk.Next())
        finder.Take(walk, session);
    finder.CloseAll(walk.Index() + 1);
    return finder.Scopes();
}

} // namespace

ExitStatus RunScopes(DeckSession& session, const Options& options, Output& out)
{
    Table table(
        {{"scope"}, {"begin", true}, {"end", true}, {"keywords", true}, {"place", false, {}, Table::Cut::Head}});
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
        const bool isSection = scope.head->GetSyntax()->GetKind() == KeywordKind::Section;
        table.Add(Table::Indent(scope.depth) + scope.head->GetName(), isSection ? Style::Strong : Style::Plain);
        table.Add(scope.begin);
        table.Add(scope.end);
        table.Add(scope.end - scope.begin);
        table.Add(scope.place);
    }
    table.Print(out);
    return Done;
}

} // namespace Deckman
