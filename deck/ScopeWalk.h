#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include <deckmanager/IKeyword.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>

namespace Tarn::Fjel::Core::DeckManager {

/// The scope heads that are open at a place of a walk. Scopes nest without a bound, so heads stand on a stack and not
/// in calls.
class OpenScopes
{
public:
    void Open(const IKeyword& head) { m_heads.push_back(&head); }

    /// Drops the heads that a keyword closes, the innermost first, and tells how many are left. A section keyword
    /// closes all.
    std::size_t Close(const IKeyword& keyword)
    {
        if (keyword.GetSyntax()->GetKind() == Keywords::KeywordKind::Section) m_heads.clear();
        while (!m_heads.empty() && Closes(keyword, *m_heads.back())) {
            const IKeyword& closed = *m_heads.back();
            m_heads.pop_back();
            if (!ConcernsOuter(keyword, closed)) break;
        }
        return m_heads.size();
    }

private:
    static bool Closes(const IKeyword& keyword, const IKeyword& head)
    {
        const std::vector<const Keywords::IKeywordSyntax*>& closers = head.GetSyntax()->GetScopeEndSyntaxes();
        const std::string& name = keyword.GetSyntax()->GetName();
        return std::any_of(closers.begin(), closers.end(), [&name](const Keywords::IKeywordSyntax* closer) {
            return closer != nullptr && closer->GetName() == name;
        });
    }

    /// What closed the inner scope may concern the outer one too: a further head, the ENDFIN that ends a box together
    /// with the refinement around it, the ENDSKIP that ends a date together with the SKIP around it.
    static bool ConcernsOuter(const IKeyword& keyword, const IKeyword& closed)
    {
        return keyword.GetSyntax()->IsScopeStart() || (closed.GetName() == "BOX" && keyword.GetName() == "ENDFIN") ||
               (closed.GetName() == "DATES" && keyword.GetSyntax()->GetKind() == Keywords::KeywordKind::EndSkip);
    }

    std::vector<const IKeyword*> m_heads; // the innermost at the back
};

/// Finds where scopes are closed, in a deck or in one file.
template <class Iterator>
class ScopeWalk
{
public:
    /// The position that closes the scope of `head`: its closing keyword, a section keyword, or `limit`.
    /// With `generatedOnly` the user's keywords are passed over. REQUIRES: a scope head ahead of `limit`.
    static Iterator RawScopeEnd(const Iterator& head, const Iterator& limit, bool generatedOnly)
    {
        OpenScopes open;
        open.Open(**head);
        for (Iterator current = head;;) {
            ++current;
            if (current == limit) return current;
            const IKeyword* keyword = *current;
            if (keyword == nullptr) return current;
            const Keywords::IKeywordSyntax& syntax = *keyword->GetSyntax();
            if (generatedOnly && syntax.GetKind() != Keywords::KeywordKind::Section && !keyword->IsGenerated())
                continue;
            if (open.Close(*keyword) == 0) return current;
            if (syntax.IsScopeStart()) open.Open(*keyword);
        }
    }
};

} // namespace Tarn::Fjel::Core::DeckManager
