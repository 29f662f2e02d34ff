#include "merge/DeckMerger.h"

#include "deck/Anchors.h"
#include "deck/OrderTest.h"
#include "files/IteratorAccess.h"
#include "files/KeywordFile.h"
#include "keywords/Keyword.h"
#include "merge/MergeTerms.h"
#include "merge/PositionSearch.h"
#include "text/SectionNames.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/DeckPositions.h>
#include <deckmanager/IDeck.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/IDeckKeywordsEditor.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/service/Log.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::SectionType;
using Service::Log;

DeckMerger::DeckMerger(IDeckKeywordsEditor& editor, const IDeck& source, const IncludeNames& includeNames,
                       MergeReport* report, const SearchMaker& makeSearch)
    : m_editor(editor), m_source(source), m_target(*editor.GetDeck()),
      m_report(report), m_work{source, m_target, includeNames, TimeLine(), TimeLine(), {}, {}}
{
    m_work.resolveScope = [this](const ScopeStack& stack) { return ResolveScope(stack, true); };
    m_search = makeSearch ? makeSearch(m_work) : std::make_unique<PositionSearch>(m_work);
}

DeckMerger::~DeckMerger() = default;

void DeckMerger::Prepare(const std::set<IKeywordFile*>& excluded)
{
    m_work.includeScopes.clear();
    m_work.sourceTimes = TimeLine();
    m_work.targetTimes = TimeLine();
    m_exportedScopes.clear();
    m_exportedKeywords.clear();
    m_lastCopied.reset();
    m_copied.clear();
    m_comments.clear();
    m_remarks.clear();
    m_broughtByUser.clear();
    m_isWhole = true;

    m_excludedNames.clear();
    for (const IKeywordFile* file : excluded)
        m_excludedNames.insert(LeafName(*file));
    m_sharedFiles.clear();
    const std::set<IKeywordFile*> targetFiles = m_target.GetDeckKeywords()->GetFiles();
    for (IKeywordFile* file : m_source.GetDeckKeywords()->GetFiles()) {
        if (targetFiles.count(file) > 0) m_sharedFiles.insert(file);
        if (!IsExcluded(*file)) file->AsKeywordFile()->LoadAllTags();
    }
    for (IKeywordFile* file : targetFiles)
        file->AsKeywordFile()->LoadAllTags();
}

bool DeckMerger::IsExcluded(const IKeywordFile& file) const
{
    if (m_sharedFiles.count(&file) > 0) return true;
    return !m_excludedNames.empty() && m_excludedNames.count(LeafName(file)) > 0;
}

bool DeckMerger::IsExcluded(const KeywordIterator& position) const
{
    return IsExcluded(*FileOf(position));
}

bool DeckMerger::HasSomethingToCarry() const
{
    for (KeywordIterator walk = m_source.GetDeckKeywords()->Begin(); *walk != nullptr; ++walk) {
        if (IsExcluded(walk)) continue;
        if (IsUserKeyword(**walk) || walk->IsSuppressed()) return true;
    }
    return false;
}

/// All section keywords, those that occur again too, in the order of the sections and within one of the deck.
std::vector<KeywordIterator> DeckMerger::SectionKeywords(const IDeck& deck) const
{
    std::vector<std::vector<KeywordIterator>> found(SectionCount);
    for (KeywordIterator walk = deck.GetDeckKeywords()->Begin(); *walk != nullptr; ++walk) {
        SectionType section = SectionType::None;
        if (IsSectionKeyword(**walk) && FindSection(walk->GetName(), section))
            found[static_cast<std::size_t>(section)].push_back(walk);
    }
    std::vector<KeywordIterator> ordered;
    for (std::vector<KeywordIterator>& ofSection : found)
        ordered.insert(ordered.end(), ofSection.begin(), ofSection.end());
    return ordered;
}

bool DeckMerger::MergeUserKeywords(std::set<KeywordIterator>& replaced, const std::set<IKeywordFile*>& excluded)
{
    Prepare(excluded);
    TellOfLostWords();
    CarryTextBehindEnds();
    if (!HasSomethingToCarry()) return m_isWhole;
    m_work.sourceTimes = TimeLine(m_source);
    m_work.targetTimes = TimeLine(m_target);
    m_search->OnRebuilt();
    MergeAheadOfSections();
    for (const KeywordIterator& section : SectionKeywords(m_source))
        MergeUserScope(section, replaced);
    SettleExportedScopes();
    return m_isWhole;
}

/// What a user has put ahead of the first section keyword has no scope. It goes ahead of the target's first.
void DeckMerger::MergeAheadOfSections()
{
    std::optional<KeywordFileIterator> place;
    for (KeywordIterator walk = m_source.GetDeckKeywords()->Begin(); *walk != nullptr; ++walk) {
        if (IsSectionKeyword(**walk)) return;
        if (IsExcluded(walk) || IsAnchor(**walk) || CameWithUserInclude(*walk->GetFile())) continue;
        if (!m_copied.insert(*walk).second) continue;
        const std::optional<CopyText> text = TextToCopy(walk);
        if (!text) continue;
        if (!place) {
            KeywordIterator first = m_target.GetDeckKeywords()->Begin();
            while (*first != nullptr && !IsSectionKeyword(**first) &&
                   first->GetSyntax()->GetKind() != Keywords::KeywordKind::End)
                ++first;
            place = IteratorAccess::CurrentFileIter(first);
        }
        CopyKeyword(*place, walk, *text, m_source.GetDeckKeywords()->GetComment(walk, true));
        Note(MergeReport::Action::Carried, walk, *place);
    }
}

bool DeckMerger::CameWithUserInclude(IKeywordFile& file) const
{
    const auto [known, isNew] = const_cast<DeckMerger*>(this)->m_broughtByUser.try_emplace(&file, false);
    if (isNew) {
        const IKeyword* include = m_source.GetDeckKeywords()->GetIncludingKeyword(&file);
        known->second = include != nullptr && IsUserKeyword(*include);
    }
    return known->second;
}

/// Scopes nest without a bound, so the open ones stand on the stack and not in calls.
void DeckMerger::MergeUserScope(const KeywordIterator& section, std::set<KeywordIterator>& replaced)
{
    ScopeStack stack{section};
    std::vector<KeywordIterator> ends{m_search->SourceScopeEnd(section)};
    KeywordIterator walk = Behind(section);
    while (!stack.empty()) {
        if (*walk == nullptr || !IsAhead(walk, ends.back())) {
            // The section's own end is nobody's business.
            walk = std::move(ends.back());
            ends.pop_back();
            stack.pop_back();
            continue;
        }
        const IKeyword& keyword = **walk;
        if (IsExcluded(walk)) {
            ++walk;
            continue;
        }
        if (IsAnchor(keyword)) {
            if (keyword.IsSuppressed()) TransferSuppression(walk, stack);
            if (keyword.GetSyntax()->IsScopeStart()) {
                ends.push_back(m_search->SourceScopeEnd(walk));
                stack.push_back(walk);
            } else if (IsInclude(keyword)) {
                m_work.includeScopes.try_emplace(&keyword, stack);
            }
        } else if (!CameWithUserInclude(*keyword.GetFile())) {
            InsertUserKeyword(walk, stack, replaced);
        }
        ++walk;
    }
}

void DeckMerger::TransferSuppression(const KeywordIterator& position, const ScopeStack& stack)
{
    const IDeckKeywords& keywords = *m_target.GetDeckKeywords();
    MergeRange range{keywords.Begin(), keywords.PhysicalEnd()};
    const KeywordIterator* head = nullptr;
    for (const KeywordIterator& entry : stack) {
        const KeywordIterator found = m_search->FindCounterpart(entry, head, range);
        if (found == range.end) return;
        range = {Behind(found), m_search->TargetScopeEnd(found)};
        head = &entry;
    }
    const KeywordIterator found = m_search->FindCounterpart(position, head, range);
    if (found == range.end || found->IsSuppressed()) return;
    if (!m_editor.Suppress(found)) {
        Refuse(position, "cannot be suppressed in the target.");
        return;
    }
    Note(MergeReport::Action::Suppressed, position, IteratorAccess::CurrentFileIter(found));
}

/// A keyword within a user's scope, or a user's scope head, never takes the place of a generated one.
bool DeckMerger::IsInUserScope(const KeywordIterator& position, const KeywordIterator& head) const
{
    if (position->GetSyntax()->IsScopeStart()) return true;
    const IDeckKeywords& keywords = *m_source.GetDeckKeywords();
    const KeywordIterator begin = keywords.Begin();
    KeywordIterator outer = head;
    KeywordIterator end;
    while (IsAnchor(**outer)) {
        if (IsSectionKeyword(**outer) || outer == begin) return false;
        const KeywordIterator inner = outer;
        keywords.GetEnclosingScope(inner, outer, end);
    }
    return true;
}

/// The generated keyword of the target that a user's keyword stands for; the end of the scope when there is none.
KeywordIterator DeckMerger::FindTwin(const KeywordIterator& position, const KeywordIterator& head,
                                     const KeywordIterator& scope)
{
    const MergeRange range{Behind(scope), m_search->TargetScopeEnd(scope)};
    const KeywordIterator found = m_search->FindCounterpart(position, &head, range);
    if (found == range.end || !IsAnchor(**found)) return range.end;
    // What stands behind the end of a deck is no twin of what stands ahead of it.
    const bool isBehindEnd = IsAhead(m_source.GetDeckKeywords()->End(), position);
    if (isBehindEnd != m_search->IsAheadInTarget(m_target.GetDeckKeywords()->End(), found)) return range.end;
    // Some keywords of the schedule may stand in other sections too.
    if (position->GetSyntax()->GetSection() == SectionType::SCHEDULE ||
        m_source.GetDeckKeywords()->SectionOf(position) == SectionType::SCHEDULE)
    {
        const Service::Time ours = m_search->SourceTimeAhead(position);
        const Service::Time theirs = m_search->TargetTimeAhead(found);
        if (!IsSameMoment(ours, theirs) && (ours.IsDef() || theirs.IsDef())) return range.end;
    }
    return found;
}

void DeckMerger::InsertUserKeyword(const KeywordIterator& position, const ScopeStack& stack,
                                   std::set<KeywordIterator>& replaced)
{
    if (!m_copied.insert(*position).second) return;
    const std::optional<CopyText> text = TextToCopy(position);
    if (!text) return;

    KeywordIterator head;
    KeywordIterator end;
    m_source.GetDeckKeywords()->GetEnclosingScope(position, head, end);
    const bool inUserScope = IsInUserScope(position, head);
    const auto [scope, found] = ResolveScope(stack, true);
    std::optional<Twin> twin;
    if (found && !inUserScope && !IsRepeatable(position->GetName())) {
        const KeywordIterator match = FindTwin(position, head, scope);
        if (match != m_search->TargetScopeEnd(scope)) {
            Note(MergeReport::Action::Replaced, position, IteratorAccess::CurrentFileIter(match));
            twin = RemoveTwin(match);
            replaced.insert(position);
        }
    }
    const KeywordFileIterator place = PlaceOfUserKeyword(position, stack, scope);
    // In the very place of its twin it has the comment above that, too.
    const bool takesPlace = twin && twin->follower == place;
    std::string above = m_source.GetDeckKeywords()->GetComment(position, true);
    if (takesPlace) above = HoldsLines(twin->comment, above) ? "" : WithoutLines(above, twin->comment);
    const KeywordFileIterator copy = CopyKeyword(place, position, *text, above);
    if (takesPlace) IteratorAccess::File(copy)->PullBlocksUp(copy, twin->blocks);
    if (!twin) Note(MergeReport::Action::Carried, position, place);
    m_lastCopied = LastCopied{position, place};
}

DeckMerger::Twin DeckMerger::RemoveTwin(const KeywordIterator& twin)
{
    const KeywordFileIterator place = IteratorAccess::CurrentFileIter(twin);
    Twin removed{place, IteratorAccess::File(place)->BlocksAhead(*twin).size(),
                 m_target.GetDeckKeywords()->GetComment(twin, true)};
    ++removed.follower;
    // That place goes with it.
    if (m_lastCopied && m_lastCopied->target == place) {
        m_lastCopied->target = removed.follower;
        m_lastCopied->hasMoved = true;
    }
    Remove(place);
    return removed;
}

/// Nothing stands between the two in the source.
bool DeckMerger::FollowsLastCopied(const KeywordIterator& position) const
{
    if (!m_lastCopied) return false;
    KeywordIterator previous = position;
    --previous;
    return *previous != nullptr && IsUserKeyword(**previous) && previous == m_lastCopied->source &&
           FileOf(previous) == FileOf(position);
}

/// Twins that went may have shifted the ranks of the anchors. Where no rule wants it there, a keyword does not go ahead
/// of the one that it follows. An INCLUDE may: that one may stand in the very file that it brings in.
bool DeckMerger::WouldOvertakeLastCopied(const KeywordIterator& position, const KeywordFileIterator& place)
{
    if (IsInclude(**position)) return false;
    KeywordIterator walk = m_search->TargetPositionOf(place);
    const KeywordIterator end = m_search->TargetPositionOf(m_lastCopied->target);
    if (!m_search->IsAheadInTarget(walk, end)) return false;
    OrderTest order(m_source.GetDeckKeywords()->SectionOf(position));
    for (; *walk != nullptr && walk != end; ++walk) {
        if (order.MustPrecede(**position, **walk)) return false;
    }
    return true;
}

KeywordFileIterator DeckMerger::PlaceOfUserKeyword(const KeywordIterator& position, const ScopeStack& stack,
                                                   const KeywordIterator& scope)
{
    const bool follows = FollowsLastCopied(position);
    // Keywords of a schedule that follow each other stay together, whatever the dates say.
    if (follows && !m_lastCopied->hasMoved && position->GetSyntax()->GetSection() == SectionType::SCHEDULE)
        return m_lastCopied->target;
    try {
        const KeywordFileIterator place = m_search->FindUserKeywordPosition(scope, position, stack.back());
        return follows && WouldOvertakeLastCopied(position, place) ? m_lastCopied->target : place;
    } catch (...) {
        const Log::Place logPlace(position->GetFile()->GetFileName().GetFullName(), position->GetLine());
        Log::SendLogMessage("A problem was encountered when finding the position to insert the user keyword " +
                                position->GetName() + ".",
                            Log::Warning);
    }
    return PlaceBehind(scope);
}

} // namespace Tarn::Fjel::Core::DeckManager
