// The part of `DeckMerger` that carries the comments of generated keywords.

#include <algorithm>
#include <string_view>

#include "deck/Anchors.h"
#include "deck/DeckKeywords.h"
#include "files/IteratorAccess.h"
#include "files/KeywordFile.h"
#include "keywords/Keyword.h"
#include "merge/DeckMerger.h"
#include "merge/MergeTerms.h"
#include "text/SectionNames.h"
#include <deckmanager/DeckPositions.h>
#include <deckmanager/IDeck.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/LineReaderUtil.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::SectionType;

/// A scope of the source whose comments are carried.
struct DeckMerger::CommentScope
{
    KeywordIterator end;
    KeywordIterator destination; ///< where all comments of the scope go, once `hasDestination`
    bool hasDestination = false;
    bool isResolved = false;
    MergeRange range;
    /// How far the last search for a counterpart went, and what it found: one that begins on the way ends there too.
    std::optional<KeywordIterator> searchedTo;
    KeywordIterator found;
};

void DeckMerger::MergeComments(const std::set<IKeywordFile*>& excluded)
{
    Prepare(excluded);
    m_work.sourceTimes = TimeLine(m_source);
    m_work.targetTimes = TimeLine(m_target);
    m_search->OnRebuilt();
    GatherRemarks();
    MergeCommentsAheadOfSections();
    for (const KeywordIterator& section : SectionKeywords(m_source)) {
        SectionType type = SectionType::None;
        FindSection(section->GetName(), type);
        MergeCommentScope(section, FindSectionKeyword(m_target, type));
    }
    WriteComments();
    MergeCommentsAtEnds();
}

/// With each file opened once: most keyword lines have nothing beside the name.
void DeckMerger::GatherRemarks()
{
    for (const KeywordFile* file : static_cast<const DeckKeywords&>(*m_source.GetDeckKeywords()).FilesInDeckOrder()) {
        if (IsExcluded(*file)) continue;
        const OpenReaderGuard openFile(*file);
        const KeywordFileIterator end = file->End();
        for (KeywordFileIterator place = file->Begin(); place != end; ++place) {
            const auto& keyword = static_cast<const Keyword&>(**place);
            if (!IsAnchor(keyword) || !keyword.HasValidExtent() || keyword.IsSkipped()) continue;
            const std::string remark(Service::Trimmed(keyword.GetAheadOfTag()));
            if (!remark.empty()) m_remarks.emplace(&keyword, remark);
        }
    }
}

/// What stands ahead of the first section keyword has no scope: its keywords are matched in their order, and the
/// comments of those that are gone go to what follows.
void DeckMerger::MergeCommentsAheadOfSections()
{
    const auto isEnd = [](const KeywordIterator& position) {
        return *position == nullptr || IsSectionKeyword(**position);
    };
    KeywordIterator next = m_target.GetDeckKeywords()->Begin();
    KeywordIterator walk = m_source.GetDeckKeywords()->Begin();
    while (!isEnd(walk)) {
        if (!IsAnchor(**walk) && IsInclude(**walk)) {
            StepOverInclude(walk, m_source);
            continue;
        }
        if (IsAnchor(**walk) && !IsExcluded(walk)) {
            KeywordIterator found = next;
            while (!isEnd(found) && (!IsAnchor(**found) || found->GetName() != walk->GetName()))
                ++found;
            const bool isThere = !isEnd(found);
            const std::string comment = m_source.GetDeckKeywords()->GetComment(walk, true);
            const KeywordIterator& destination = isThere ? found : next;
            if (!comment.empty()) ApplyComment(destination, comment, walk);
            AddKeywordComment(walk, destination, isThere);
            AddRemark(walk, destination, isThere);
            if (isThere) next = Behind(found);
        }
        ++walk;
    }
}

void DeckMerger::OpenCommentScope(std::vector<CommentScope>& open, const KeywordIterator& head,
                                  const KeywordIterator* hint) const
{
    CommentScope& scope = open.emplace_back();
    scope.end = m_search->SourceScopeEnd(head);
    if (hint == nullptr || **hint == nullptr) return;
    scope.hasDestination = true;
    scope.destination = *hint;
}

/// Scopes nest without a bound, so the open ones stand on a stack and not in calls.
void DeckMerger::MergeCommentScope(const KeywordIterator& section, const KeywordIterator& destination)
{
    const IDeckKeywords& keywords = *m_source.GetDeckKeywords();
    ScopeStack stack{section};
    std::vector<CommentScope> open;
    OpenCommentScope(open, section, nullptr);
    if (!IsExcluded(section)) {
        const std::string comment = keywords.GetComment(section, true);
        if (!comment.empty()) ApplyComment(destination, comment, section);
        const bool isThere = *destination != nullptr && destination->GetName() == section->GetName();
        AddKeywordComment(section, destination, isThere);
        AddRemark(section, destination, isThere);
    }
    KeywordIterator walk = Behind(section);
    while (!stack.empty()) {
        CommentScope& scope = open.back();
        if (*walk == nullptr || !IsAhead(walk, scope.end)) {
            walk = std::move(scope.end);
            open.pop_back();
            stack.pop_back();
            continue;
        }
        const IKeyword& keyword = **walk;
        if (!IsAnchor(keyword)) {
            if (IsInclude(keyword))
                StepOverInclude(walk, m_source);
            else
                ++walk;
            continue;
        }
        if (!IsExcluded(walk)) {
            const std::string comment = keywords.GetComment(walk, true);
            if (!comment.empty()) {
                const KeywordIterator place = DestinationOfComment(walk, scope, stack);
                ApplyComment(place, comment, walk);
            }
            ApplyKeywordComment(walk, scope, stack);
            ApplyRemark(walk, scope, stack);
        }
        if (keyword.GetSyntax()->IsScopeStart()) {
            const std::optional<KeywordIterator> hint =
                scope.hasDestination ? std::optional(scope.destination) : std::nullopt;
            stack.push_back(walk);
            OpenCommentScope(open, walk, hint ? &*hint : nullptr);
        }
        ++walk;
    }
}

/// The place of the scope of `stack` in the target, or of what is left of it.
void DeckMerger::ResolveCommentScope(CommentScope& scope, const ScopeStack& stack)
{
    if (scope.hasDestination || scope.isResolved) return;
    const auto [place, found] = ResolveScope(stack, false);
    const KeywordIterator end = m_search->TargetScopeEnd(place);
    if (found) {
        scope.isResolved = true;
        scope.range = {Behind(place), end};
    } else {
        scope.hasDestination = true;
        scope.destination = end;
    }
}

/// The counterpart of the keyword at `position`, else of the next one of the scope that has one.
KeywordIterator DeckMerger::DestinationOfComment(const KeywordIterator& position, CommentScope& scope,
                                                 const ScopeStack& stack)
{
    ResolveCommentScope(scope, stack);
    if (scope.hasDestination) return scope.destination;
    if (scope.searchedTo && !IsAhead(*scope.searchedTo, position)) return scope.found;
    scope.found = scope.range.end;
    KeywordIterator walk = position;
    while (*walk != nullptr && IsAhead(walk, scope.end)) {
        scope.found = m_search->FindCounterpart(walk, &stack.back(), scope.range);
        if (scope.found != scope.range.end) break;
        if (IsAnchorHead(**walk))
            walk = m_search->SourceScopeEnd(walk);
        else
            ++walk;
    }
    scope.searchedTo = std::move(walk);
    return scope.found;
}

/// Comments that this run puts on one keyword stand in the order of the source, ahead of what the keyword was to bear
/// before.
void DeckMerger::ApplyComment(KeywordIterator position, const std::string& comment, const KeywordIterator& source)
{
    if (*position == nullptr) {
        // Behind the last keyword there is none to bear it.
        if (m_target.GetDeckKeywords()->Begin() == position) return;
        --position;
        if (*position == nullptr) return;
    }
    const auto [entry, isNew] = m_comments.try_emplace(*position);
    CommentsAbove& above = entry->second;
    if (isNew) {
        above.before = static_cast<const Keyword&>(**position).GetLeadingComment();
        above.own = m_target.GetDeckKeywords()->GetComment(position, true);
        above.Add(above.own + "\n" + above.before);
    }
    // What the generator has written there anew stands in both.
    const std::string rest = WithoutLines(comment, above.own);
    if (above.Holds(rest)) return;
    if (!above.added.empty() && above.added.back() != '\n') above.added += '\n';
    above.added += rest;
    above.Add(rest);
    Note(MergeReport::Action::Commented, source, IteratorAccess::CurrentFileIter(position));
}

void DeckMerger::CommentsAbove::Add(const std::string& text)
{
    all += text + "\n";
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        lines.emplace(Service::TrimmedRight(std::string_view(text).substr(begin, end - begin)));
        begin = end + 1;
    }
}

/// One keyword may come to bear the comments of very many that are gone: most are told apart by their first line.
bool DeckMerger::CommentsAbove::Holds(const std::string& text) const
{
    const std::size_t begin = text.find_first_not_of("\r\n");
    if (begin == std::string::npos) return true;
    const std::string_view line = std::string_view(text).substr(begin, text.find('\n', begin) - begin);
    return lines.count(std::string(Service::TrimmedRight(line))) > 0 && HoldsLines(all, text);
}

/// Puts the comments that were gathered to their keywords.
void DeckMerger::WriteComments()
{
    for (const auto& [keyword, above] : m_comments) {
        if (above.added.empty()) continue;
        auto& target = static_cast<Keyword&>(*const_cast<IKeyword*>(keyword));
        target.SetLeadingComment(above.before, true);
        target.AddLeadingComment(above.added, true, false);
    }
    m_comments.clear();
}

/// Below a keyword without data, a comment belongs to the keyword and not to the next one.
void DeckMerger::ApplyKeywordComment(const KeywordIterator& position, CommentScope& scope, const ScopeStack& stack)
{
    if (position->GetSyntax()->GetMetaData() != nullptr || position->GetComment().empty()) return;
    ResolveCommentScope(scope, stack);
    if (!scope.hasDestination) {
        const KeywordIterator found = m_search->FindCounterpart(position, &stack.back(), scope.range);
        if (found != scope.range.end) {
            AddKeywordComment(position, found, true);
            return;
        }
    }
    AddKeywordComment(position, DestinationOfComment(position, scope, stack), false);
}

/// What stands beside a name is a comment too, and goes above the counterpart.
void DeckMerger::ApplyRemark(const KeywordIterator& position, CommentScope& scope, const ScopeStack& stack)
{
    if (m_remarks.count(*position) == 0) return;
    ResolveCommentScope(scope, stack);
    if (!scope.hasDestination) {
        const KeywordIterator found = m_search->FindCounterpart(position, &stack.back(), scope.range);
        if (found != scope.range.end) {
            AddRemark(position, found, true);
            return;
        }
    }
    AddRemark(position, DestinationOfComment(position, scope, stack), false);
}

/// A generator that writes such words itself has written them anew.
void DeckMerger::AddRemark(const KeywordIterator& position, const KeywordIterator& destination, bool isCounterpart)
{
    const auto found = m_remarks.find(*position);
    if (found == m_remarks.end()) return;
    if (isCounterpart && !static_cast<const Keyword&>(**destination).GetAheadOfTag().empty()) return;
    const bool isComment = VeldaneDeckInfo::BeginsWithCommentMarker(found->second);
    ApplyComment(destination, (isComment ? "" : "-- ") + found->second + "\n", position);
}

/// Puts the comment below a keyword's line below that of its counterpart, or else above another keyword.
void DeckMerger::AddKeywordComment(const KeywordIterator& position, const KeywordIterator& destination,
                                   bool isCounterpart)
{
    const std::string comment = position->GetComment();
    if (comment.empty()) return;
    std::string lines = comment;
    LineReaderUtil::CommentLines(lines);
    // Behind a blank line at the end of a file it is what stands there.
    KeywordFile& file = *FileOf(position);
    if (PlaceBehind(position) == file.End() && HoldsLines(file.TextAtEnd(), lines)) return;
    if (!isCounterpart) {
        ApplyComment(destination, lines + "\n", position);
        return;
    }
    const std::string existing = destination->GetComment();
    const std::string rest = WithoutLines(comment, existing);
    if (HoldsLines(existing, rest)) return;
    if (m_editor.SetComment(destination, existing.empty() ? rest : existing + "\n" + rest))
        Note(MergeReport::Action::Commented, position, IteratorAccess::CurrentFileIter(destination));
}

} // namespace Tarn::Fjel::Core::DeckManager
