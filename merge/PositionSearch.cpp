#include "merge/PositionSearch.h"

#include <algorithm>
#include <utility>

#include "deck/Anchors.h"
#include "deck/OrderTest.h"
#include "files/IteratorAccess.h"
#include "files/KeywordFile.h"
#include "merge/IncludeMap.h"
#include "merge/MergeTerms.h"

#include "text/SectionNames.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/DeckPositions.h>
#include <deckmanager/Environment.h>
#include <deckmanager/IDeck.h>
#include <deckmanager/IDeckKeywords.h>
#include <tarn/keywords/DataAccessUtils.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>
#include <tarn/service/Log.h>
#include <tarn/service/LogEnabler.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::SectionType;
using Node = DeckIndex::Node;

namespace {

bool BelongsToSchedule(const IKeyword& keyword)
{
    return keyword.GetSyntax()->GetSection() == SectionType::SCHEDULE;
}

std::optional<Service::Time> FirstDate(const IDeck& deck, const IKeyword* keyword)
{
    const Service::LogEnabler quiet(false);
    try {
        const std::vector<Service::Time> times =
            Keywords::DataAccessUtils::GetTimesFromDATES(deck.GetDeckKeywords()->GetKeywordData(keyword));
        if (!times.empty()) return times.front();
    } catch (const DeckManagerException&) {
        // No date.
    }
    return std::nullopt;
}

} // namespace

PositionSearch::PositionSearch(MergeWork& work)
    : m_work(work), m_source(work.source, work.sourceTimes, false), m_target(work.target, work.targetTimes, true)
{
}

PositionSearch::~PositionSearch() = default;

// --- counterparts --------------------------------------------------------------------------------

KeywordIterator PositionSearch::FindCounterpart(const KeywordIterator& keyword, const KeywordIterator* head,
                                                const MergeRange& range)
{
    m_target.Refresh();
    Node* const end = m_target.At(range.end);
    Node* found = FindCounterpart(m_source.At(keyword), head != nullptr ? m_source.At(*head) : nullptr,
                                  m_target.At(range.begin), end);
    return found != end ? m_target.PositionOf(found) : range.end;
}

Node* PositionSearch::FindCounterpart(Node* keyword, Node* head, Node* begin, Node* end)
{
    return IsTimeKeyword(*keyword->keyword) ? FindByTime(keyword, begin, end)
                                            : FindByOccurrence(keyword, head, begin, end);
}

Node* PositionSearch::FindByTime(const Node* keyword, Node* begin, Node* end)
{
    const Service::Time time = m_work.sourceTimes.Of(keyword->keyword);
    if (!time.IsDef() || begin == nullptr) return end;
    Node* found = m_target.FindTime(begin, end, time.ToMilliseconds());
    return found != nullptr ? found : end;
}

PositionSearch::Identity PositionSearch::ReadIdentity(Node* keyword) const
{
    Identity identity;
    const IKeyword& source = *keyword->keyword;
    const IDeckKeywords& keywords = *m_work.source.GetDeckKeywords();
    const SectionType section = keywords.SectionOf(m_source.PositionOf(keyword));
    const Keywords::IKeywordSyntax* syntax =
        Environment::Instance().GetSyntaxTable()->FindSyntax(source.GetName(), section, true);
    identity.isValid = syntax != nullptr;
    if (syntax == nullptr) return identity;
    if (syntax->HasIdentity()) {
        const Service::LogEnabler quiet(false);
        const std::shared_ptr<std::string> text = keywords.GetDataText(&source);
        // What a variable stands for can't be told.
        if (text && text->find('$') != std::string::npos) return identity;
        const Keywords::IKeywordData* data = nullptr;
        try {
            data = keywords.GetKeywordData(&source);
        } catch (const DeckManagerException&) {
            return identity;
        }
        if (data != nullptr && data->GetSyntax()->HasIdentity()) {
            identity.hasValue = true;
            identity.source = DeckIndex::IdentityOf(data);
            const auto mapped = MapIncludeData(*syntax, data, m_work.includeNames);
            identity.target = mapped ? DeckIndex::IdentityOf(mapped.get()) : identity.source;
        }
    }
    identity.isKnown = true;
    return identity;
}

const PositionSearch::Identity& PositionSearch::IdentityOf(Node* keyword)
{
    const auto [entry, isNew] = m_identities.try_emplace(keyword);
    if (isNew) entry->second = ReadIdentity(keyword);
    if (!entry->second.isValid) {
        const IKeyword& source = *keyword->keyword;
        const SectionType section = m_work.source.GetDeckKeywords()->SectionOf(m_source.PositionOf(keyword));
        const Service::Log::Place place(source.GetFile()->GetFileName().GetFullName(), source.GetLine());
        Service::Log::SendLogMessage("Keyword " + source.GetName() + " is not valid in the " + SectionName(section) +
                                         " section.",
                                     Service::Log::Warning);
    }
    return entry->second;
}

DeckIndex::Wanted PositionSearch::Wanted(const Node* keyword, const Identity& identity, bool inTarget) const
{
    DeckIndex::Wanted wanted{keyword->keyword->GetName()};
    if (identity.hasValue) wanted.identity = inTarget ? &identity.target : &identity.source;
    return wanted;
}

Node* PositionSearch::FindByOccurrence(Node* keyword, Node* head, Node* begin, Node* end)
{
    const Identity& identity = IdentityOf(keyword);
    if (!identity.isKnown) return end;
    std::size_t rank = 1;
    std::size_t rankInFile = 1;
    Node* const sourceBegin = head != nullptr ? head->next : m_source.First();
    Node* sourceEnd = head != nullptr ? m_source.ScopeEnd(head) : nullptr;
    if (DeckIndex::IsAhead(keyword, sourceEnd)) sourceEnd = keyword;
    const void* const sourceFile = m_source.FileKey(keyword);
    for (const auto& [bucket, first, last] : m_source.Find(sourceBegin, sourceEnd, Wanted(keyword, identity, false))) {
        rank += last - first;
        const auto ofFile = bucket->ofFile.find(sourceFile);
        if (ofFile == bucket->ofFile.end()) continue;
        const std::vector<Node*>& nodes = ofFile->second;
        const auto bound = [&](const Node* node, std::uint64_t label) { return node->label < label; };
        const auto low = std::lower_bound(nodes.begin(), nodes.end(), bucket->all[first]->label, bound);
        const auto high = std::lower_bound(low, nodes.end(), bucket->all[last - 1]->label + 1, bound);
        rankInFile += static_cast<std::size_t>(high - low);
    }
    const auto found = m_target.Find(begin, end, Wanted(keyword, identity, true));
    if (found.empty()) return end;
    const void* const file = m_target.FileKeyOf(LeafName(*keyword->keyword->GetFile()));
    return found.size() == 1 ? Choose(found, file, rank, rankInFile) : ChooseByWalking(found, file, rank, rankInFile);
}

/// The same rank in a file of the same name counts first, then the same rank anywhere, then the last of the kind. Once
/// a run of those in the file has ended, the last of that run is as near as one can come.
Node* PositionSearch::ChooseByWalking(const std::vector<DeckIndex::Segment>& found, const void* file, std::size_t rank,
                                      std::size_t rankInFile) const
{
    Node* nth = nullptr;
    Node* last = nullptr;
    std::size_t matches = 0;
    std::size_t matchesInFile = 0;
    for (const auto& [bucket, first, end] : found) {
        for (std::size_t at = first; at < end; ++at) {
            Node* const node = bucket->all[at];
            ++matches;
            const bool isInFile = m_target.FileKey(node) == file;
            if (matchesInFile > 0 && !isInFile) return last;
            if (isInFile && ++matchesInFile == rankInFile) return node;
            if (matches == rank) nth = node;
            last = node;
        }
    }
    return nth != nullptr ? nth : last;
}

/// The same in one piece of a bucket, without a walk.
Node* PositionSearch::Choose(const std::vector<DeckIndex::Segment>& found, const void* file, std::size_t rank,
                             std::size_t rankInFile) const
{
    const auto& [bucket, first, end] = found.front();
    const std::vector<Node*>& all = bucket->all;
    const auto otherwise = [&, begin = first, size = end - first]() {
        return rank <= size ? all[begin + rank - 1] : all[begin + size - 1];
    };
    const auto ofFile = bucket->ofFile.find(file);
    if (ofFile == bucket->ofFile.end()) return otherwise();
    const std::vector<Node*>& inFile = ofFile->second;
    const auto start = std::lower_bound(inFile.begin(), inFile.end(), all[first], DeckIndex::ByLabel());
    const std::uint64_t lastLabel = all[end - 1]->label;
    if (start == inFile.end() || (*start)->label > lastLabel) return otherwise();
    const auto place =
        static_cast<std::size_t>(std::lower_bound(all.begin(), all.end(), *start, DeckIndex::ByLabel()) - all.begin());
    // How many of the file follow each other: as long as they keep step with all.
    std::size_t run = 1;
    std::size_t tooMany = std::min(end - place, static_cast<std::size_t>(inFile.end() - start)) + 1;
    while (run + 1 < tooMany) {
        const std::size_t middle = (run + tooMany) / 2;
        if (start[static_cast<std::ptrdiff_t>(middle - 1)] == all[place + middle - 1])
            run = middle;
        else
            tooMany = middle;
    }
    if (rankInFile <= run) return all[place + rankInFile - 1];
    return place + run < end ? all[place + run - 1] : otherwise();
}

Node* PositionSearch::FindByIdentity(Node* keyword, Node* begin, Node* end)
{
    const Identity& identity = IdentityOf(keyword);
    if (!identity.isKnown || begin == nullptr) return end;
    const DeckIndex::Ordered& includes = m_target.Includes();
    for (auto entry = includes.lower_bound(begin); entry != includes.end(); ++entry) {
        Node* const node = *entry;
        if (!DeckIndex::IsAhead(node, end)) break;
        if (!node->isAnchor || node->keyword->GetName() != keyword->keyword->GetName()) continue;
        if (!identity.hasValue || m_target.IdentityOf(node) == identity.target) return node;
    }
    return end;
}

// --- anchors -------------------------------------------------------------------------------------

const PositionSearch::HeadWalk& PositionSearch::WalkOf(Node* head)
{
    std::unique_ptr<HeadWalk>& walk = m_walks[head];
    if (!walk) {
        walk = std::make_unique<HeadWalk>();
        Walk(head, *walk);
    }
    return *walk;
}

void PositionSearch::Walk(Node* head, HeadWalk& walk)
{
    KeywordFileIterator behindHead = head->place;
    Stand stand;
    stand.headInFile = ++behindHead != IteratorAccess::File(head->place)->End();
    Node* const end = m_source.ScopeEnd(head);
    Node* node = head->next;
    walk.endsWithout = !DeckIndex::IsAhead(node, end);
    const KeywordFile* lastFile = node != nullptr ? IteratorAccess::File(node->place) : nullptr;
    int level = 0;
    while (DeckIndex::IsAhead(node, end)) {
        const KeywordFile* file = IteratorAccess::File(node->place);
        if (file != lastFile) {
            if (node->place == file->Begin()) {
                ++level;
            } else {
                --level;
                while (stand.top != nullptr && stand.top->level > level)
                    stand.top = stand.top->below;
                if (level < 0) stand.headInFile = false;
            }
            lastFile = file;
        }
        const bool isInclude = IsInclude(*node->keyword);
        // Users' keywords are placed, and so are heads that the target lacks and INCLUDE keywords whose files it lacks.
        if (!node->isAnchor || isInclude || node->isHead) walk.stands.try_emplace(node, stand);
        if (isInclude && !node->isAnchor) {
            // What a user's file brings in is no part of the scope.
            node = m_source.BehindContent(node);
            if (DeckIndex::IsAhead(node, end)) continue;
            walk.endsWithout = true;
            break;
        }
        if (node->isAnchor) {
            Anchor& anchor = walk.anchors.emplace_back(Anchor{node, level, stand.top, nullptr});
            anchor.bottom = stand.top != nullptr ? stand.top->bottom : &anchor;
            stand.top = &anchor;
        }
        node = node->isHead ? m_source.ScopeEnd(node) : node->next;
    }
    walk.last = stand;
}

const PositionSearch::Stand& PositionSearch::StandOf(Node* keyword, Node* head)
{
    const HeadWalk& walk = WalkOf(head);
    const auto found = walk.stands.find(keyword);
    if (found != walk.stands.end()) return found->second;
    if (walk.endsWithout) throw DeckManagerException("Source keyword not found in top level of source scope");
    return walk.last;
}

/// Notes that a scope of the target, whole, has no counterpart of an anchor. What is told of an anchor must be told
/// again each time, so such a one isn't noted.
void PositionSearch::NoteAbsent(Anchor& anchor, const Node* scope)
{
    const bool isTime = IsTimeKeyword(*anchor.node->keyword);
    if (scope == nullptr || (!isTime && !m_identities[anchor.node].isValid)) return;
    anchor.absentIn = scope->keyword;
    anchor.absentSince = m_appearances;
    anchor.belowAbsent = anchor.below;
}

/// The nearest anchor from that one on which isn't known to have no counterpart in the scope. Long stretches of a deck
/// may be gone: they are passed once.
PositionSearch::Anchor* PositionSearch::BelowAbsent(Anchor* anchor, const Node* scope) const
{
    if (scope == nullptr) return anchor;
    const auto isAbsent = [&](const Anchor* candidate) {
        return candidate != nullptr && candidate->absentIn == scope->keyword && candidate->absentSince == m_appearances;
    };
    Anchor* end = anchor;
    while (isAbsent(end))
        end = end->belowAbsent;
    while (isAbsent(anchor))
        anchor = std::exchange(anchor->belowAbsent, end);
    return end;
}

// --- bounds --------------------------------------------------------------------------------------

Node* PositionSearch::LowerBound(const Node* keyword, Node* begin, Node* end) const
{
    if (BelongsToSchedule(*keyword->keyword) || !keyword->keyword->GetSyntax()->HasOrderingRules()) return begin;
    OrderTest order(m_work.source.GetDeckKeywords()->SectionOf(m_source.PositionOf(keyword)));
    for (Node* node = end != nullptr ? end : m_target.Last(); DeckIndex::IsAhead(begin, node) && node != nullptr;
         node = node->previous)
    {
        if (order.MustPrecede(*node->keyword, *keyword->keyword)) return node->next;
    }
    return begin;
}

Node* PositionSearch::UpperBound(const Node* keyword, Node* begin, Node* end) const
{
    if (BelongsToSchedule(*keyword->keyword) || begin == nullptr) return end;
    // Only keywords with rules are tested.
    const DeckIndex::Ordered& nodes = m_target.WithRules();
    auto entry = nodes.lower_bound(begin);
    if (entry == nodes.end()) return end;
    OrderTest order(m_work.source.GetDeckKeywords()->SectionOf(m_source.PositionOf(keyword)));
    for (; entry != nodes.end() && DeckIndex::IsAhead(*entry, end); ++entry) {
        if (order.MustPrecede(*keyword->keyword, *(*entry)->keyword)) return *entry;
    }
    return end;
}

// --- places --------------------------------------------------------------------------------------

KeywordFileIterator PositionSearch::FindUserKeywordPosition(const KeywordIterator& scope,
                                                            const KeywordIterator& keyword, const KeywordIterator& head)
{
    m_target.Refresh();
    return Place(m_target.At(scope), m_source.At(keyword), m_source.At(head));
}

KeywordFileIterator PositionSearch::Place(Node* scope, Node* keyword, Node* head)
{
    const Stand& stand = StandOf(keyword, head);
    Node* const first = stand.top != nullptr ? stand.top->bottom->node : keyword;
    Node* const end = m_target.ScopeEnd(scope);
    Node* const begin = scope != nullptr ? scope->next : nullptr;
    Node* const lower = LowerBound(keyword, begin, end);
    Node* const upper = UpperBound(keyword, lower, end);
    // A range that begins deeper comes through keywords that are no part of the scope's own level.
    const bool isOfScope = lower == begin;
    for (Anchor* anchor = stand.top; anchor != nullptr;) {
        if (Anchor* const next = isOfScope ? BelowAbsent(anchor, scope) : anchor; next != anchor) {
            anchor = next;
            continue;
        }
        Node* const counterpart = FindCounterpart(anchor->node, head, lower, upper);
        // A file that is generated as a whole holds no user's keyword.
        if (counterpart != upper && !counterpart->keyword->IsInGeneratedFile())
            return HeldAheadOf(PlaceBehindUsers(EndOfCounterpart(counterpart), keyword, anchor->node), keyword, upper);
        if (counterpart == upper && isOfScope && upper == end) NoteAbsent(*anchor, scope);
        anchor = anchor->below;
    }
    if (stand.headInFile) {
        Node* const behind = WithinScope(LowerBound(keyword, scope, upper), scope);
        return HeldAheadOf(PlaceBehindUsers(behind, keyword, nullptr), keyword, upper);
    }
    return PlaceOfFile(scope, first, keyword, upper);
}

/// What the rules want ahead may be the last of its scope, or stand ahead of another one: a keyword that goes behind
/// `node` must neither leave the scope nor come into that.
Node* PositionSearch::WithinScope(Node* node, Node* scope) const
{
    if (node == nullptr || node == scope) return node;
    const bool closes = scope != nullptr && scope->isHead && scope->close == node && m_target.ScopeEnd(scope) != node;
    return closes ? node->previous : EndOfCounterpart(node);
}

/// For a keyword in a file that a generated INCLUDE has brought in: where that INCLUDE is, or would be.
KeywordFileIterator PositionSearch::PlaceOfFile(Node* scope, Node* first, Node* keyword, Node* upper)
{
    KeywordFileIterator ahead = first->place;
    const KeywordFileIterator fileBegin = IteratorAccess::File(ahead)->Begin();
    bool found = false;
    while (!found && ahead != fileBegin)
        found = IsAnchor(**--ahead);
    const auto stored = found && IsInclude(**ahead) ? m_work.includeScopes.find(*ahead) : m_work.includeScopes.end();
    if (stored == m_work.includeScopes.end())
        return HeldAheadOf(PlaceBehindUsers(scope, keyword, nullptr), keyword, upper);
    const ScopeStack scopes = stored->second;
    const KeywordIterator scopePosition = m_target.PositionOf(scope);
    const KeywordIterator upperPosition = m_target.PositionOf(upper);
    const auto [outer, wasThere] = m_work.resolveScope(scopes);
    m_target.Refresh();
    Node* const outerNode = m_target.At(outer);
    Node* const include = m_source.At(DeckPositionOf(ahead, m_work.source));
    std::optional<KeywordFileIterator> place;
    if (wasThere) {
        Node* const end = m_target.ScopeEnd(outerNode);
        Node* const counterpart = FindByIdentity(include, outerNode != nullptr ? outerNode->next : nullptr, end);
        if (counterpart != end)
            place = HeldAheadOf(PlaceBehindUsers(counterpart, keyword, nullptr), keyword, m_target.At(upperPosition));
    }
    if (!place) place = Place(outerNode, include, m_source.At(scopes.back()));
    // Where the INCLUDE stands ahead of the keyword's scope, so would the keyword.
    m_target.Refresh();
    Node* const inner = m_target.At(scopePosition);
    if (DeckIndex::IsAhead(inner, m_target.At(*place))) return *place;
    return HeldAheadOf(PlaceBehindUsers(inner, keyword, nullptr), keyword, m_target.At(upperPosition));
}

/// The counterpart of an anchor, or the last keyword of the scope that it opens.
Node* PositionSearch::EndOfCounterpart(Node* node) const
{
    if (!node->isHead) return node;
    Node* const close = node->close;
    // A closing keyword of its own belongs to the scope, what else ends it does not.
    const bool hasCloser = node->keyword->GetSyntax()->GetScopeEndSyntax() != nullptr;
    if (close == nullptr || (hasCloser && !close->isHead)) return close;
    return OutOfForeignFiles(close->previous, node);
}

/// `from` null: behind the end of the walk.
Node* PositionSearch::OutOfForeignFiles(Node* node, const Node* from) const
{
    const auto isAround = [from](const Node* include) {
        for (const Node* step = from != nullptr ? from->include : nullptr; step != nullptr; step = step->include) {
            if (step == include) return true;
        }
        return false;
    };
    Node* outermost = node;
    for (Node* step = node; step->include != nullptr && !isAround(step->include); step = step->include) {
        if (IsUserKeyword(*step->include->keyword) || IteratorAccess::File(step->place)->IsFileTagged())
            outermost = step->include;
    }
    return outermost;
}

/// Behind a target position, and behind the user's keywords that follow it. `anchor`: the source keyword that the
/// position is the counterpart of; null when it was come to by another way.
KeywordFileIterator PositionSearch::PlaceBehindUsers(Node* behind, const Node* keyword, const Node* anchor)
{
    if (behind == nullptr) return IteratorAccess::CurrentFileIter(m_work.target.GetDeckKeywords()->PhysicalEnd());
    KeywordFileIterator place = behind->place;
    const IKeywordFile* file = IteratorAccess::File(place);
    const IKeywordFile* included = KeywordFile::IncludedFileOf(behind->keyword);
    const bool isHeadOfFile = included != nullptr && anchor != nullptr && IsInclude(*anchor->keyword) &&
                              KeywordFile::IncludedFileOf(anchor->keyword) == keyword->keyword->GetFile();
    if (isHeadOfFile) {
        place = included->Begin();
        file = included;
    } else {
        const auto known = m_runEnds.find(behind->keyword);
        if (known != m_runEnds.end() && known->second.version == m_anchorsVersion) return known->second.place;
        ++place;
    }
    const KeywordFileIterator limit = file->End();
    while (place != limit && IsUserKeyword(**place))
        ++place;
    // Users' keywords that come in go ahead of that place: it stays the end of the run as long as the anchors stay.
    if (!isHeadOfFile) m_runEnds[behind->keyword] = {place, m_anchorsVersion};
    return place;
}

/// A place that has come out behind the bound goes ahead of it, and what stands ahead of its deck's END in the source
/// does so in the target.
KeywordFileIterator PositionSearch::HeldAheadOf(const KeywordFileIterator& place, const Node* keyword,
                                                const Node* bound) const
{
    const Node* position = m_target.At(place);
    const KeywordFileIterator* held = &place;
    if (DeckIndex::IsAhead(bound, position)) {
        held = &bound->place;
        position = bound;
    }
    const Node* const end = m_target.At(m_work.target.GetDeckKeywords()->End());
    return DeckIndex::IsAhead(end, position) && IsAheadOfEnd(keyword) ? end->place : *held;
}

bool PositionSearch::IsAheadOfEnd(const Node* keyword) const
{
    return DeckIndex::IsAhead(keyword, m_source.At(m_work.source.GetDeckKeywords()->End()));
}

KeywordFileIterator PositionSearch::FindDatesPosition(const KeywordIterator& keyword, const KeywordIterator& scope)
{
    m_target.Refresh();
    const std::optional<Service::Time> time = FirstDate(m_work.source, *keyword);
    if (!time) throw DeckManagerException("A DATES keyword without a date has no place in time.");
    Node* const begin = m_target.At(scope);
    Node* end = m_target.ScopeClose(begin);
    // The scope of what stands ahead of the deck's END goes as far as that.
    Node* const deckEnd = m_target.At(m_work.target.GetDeckKeywords()->End());
    if (DeckIndex::IsAhead(begin, deckEnd) && DeckIndex::IsAhead(deckEnd, end) && IsAheadOfEnd(m_source.At(keyword)))
        end = deckEnd;
    const DeckIndex::Ordered& dates = m_target.Dates();
    for (auto entry = begin != nullptr ? dates.lower_bound(begin) : dates.end(); entry != dates.end(); ++entry) {
        if (*entry != begin && !DeckIndex::IsAhead(*entry, end)) break;
        const auto [known, isNew] = m_firstDates.try_emplace((*entry)->keyword);
        if (isNew) known->second = FirstDate(m_work.target, (*entry)->keyword);
        if (known->second && *known->second > *time) return (*entry)->place;
    }
    Node* last = end != nullptr ? end->previous : m_target.Last();
    if (last == nullptr) return IteratorAccess::CurrentFileIter(m_work.target.GetDeckKeywords()->PhysicalEnd());
    KeywordFileIterator place = OutOfForeignFiles(last, begin)->place;
    return HeldAheadOf(++place, m_source.At(keyword), end);
}

// --- what the merge asks besides -----------------------------------------------------------------

KeywordIterator PositionSearch::TargetScopeEnd(const KeywordIterator& position)
{
    m_target.Refresh();
    return m_target.PositionOf(m_target.ScopeEnd(m_target.At(position)));
}

KeywordIterator PositionSearch::SourceScopeEnd(const KeywordIterator& position)
{
    return m_source.PositionOf(m_source.ScopeEnd(m_source.At(position)));
}

KeywordIterator PositionSearch::TargetPositionOf(const KeywordFileIterator& place)
{
    m_target.Refresh();
    return m_target.PositionOf(m_target.At(place));
}

Service::Time PositionSearch::SourceTimeAhead(const KeywordIterator& position)
{
    const Node* const time = m_source.TimeAhead(m_source.At(position));
    return time != nullptr ? m_work.sourceTimes.Of(time->keyword) : m_work.sourceTimes.Start();
}

Service::Time PositionSearch::TargetTimeAhead(const KeywordIterator& position)
{
    m_target.Refresh();
    const Node* const time = m_target.TimeAhead(m_target.At(position));
    return time != nullptr ? m_work.targetTimes.Of(time->keyword) : m_work.targetTimes.Start();
}

bool PositionSearch::IsAheadInTarget(const KeywordIterator& position, const KeywordIterator& other)
{
    m_target.Refresh();
    return DeckIndex::IsAhead(m_target.At(position), m_target.At(other));
}

// --- edits ---------------------------------------------------------------------------------------

void PositionSearch::OnInserted(const KeywordFileIterator& place)
{
    m_target.Inserted(place);
    // A file that comes along may hold anchors, and a user's date may be the counterpart of one.
    if (!IsAnchor(**place) && !IsInclude(**place) && !IsTimeKeyword(**place)) return;
    ++m_anchorsVersion;
    ++m_appearances;
}

void PositionSearch::OnRemoving(const KeywordFileIterator& place)
{
    // Without what it opened or closed, a scope may hold more.
    const Node* const node = m_target.At(place);
    if (node == nullptr || node->isHead || IsInclude(**place) || node->previous == nullptr ||
        node->previous->scopeAfter != node->scopeAfter)
        ++m_appearances;
    m_target.Removing(place);
    m_firstDates.erase(*place);
    m_runEnds.erase(*place);
    ++m_anchorsVersion;
}

void PositionSearch::OnTagChanged(const KeywordFileIterator& place)
{
    m_target.TagChanged(place);
    ++m_anchorsVersion;
    ++m_appearances;
}

void PositionSearch::OnRebuilt()
{
    m_source.Build();
    m_target.Build();
    m_identities.clear();
    m_walks.clear();
    m_firstDates.clear();
    m_runEnds.clear();
    ++m_anchorsVersion;
    ++m_appearances;
}

} // namespace Tarn::Fjel::Core::DeckManager
