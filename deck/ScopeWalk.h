#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include <deckmanager/IKeyword.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>

namespace Tarn::Fjel::Core::DeckManager {

/// Finds where scopes are closed, in a deck or in one file.
///
/// Scopes nest without a bound, so the heads under way stand on a stack and not in calls.
template <class Iterator>
class ScopeWalk
{
public:
    /// The position that closes the scope of `head`: its closing keyword, a section keyword, or `limit`.
    /// With `generatedOnly` the user's keywords are passed over. REQUIRES: a scope head ahead of `limit`.
    static Iterator RawScopeEnd(const Iterator& head, const Iterator& limit, bool generatedOnly)
    {
        std::vector<const IKeyword*> heads{*head};
        Iterator current = head;
        bool lookAgain = false;
        for (;;) {
            if (!lookAgain) ++current;
            lookAgain = false;
            if (current == limit) return current;
            const IKeyword* keyword = *current;
            if (keyword == nullptr) return current;
            const bool isSection = keyword->GetSyntax()->GetKind() == Keywords::KeywordKind::Section;
            if (generatedOnly && !isSection && !keyword->IsGenerated()) continue;
            if (isSection) return current;
            if (Closes(*keyword, *heads.back())) {
                const IKeyword* closed = heads.back();
                heads.pop_back();
                if (heads.empty()) return current;
                // What closed the inner scope may concern the outer one too: a further head, the ENDFIN that ends a box
                // together with the refinement around it, the ENDSKIP that ends a date together with the SKIP around
                // it.
                lookAgain =
                    keyword->GetSyntax()->IsScopeStart() ||
                    (closed->GetName() == "BOX" && keyword->GetName() == "ENDFIN") ||
                    (closed->GetName() == "DATES" && keyword->GetSyntax()->GetKind() == Keywords::KeywordKind::EndSkip);
                continue;
            }
            if (keyword->GetSyntax()->IsScopeStart()) heads.push_back(keyword);
        }
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
};

} // namespace Tarn::Fjel::Core::DeckManager
