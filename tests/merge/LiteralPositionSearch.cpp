#include "tests/merge/LiteralPositionSearch.h"

#include <optional>
#include <string>

#include "deck/Anchors.h"
#include "deck/OrderTest.h"
#include "files/IteratorAccess.h"
#include "files/IteratorPath.h"
#include "files/KeywordFile.h"
#include "merge/IncludeMap.h"
#include "merge/MergeTerms.h"

#include "tests/merge/TopLevelIterator.h"
#include "text/SectionNames.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/DeckPositions.h>
#include <deckmanager/Environment.h>
#include <deckmanager/IDeck.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/KeywordIdEqual.h>
#include <tarn/keywords/DataAccessUtils.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>
#include <tarn/keywords/KeywordDataFactory.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/service/Log.h>
#include <tarn/service/LogEnabler.h>

namespace MergeTests {

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;

using Keywords::DataAccessUtils;
using Keywords::SectionType;

namespace {

/// Null also for data that can't be read.
Keywords::IKeywordData* DataOf(const IDeck& deck, const IKeyword* keyword)
{
    const Service::LogEnabler quiet(false);
    try {
        return deck.GetDeckKeywords()->GetKeywordData(keyword);
    } catch (const DeckManagerException&) {
        return nullptr;
    }
}

/// The keyword is of that identity; not one whose data can't be read.
bool Matches(const KeywordIdEqual& isLike, const IKeyword* keyword)
{
    const Service::LogEnabler quiet(false);
    try {
        return isLike(keyword);
    } catch (const DeckManagerException&) {
        return false;
    }
}

/// A position that has come into a file which `from` doesn't stand in: where that file is generated as a whole, or was
/// brought in by a user, the INCLUDE keyword that leads there; else the position itself.
KeywordIterator OutOfForeignFiles(const KeywordIterator& position, const KeywordIterator& from)
{
    IteratorPath::Places path = IteratorPath::Of(position);
    const IteratorPath::Places known = IteratorPath::Of(from);
    std::size_t level = 0;
    while (level + 1 < known.size() && level + 1 < path.size() && path[level] == known[level])
        ++level;
    for (; level + 1 < path.size(); ++level) {
        if (!IsUserKeyword(**path[level]) && !IteratorAccess::File(path[level + 1])->IsFileTagged()) continue;
        path.resize(level + 1);
        return IteratorPath::ToPosition(path, true);
    }
    return position;
}

/// Where time stands ahead of a position.
Service::Time TimeAhead(const TimeLine& times, KeywordIterator position)
{
    for (--position; *position != nullptr && !IsSectionKeyword(**position); --position) {
        if (times.Holds(*position)) return times.Of(*position);
    }
    return times.Start();
}

bool IsFirstOfFile(const KeywordIterator& position)
{
    const KeywordFile* file = FileOf(position);
    return file != nullptr && IteratorAccess::CurrentFileIter(position) == file->Begin();
}

bool IsLastOfFile(const KeywordIterator& position)
{
    const KeywordFile* file = FileOf(position);
    KeywordFileIterator place = IteratorAccess::CurrentFileIter(position);
    return file != nullptr && place != file->End() && ++place == file->End();
}

bool BelongsToSchedule(const IKeyword& keyword)
{
    return keyword.GetSyntax()->GetSection() == SectionType::SCHEDULE;
}

} // namespace

LiteralPositionSearch::LiteralPositionSearch(MergeWork& work)
    : m_work(work), m_source(work.source), m_target(work.target)
{
}

// --- counterparts --------------------------------------------------------------------------------

KeywordIterator LiteralPositionSearch::FindCounterpart(const KeywordIterator& keyword, const KeywordIterator* head,
                                                       const MergeRange& range)
{
    return IsTimeKeyword(**keyword) ? FindByTime(keyword, range) : FindByOccurrence(keyword, head, range);
}

KeywordIterator LiteralPositionSearch::FindByTime(const KeywordIterator& keyword, const MergeRange& range) const
{
    const Service::Time time = m_work.sourceTimes.Of(*keyword);
    if (!time.IsDef()) return range.end;
    for (TopLevelIterator walk(range.begin, m_target); walk.IsAheadOf(range.end); ++walk) {
        if (IsTimeKeyword(**walk) && IsSameMoment(m_work.targetTimes.Of(*walk), time)) return walk.Position();
    }
    return range.end;
}

LiteralPositionSearch::Identity LiteralPositionSearch::IdentityOf(const KeywordIterator& keyword) const
{
    Identity identity;
    const std::string& name = keyword->GetName();
    const SectionType section = m_source.GetDeckKeywords()->SectionOf(keyword);
    const Keywords::IKeywordSyntax* syntax = Environment::Instance().GetSyntaxTable()->FindSyntax(name, section, true);
    if (syntax == nullptr) {
        const Service::Log::Place place(keyword->GetFile()->GetFileName().GetFullName(), keyword->GetLine());
        Service::Log::SendLogMessage("Keyword " + name + " is not valid in the " + SectionName(section) + " section.",
                                     Service::Log::Warning);
        return identity;
    }
    if (syntax->HasIdentity()) {
        const Service::LogEnabler quiet(false);
        const std::shared_ptr<std::string> text = m_source.GetDeckKeywords()->GetDataText(*keyword);
        // What a variable stands for can't be told.
        if (text && text->find('$') != std::string::npos) return identity;
        try {
            identity.source = m_source.GetDeckKeywords()->GetKeywordData(*keyword);
        } catch (const DeckManagerException&) {
            return identity;
        }
        identity.mapped = MapIncludeData(*syntax, identity.source, m_work.includeNames);
        identity.target = identity.mapped ? identity.mapped.get() : identity.source;
    }
    identity.isKnown = true;
    return identity;
}

KeywordIterator LiteralPositionSearch::FindByOccurrence(const KeywordIterator& keyword, const KeywordIterator* head,
                                                        const MergeRange& range) const
{
    const Identity identity = IdentityOf(keyword);
    if (!identity.isKnown) return range.end;
    const IDeckKeywords& sourceKeywords = *m_source.GetDeckKeywords();
    const std::string& name = keyword->GetName();
    const KeywordIdEqual isLikeInSource(sourceKeywords, name, identity.source, true);
    const KeywordIdEqual isLikeInTarget(*m_target.GetDeckKeywords(), name, identity.target, true);

    int rank = 1;
    int rankInFile = 1;
    const KeywordFile* file = FileOf(keyword);
    const KeywordIterator begin = head != nullptr ? Behind(*head) : sourceKeywords.Begin();
    const KeywordIterator end = head != nullptr ? MergeScopeEnd(*head, m_source) : sourceKeywords.PhysicalEnd();
    for (TopLevelIterator walk(begin, m_source); walk.IsAheadOf(end); ++walk) {
        if (walk.Position() == keyword || keyword < walk.Position()) break;
        if (!Matches(isLikeInSource, *walk)) continue;
        ++rank;
        if (FileOf(walk.Position()) == file) ++rankInFile;
    }

    KeywordIterator inFile = range.end;
    KeywordIterator nth = range.end;
    KeywordIterator last = range.end;
    int matches = 0;
    int matchesInFile = 0;
    const std::string fileName = LeafName(*file);
    for (TopLevelIterator walk(range.begin, m_target); walk.IsAheadOf(range.end); ++walk) {
        if (!Matches(isLikeInTarget, *walk)) continue;
        ++matches;
        const bool isInFile = LeafName(*FileOf(walk.Position())) == fileName;
        if (matchesInFile > 0 && !isInFile) {
            inFile = last;
            break;
        }
        if (isInFile && ++matchesInFile == rankInFile) {
            inFile = walk.Position();
            break;
        }
        if (matches == rank) nth = walk.Position();
        last = walk.Position();
    }
    if (inFile != range.end) return inFile;
    return nth != range.end ? nth : last;
}

KeywordIterator LiteralPositionSearch::FindByIdentity(const KeywordIterator& keyword, const MergeRange& range) const
{
    const Identity identity = IdentityOf(keyword);
    if (!identity.isKnown) return range.end;
    const KeywordIdEqual isLike(*m_target.GetDeckKeywords(), keyword->GetName(), identity.target, true);
    for (KeywordIterator walk = range.begin; *walk != nullptr && IsAhead(walk, range.end); ++walk) {
        if (Matches(isLike, *walk)) return walk;
    }
    return range.end;
}

// --- places --------------------------------------------------------------------------------------

KeywordFileIterator LiteralPositionSearch::FindDatesPosition(const KeywordIterator& keyword,
                                                             const KeywordIterator& scope)
{
    const auto firstDate = [](const IDeck& deck, const IKeyword* dates) {
        const std::vector<Service::Time> times = DataAccessUtils::GetTimesFromDATES(DataOf(deck, dates));
        return times.empty() ? std::optional<Service::Time>() : times.front();
    };
    const std::optional<Service::Time> time = firstDate(m_source, *keyword);
    if (!time) throw DeckManagerException("A DATES keyword without a date has no place in time.");

    KeywordIterator end = MergeScopeClose(scope, m_target);
    const KeywordIterator deckEnd = m_target.GetDeckKeywords()->End();
    if (*deckEnd != nullptr && IsAhead(scope, deckEnd) && IsAhead(deckEnd, end) && BelongsAheadOfEnd(keyword))
        end = deckEnd;
    KeywordIterator walk = scope;
    for (; *walk != nullptr && (walk == scope || IsAhead(walk, end)); ++walk) {
        if (walk->GetName() != "DATES") continue;
        const std::optional<Service::Time> other = firstDate(m_target, *walk);
        if (other && *other > *time) return IteratorAccess::CurrentFileIter(walk);
    }
    KeywordFileIterator place = IteratorAccess::CurrentFileIter(OutOfForeignFiles(--walk, scope));
    return HeldAheadOf(++place, keyword, end);
}

/// The anchors ahead of a keyword at the top level of its scope.
LiteralPositionSearch::Anchors LiteralPositionSearch::CollectAnchors(const KeywordIterator& keyword,
                                                                     const KeywordIterator& head) const
{
    Anchors anchors;
    anchors.headInFile = !IsLastOfFile(head);
    TopLevelIterator walk(Behind(head), m_source);
    const KeywordIterator end = MergeScopeEnd(head, m_source);
    const auto throwNotFound = [] {
        throw DeckManagerException("Source keyword not found in top level of source scope");
    };
    if (!walk.IsAheadOf(end)) throwNotFound();
    int level = 0;
    const KeywordFile* lastFile = FileOf(walk.Position());
    while (walk.IsAheadOf(end)) {
        const KeywordFile* file = FileOf(walk.Position());
        if (file != lastFile) {
            if (IsFirstOfFile(walk.Position())) {
                ++level;
            } else {
                --level;
                while (!anchors.found.empty() && anchors.found.back().level > level)
                    anchors.found.pop_back();
                if (level < 0) anchors.headInFile = false;
            }
            lastFile = file;
        }
        if (walk.Position() == keyword) return anchors;
        if (IsInclude(**walk) && IsUserKeyword(**walk)) {
            // What a user's file brings in is no part of the scope.
            KeywordIterator behind = walk.Position();
            StepOverInclude(behind, m_source);
            walk.Jump(std::move(behind));
            if (!walk.IsAheadOf(end)) throwNotFound();
            continue;
        }
        if (IsAnchor(**walk)) anchors.found.push_back({walk.Position(), level});
        ++walk;
    }
    return anchors;
}

KeywordIterator LiteralPositionSearch::LowerBound(const KeywordIterator& keyword, const KeywordIterator& begin,
                                                  const KeywordIterator& end) const
{
    if (BelongsToSchedule(**keyword) || !keyword->GetSyntax()->HasOrderingRules()) return begin;
    OrderTest order(m_source.GetDeckKeywords()->SectionOf(keyword));
    for (KeywordIterator walk = end; IsAhead(begin, walk); --walk) {
        if (*walk != nullptr && order.MustPrecede(**walk, **keyword)) return Behind(walk);
    }
    return begin;
}

KeywordIterator LiteralPositionSearch::UpperBound(const KeywordIterator& keyword, const KeywordIterator& begin,
                                                  const KeywordIterator& end) const
{
    if (BelongsToSchedule(**keyword)) return end;
    OrderTest order(m_source.GetDeckKeywords()->SectionOf(keyword));
    for (KeywordIterator walk = begin; *walk != nullptr && IsAhead(walk, end); ++walk) {
        if (order.MustPrecede(**keyword, **walk)) return walk;
    }
    return end;
}

KeywordFileIterator LiteralPositionSearch::FindUserKeywordPosition(const KeywordIterator& scope,
                                                                   const KeywordIterator& keyword,
                                                                   const KeywordIterator& head)
{
    Anchors anchors = CollectAnchors(keyword, head);
    const KeywordIterator first = anchors.found.empty() ? keyword : anchors.found.front().position;
    const KeywordIterator end = MergeScopeEnd(scope, m_target);
    const KeywordIterator lower = LowerBound(keyword, Behind(scope), end);
    const KeywordIterator upper = UpperBound(keyword, lower, end);
    const auto place = [&](const KeywordIterator& behind, const KeywordIterator* anchor) {
        return HeldAheadOf(PlaceBehindUsers(behind, keyword, anchor), keyword, upper);
    };

    for (; !anchors.found.empty(); anchors.found.pop_back()) {
        const KeywordIterator& anchor = anchors.found.back().position;
        const KeywordIterator counterpart = FindCounterpart(anchor, &head, {lower, upper});
        // A file that is generated as a whole holds no user's keyword.
        if (counterpart == upper || counterpart->IsInGeneratedFile()) continue;
        return place(EndOfCounterpart(counterpart), &anchor);
    }
    if (anchors.headInFile) return place(WithinScope(LowerBound(keyword, scope, upper), scope), nullptr);

    // The keyword stands in a file that a generated INCLUDE has brought in.
    KeywordFileIterator ahead = IteratorAccess::CurrentFileIter(first);
    const KeywordFileIterator fileBegin = FileOf(first)->Begin();
    bool found = false;
    while (!found && ahead != fileBegin)
        found = IsAnchor(**--ahead);
    if (!found || !IsInclude(**ahead)) return place(scope, nullptr);
    const auto stored = m_work.includeScopes.find(*ahead);
    if (stored == m_work.includeScopes.end()) return place(scope, nullptr);
    const ScopeStack scopes = stored->second;
    const auto [outer, wasThere] = m_work.resolveScope(scopes);
    const KeywordIterator include = DeckPositionOf(ahead, m_source);
    const auto behindScope = [&](const KeywordFileIterator& at) {
        const KeywordIterator position = DeckPositionOf(at, m_target);
        return *position == nullptr || IsAhead(scope, position) ? at : place(scope, nullptr);
    };
    if (wasThere) {
        const MergeRange range{Behind(outer), MergeScopeEnd(outer, m_target)};
        const KeywordIterator counterpart = FindByIdentity(include, range);
        if (counterpart != range.end) return behindScope(place(counterpart, nullptr));
    }
    return behindScope(FindUserKeywordPosition(outer, include, scopes.back()));
}

/// A keyword that goes behind `position` must neither leave the scope nor come into another.
KeywordIterator LiteralPositionSearch::WithinScope(KeywordIterator position, const KeywordIterator& scope) const
{
    if (*position == nullptr || position == scope) return position;
    if (IsAnchorHead(**scope) && position == MergeScopeClose(scope, m_target) &&
        position != MergeScopeEnd(scope, m_target))
        return --position;
    return EndOfCounterpart(position);
}

/// The counterpart of an anchor, or the last keyword of the scope that it opens.
KeywordIterator LiteralPositionSearch::EndOfCounterpart(KeywordIterator position) const
{
    const IKeyword& head = **position;
    if (!IsAnchorHead(head)) return position;
    KeywordIterator end = MergeScopeClose(position, m_target);
    // A closing keyword of its own belongs to the scope, what else ends it does not.
    const bool hasCloser = head.GetSyntax()->GetScopeEndSyntax() != nullptr;
    if (*end == nullptr || (hasCloser && !IsAnchorHead(**end))) return end;
    return OutOfForeignFiles(--end, position);
}

/// Behind a target position, and behind the user's keywords that follow it. `anchor`: the source keyword that the
/// position is the counterpart of; null when it was come to by another way.
KeywordFileIterator LiteralPositionSearch::PlaceBehindUsers(const KeywordIterator& position,
                                                            const KeywordIterator& keyword,
                                                            const KeywordIterator* anchor) const
{
    KeywordFileIterator place = IteratorAccess::CurrentFileIter(position);
    if (*position == nullptr) return place;
    const IKeywordFile* limitFile = FileOf(position);
    const IDeckKeywords& targetKeywords = *m_target.GetDeckKeywords();
    const IKeywordFile* included = IsInclude(**position) ? targetKeywords.GetIncludedFile(*position) : nullptr;
    const bool isHeadOfFile = included != nullptr && anchor != nullptr && IsInclude(***anchor) &&
                              m_source.GetDeckKeywords()->GetIncludedFile(**anchor) == keyword->GetFile();
    if (isHeadOfFile) {
        place = included->Begin();
        limitFile = included;
    } else {
        ++place;
    }
    const KeywordFileIterator limit = limitFile->End();
    while (place != limit && IsUserKeyword(**place))
        ++place;
    return place;
}

/// A place that has come out behind the bound goes ahead of it, and what stands ahead of its deck's END in the source
/// does so in the target.
KeywordFileIterator LiteralPositionSearch::HeldAheadOf(KeywordFileIterator place, const KeywordIterator& keyword,
                                                       const KeywordIterator& bound) const
{
    KeywordIterator position = DeckPositionOf(place, m_target);
    if (*bound != nullptr && IsAhead(bound, position)) {
        place = IteratorAccess::CurrentFileIter(bound);
        position = bound;
    }
    const KeywordIterator end = m_target.GetDeckKeywords()->End();
    if (*end == nullptr || !IsAhead(end, position)) return place;
    return BelongsAheadOfEnd(keyword) ? IteratorAccess::CurrentFileIter(end) : place;
}

bool LiteralPositionSearch::BelongsAheadOfEnd(const KeywordIterator& keyword) const
{
    const KeywordIterator end = m_source.GetDeckKeywords()->End();
    return *end == nullptr || IsAhead(keyword, end);
}

// --- what the merge asks besides -----------------------------------------------------------------

KeywordIterator LiteralPositionSearch::TargetScopeEnd(const KeywordIterator& position)
{
    return MergeScopeEnd(position, m_target);
}

KeywordIterator LiteralPositionSearch::SourceScopeEnd(const KeywordIterator& position)
{
    return MergeScopeEnd(position, m_source);
}

KeywordIterator LiteralPositionSearch::TargetPositionOf(const KeywordFileIterator& place)
{
    return DeckPositionOf(place, m_target);
}

bool LiteralPositionSearch::IsAheadInTarget(const KeywordIterator& position, const KeywordIterator& other)
{
    return IsAhead(position, other);
}

Service::Time LiteralPositionSearch::SourceTimeAhead(const KeywordIterator& position)
{
    return TimeAhead(m_work.sourceTimes, position);
}

Service::Time LiteralPositionSearch::TargetTimeAhead(const KeywordIterator& position)
{
    return TimeAhead(m_work.targetTimes, position);
}

} // namespace MergeTests
