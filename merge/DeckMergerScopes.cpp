// The part of `DeckMerger` that finds the scopes of the source in the target, and makes those that are missing.

#include <algorithm>

#include "files/IteratorAccess.h"
#include "files/KeywordFile.h"
#include "merge/DeckMerger.h"
#include "merge/MergeTerms.h"
#include "text/SectionNames.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/Environment.h>
#include <deckmanager/IDeck.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/IDeckKeywordsEditor.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>
#include <tarn/service/Log.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::SectionType;
using Service::Log;

/// The place of the innermost scope of the stack in the target, and whether all of its scopes were there. Without
/// `createMissing` it is that of the innermost scope that is.
std::pair<KeywordIterator, bool> DeckMerger::ResolveScope(ScopeStack stack, bool createMissing)
{
    const IDeckKeywords& keywords = *m_target.GetDeckKeywords();
    MergeRange range{keywords.Begin(), keywords.PhysicalEnd()};
    KeywordIterator result = keywords.PhysicalEnd();
    std::optional<KeywordIterator> previousHead;
    while (!stack.empty()) {
        const KeywordIterator* head = previousHead ? &*previousHead : nullptr;
        const KeywordIterator found = m_search->FindCounterpart(stack.front(), head, range);
        if (found == range.end) {
            if (createMissing) result = ExportMissingScope(result, stack, head);
            return {result, false};
        }
        result = found;
        previousHead = stack.front();
        stack.pop_front();
        range = {Behind(found), m_search->TargetScopeEnd(found)};
    }
    return {result, true};
}

/// Makes the heads of the stack in the target, each inside the one before it; the last one's place comes back.
KeywordIterator DeckMerger::ExportMissingScope(const KeywordIterator& parent, const ScopeStack& stack,
                                               const KeywordIterator* previousHead)
{
    const KeywordIterator& first = stack.front();
    KeywordIterator result;
    KeywordFileIterator place;
    auto next = stack.begin();
    if (IsSectionKeyword(**first)) {
        result = MakeSection(first);
        if (*result == nullptr) return result;
        place = PlaceBehind(result);
    } else {
        place = PlaceOfMissingHead(first, parent, previousHead);
        result = ExportHead(place, first);
    }
    CheckThatScopeEnds(result, first);
    for (++next; next != stack.end(); ++next)
        result = ExportHead(place, *next);
    return result;
}

KeywordIterator DeckMerger::MakeSection(const KeywordIterator& section)
{
    const IDeckKeywords& keywords = *m_target.GetDeckKeywords();
    const std::string& name = section->GetName();
    const IKeyword* made = nullptr;
    bool existed = false;
    if (IsAhead(section, m_source.GetDeckKeywords()->End())) {
        SectionType type = SectionType::None;
        FindSection(name, type);
        made = m_editor.GetOrCreateSection(type, &existed);
    } else {
        const Keywords::IKeywordSyntax* syntax = Environment::Instance().GetSyntaxTable()->FindSyntax(name, true);
        if (syntax == nullptr) return keywords.PhysicalEnd();
        made = m_editor.InsertKeywordText(*syntax, keywords.PhysicalEnd(), "");
    }
    if (made == nullptr) throw DeckManagerException("The section " + name + " cannot be made.");
    const KeywordFileIterator place = keywords.GetFileIterator(made);
    if (!existed) m_search->OnInserted(place);
    return m_search->TargetPositionOf(place);
}

KeywordFileIterator DeckMerger::PlaceOfMissingHead(const KeywordIterator& head, const KeywordIterator& parent,
                                                   const KeywordIterator* previousHead)
{
    try {
        if (head->GetName() == "DATES") return m_search->FindDatesPosition(head, parent);
        return m_search->FindUserKeywordPosition(parent, head, *previousHead);
    } catch (...) {
        const Log::Place place(head->GetFile()->GetFileName().GetFullName(), head->GetLine());
        Log::SendLogMessage("A problem was encountered when finding the position to insert the keyword " +
                                head->GetName() + ".",
                            Log::Warning);
    }
    return PlaceBehind(parent);
}

/// Puts a copy of a head at `place`, with its closing keyword behind it; `place` is then between the two.
KeywordIterator DeckMerger::ExportHead(KeywordFileIterator& place, const KeywordIterator& head)
{
    const std::optional<CopyText> text = TextToCopy(head);
    const KeywordFileIterator copy = CopyKeyword(place, head, text ? *text : CopyText(), "");
    const IKeyword* closer = nullptr;
    if (const Keywords::IKeywordSyntax* syntax = head->GetSyntax()->GetScopeEndSyntax()) {
        closer = Insert(*syntax, place, "");
        KeywordFileIterator closerPlace = place;
        --closerPlace;
        m_editor.TagKeyword(closer);
        m_search->OnInserted(closerPlace);
        place = closerPlace;
    }
    ExportedScope& scope = m_exportedScopes.emplace_back(ExportedScope{*copy, closer});
    m_exportedKeywords[*copy] = &scope;
    if (closer != nullptr) m_exportedKeywords[closer] = &scope;
    return m_search->TargetPositionOf(copy);
}

void DeckMerger::CheckThatScopeEnds(const KeywordIterator& position, const KeywordIterator& head) const
{
    const Keywords::IKeywordSyntax& syntax = *head->GetSyntax();
    if (syntax.GetScopeEndSyntax() != nullptr) return;
    KeywordIterator next = Behind(position);
    if (*next != nullptr && IsInclude(**next)) ++next;
    if (*next == nullptr || next == m_target.GetDeckKeywords()->End() || IsSectionKeyword(**next)) return;
    const auto& closers = syntax.GetScopeEndSyntaxes();
    const bool isClosed = std::any_of(closers.begin(), closers.end(), [&](const Keywords::IKeywordSyntax* closer) {
        return closer->GetName() == next->GetName();
    });
    if (isClosed) return;
    const Log::Place place(head->GetFile()->GetFileName().GetFullName(), head->GetLine());
    Log::SendLogMessage("The exported scoped keyword " + head->GetName() + " was not ended correctly.", Log::Warning);
}

/// A scope that was made and holds something of the user's becomes the user's; one that served nothing goes.
void DeckMerger::SettleExportedScopes()
{
    for (ExportedScope& scope : m_exportedScopes) {
        if (scope.head == nullptr) continue;
        IKeywordFile* file = scope.head->GetFile();
        const KeywordFileIterator headPlace = file->Find(scope.head);
        const KeywordIterator head = m_search->TargetPositionOf(headPlace);
        const KeywordIterator end = m_search->TargetScopeEnd(head);
        bool isUsed = false;
        for (KeywordIterator walk = head; !isUsed && *walk != nullptr && walk != end; ++walk) {
            // The look stays within the head's file and what that includes.
            if (!IsWithin(walk, *file)) break;
            isUsed = IsUserKeyword(**walk);
        }
        const KeywordFileIterator closerPlace = scope.closer != nullptr ? file->Find(scope.closer) : file->End();
        const bool hasCloser = closerPlace != file->End();
        if (isUsed) {
            SetTag(headPlace, false);
            if (hasCloser) SetTag(closerPlace, false);
        } else {
            Remove(headPlace);
            if (hasCloser) Remove(closerPlace);
        }
    }
}

} // namespace Tarn::Fjel::Core::DeckManager
