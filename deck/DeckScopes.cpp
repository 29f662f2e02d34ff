#include <algorithm>

#include "deck/DeckKeywords.h"
#include "deck/FilePaths.h"
#include "deck/ScopeWalk.h"
#include "files/IteratorAccess.h"
#include "files/IteratorPath.h"
#include "files/KeywordFile.h"
#include "text/SectionNames.h"
#include <deckmanager/DeckPositions.h>
#include <deckmanager/IDeck.h>
#include <deckmanager/IKeyword.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::KeywordKind;
using Keywords::SectionType;

namespace {

const DeckKeywords& KeywordsOf(const IDeck& deck)
{
    return static_cast<const DeckKeywords&>(*deck.GetDeckKeywords());
}

/// The position behind the scope of `head`, which `end` closes: a closing keyword belongs to its scope, a further head
/// does not, and what ends a scope that has no closing keyword of its own (a TSTEP behind a DATES) does not either.
template <class Iterator>
Iterator Behind(const IKeyword* head, Iterator end, const Iterator& limit)
{
    if (end == limit || *end == nullptr || (*end)->GetSyntax()->IsScopeStart()) return end;
    if (head == nullptr || head->GetSyntax()->GetScopeEndSyntax() == nullptr) return end;
    ++end;
    return end;
}

} // namespace

// --- scopes --------------------------------------------------------------------------------------------------------

KeywordIterator DeckKeywords::GetScopeEnd(const KeywordIterator& position, bool generatedOnly) const
{
    const IKeyword* head = *position;
    SectionType section = SectionType::None;
    if (head != nullptr && head->GetSyntax()->GetKind() == KeywordKind::Section &&
        FindSection(head->GetName(), section)) {
        const KeywordIterator& end = SectionEnd(section);
        if (end != End()) return end;
    }
    if (head == nullptr) return PhysicalEnd();
    return ScopeWalk<KeywordIterator>::RawScopeEnd(position, PhysicalEnd(), generatedOnly);
}

void DeckKeywords::GetEnclosingScope(const KeywordIterator& position, KeywordIterator& head, KeywordIterator& end) const
{
    const bool found = IteratorAccess::TopFile(position) == m_rootFile.get() && !IsPassedByWalk(position)
                           ? FindEnclosingScope(position, head, end)
                           : GoBackToEnclosingScope(position, head, end);
    if (found) return;
    head = Begin();
    end = GetScopeEnd(head, false);
}

bool DeckKeywords::FindEnclosingScope(const KeywordIterator& position, KeywordIterator& head,
                                      KeywordIterator& end) const
{
    const std::vector<Scope>& scopes = GetScopes();
    const auto behind = std::lower_bound(scopes.begin(), scopes.end(), position,
                                         [](const Scope& scope, const KeywordIterator& at) { return scope.head < at; });
    if (behind == scopes.begin()) return false;
    // Only the nearest head ahead of the position and the heads around it can still be open there.
    const KeywordIterator begin = Begin();
    for (auto place = static_cast<std::size_t>(behind - scopes.begin()) - 1;;) {
        const Scope& scope = scopes[place];
        if (scope.head != begin && position < scope.end) {
            head = scope.head;
            end = scope.end;
            return true;
        }
        if (scope.outer == place) return false;
        place = scope.outer;
    }
}

/// For positions that the walk never comes to.
bool DeckKeywords::GoBackToEnclosingScope(const KeywordIterator& position, KeywordIterator& head,
                                          KeywordIterator& end) const
{
    const KeywordIterator begin = Begin();
    head = position;
    for (--head; head != begin; --head) {
        const IKeyword* keyword = *head;
        if (keyword == nullptr) return false;
        if (!keyword->GetSyntax()->IsScopeStart()) continue;
        end = GetScopeEnd(head, false);
        if (position < end) return true;
    }
    return false;
}

/// All scopes of the deck from one walk: asking each head would cost the square of a deck of dates.
const std::vector<DeckKeywords::Scope>& DeckKeywords::GetScopes() const
{
    DropWhatMissedMoves();
    if (m_scopes) return *m_scopes;
    auto scopes = std::make_unique<std::vector<Scope>>();
    OpenScopes open;
    std::vector<std::size_t> path; // the places of the open scopes
    for (KeywordIterator position = Begin();; ++position) {
        const IKeyword* keyword = *position;
        const std::size_t left = keyword != nullptr ? open.Close(*keyword) : 0;
        for (; path.size() > left; path.pop_back()) {
            (*scopes)[path.back()].end = position;
        }
        if (keyword == nullptr) break;
        if (!keyword->GetSyntax()->IsScopeStart()) continue;
        const std::size_t place = scopes->size();
        scopes->push_back({position, KeywordIterator(), path.empty() ? place : path.back()});
        path.push_back(place);
        open.Open(*keyword);
    }
    // A section keyword that occurs again has the range of the first.
    for (Scope& scope : *scopes) {
        if (scope.head->GetSyntax()->GetKind() == KeywordKind::Section) scope.end = GetScopeEnd(scope.head, false);
    }
    m_scopes = std::move(scopes);
    return *m_scopes;
}

KeywordIterator ScopeEnd(const KeywordIterator& position, const IDeck& deck, bool generatedOnly)
{
    const DeckKeywords& keywords = KeywordsOf(deck);
    return Behind(*position, keywords.GetScopeEnd(position, generatedOnly), keywords.PhysicalEnd());
}

KeywordFileIterator FileScopeEnd(const KeywordFileIterator& position, bool generatedOnly)
{
    return ScopeWalk<KeywordFileIterator>::RawScopeEnd(position, IteratorAccess::File(position)->End(), generatedOnly);
}

KeywordFileIterator FileScopeBehind(const KeywordFileIterator& position, bool generatedOnly)
{
    KeywordFileIterator end = FileScopeEnd(position, generatedOnly);
    const KeywordFileIterator limit = IteratorAccess::File(position)->End();
    return end == limit ? end : Behind(*position, end, limit);
}

// --- places and positions ------------------------------------------------------------------------------------------

KeywordIterator DeckKeywords::DeckPositionOf(const KeywordFileIterator& place) const
{
    KeywordFile* file = IteratorAccess::File(place);
    const bool isNowhere =
        file == nullptr || place.AtBeforeBegin() || !Paths().Contains(file) || place == m_rootFile->End();
    if (!isNowhere) {
        IteratorPath::Places path = Paths().PathTo(place);
        if (place != file->End()) return IteratorPath::ToPosition(path, true);
        // Behind the file is behind its INCLUDE.
        path.pop_back();
        return StepOverInclude(IteratorPath::ToPosition(path, true));
    }
    KeywordIterator end = PhysicalEnd();
    end.SetIgnoreLogicalEnds(true);
    return end;
}

KeywordIterator DeckKeywords::StepOverInclude(const KeywordIterator& position) const
{
    // A position made from a place in an included file knows nothing of the files around it.
    IteratorPath::Places path = IteratorAccess::TopFile(position) == m_rootFile.get()
                                    ? IteratorPath::Of(position)
                                    : Paths().PathTo(IteratorAccess::CurrentFileIter(position));
    while (!path.empty()) {
        KeywordFileIterator& place = path.back();
        KeywordFile* file = IteratorAccess::File(place);
        if (file == nullptr) break;
        if (place != file->End()) ++place;
        if (place != file->End()) return IteratorPath::ToPosition(path, true);
        path.pop_back();
    }
    return PhysicalEnd();
}

KeywordIterator DeckPositionOf(const KeywordFileIterator& position, const IDeck& deck)
{
    return KeywordsOf(deck).DeckPositionOf(position);
}

KeywordIterator DeckPositionOf(const IKeyword* keyword, const IDeck& deck)
{
    const DeckKeywords& keywords = KeywordsOf(deck);
    return keywords.DeckPositionOf(keywords.GetFileIterator(keyword));
}

void StepOverInclude(KeywordIterator& position, const IDeck& deck)
{
    position = KeywordsOf(deck).StepOverInclude(position);
}

} // namespace Tarn::Fjel::Core::DeckManager
