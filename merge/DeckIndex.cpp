#include "merge/DeckIndex.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "deck/Anchors.h"
#include "files/IteratorAccess.h"
#include "files/IteratorPath.h"
#include "files/KeywordFile.h"
#include "merge/MergeTerms.h"
#include "merge/TimeLine.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/DeckPositions.h>
#include <deckmanager/IDeck.h>
#include <deckmanager/IDeckKeywords.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordIdentity.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/service/LogEnabler.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::KeywordKind;
using Node = DeckIndex::Node;

namespace {

constexpr std::uint64_t usualGap = std::uint64_t(1) << 32;
constexpr const char* unreadable = "\x01unreadable";

bool Closes(const IKeyword& keyword, const IKeyword& head)
{
    if (keyword.GetSyntax()->GetKind() == KeywordKind::Section) return true;
    const auto& closers = head.GetSyntax()->GetScopeEndSyntaxes();
    const std::string& name = keyword.GetSyntax()->GetName();
    return std::any_of(closers.begin(), closers.end(),
                       [&](const Keywords::IKeywordSyntax* closer) { return closer->GetName() == name; });
}

bool HasOwnCloser(const IKeyword& head)
{
    return head.GetSyntax()->GetScopeEndSyntax() != nullptr;
}

} // namespace

DeckIndex::DeckIndex(const IDeck& deck, const TimeLine& times, bool filesByName)
    : m_deck(deck), m_times(times), m_filesByName(filesByName)
{
}

DeckIndex::~DeckIndex() = default;

// --- the walk ------------------------------------------------------------------------------------

/// The INCLUDE keywords above a walk, each with the file that it brings in.
class DeckIndex::FilesAround
{
public:
    /// A step leads into the file of the INCLUDE that it was made from, or out of one file or more.
    void GoTo(const KeywordFile* file, Node* last)
    {
        if (!m_levels.empty() && m_levels.back().file == file) return;
        if (m_levels.empty() || (last != nullptr && KeywordFile::IncludedFileOf(last->keyword) == file)) {
            m_levels.push_back({file, last});
            return;
        }
        while (m_levels.size() > 1 && m_levels.back().file != file)
            m_levels.pop_back();
    }
    Node* Include() const { return m_levels.back().include; }

private:
    struct Level
    {
        const KeywordFile* file;
        Node* include;
    };
    std::vector<Level> m_levels;
};

void DeckIndex::Build()
{
    m_members.clear();
    for (Ordered* nodes : {&m_withRules, &m_includes, &m_dates, &m_timed, &m_sections, &m_timeEnds})
        nodes->clear();
    m_nodes.clear();
    m_repeated.clear();
    m_includeOf.clear();
    m_leaves.clear();
    m_hasRepeatedFiles = false;
    m_first = m_last = nullptr;
    FilesAround around;
    for (KeywordIterator walk = m_deck.GetDeckKeywords()->Begin(); *walk != nullptr; ++walk) {
        around.GoTo(FileOf(walk), m_last);
        Node* node = Make(**walk, IteratorAccess::CurrentFileIter(walk), around.Include());
        node->previous = m_last;
        node->label = m_last != nullptr ? m_last->label + usualGap : usualGap;
        (m_last != nullptr ? m_last->next : m_first) = node;
        m_last = node;
        Register(node);
    }
    FindScopes(m_first);
}

Node* DeckIndex::Make(const IKeyword& keyword, const KeywordFileIterator& place, Node* include)
{
    auto made = std::make_unique<Node>();
    Node* node = made.get();
    node->keyword = &keyword;
    node->place = place;
    node->include = include;
    node->isAnchor = IsAnchor(keyword);
    node->isHead = node->isAnchor && keyword.GetSyntax()->IsScopeStart();
    const auto [entry, isFirst] = m_nodes.try_emplace(&keyword, nullptr);
    if (isFirst) {
        entry->second = std::move(made);
    } else {
        m_hasRepeatedFiles = true;
        Node* last = entry->second.get();
        while (last->sameKeyword != nullptr)
            last = last->sameKeyword;
        last->sameKeyword = node;
        m_repeated.push_back(std::move(made));
    }
    return node;
}

void DeckIndex::Register(Node* node)
{
    const IKeyword& keyword = *node->keyword;
    if (keyword.GetSyntax()->HasOrderingRules()) m_withRules.insert(node);
    if (keyword.GetName() == "DATES") m_dates.insert(node);
    if (m_times.Holds(&keyword)) m_timed.insert(node);
    if (IsSectionKeyword(keyword)) m_sections.insert(node);
    if (IsInclude(keyword)) {
        m_includes.insert(node);
        if (const KeywordFile* file = KeywordFile::IncludedFileOf(&keyword)) m_includeOf.try_emplace(file, node);
    }
    const bool endsTime =
        IsTimeKeyword(keyword) || IsSectionKeyword(keyword) || keyword.GetSyntax()->GetKind() == KeywordKind::EndSkip;
    if (node->isAnchor && endsTime) m_timeEnds.insert(node);
}

void DeckIndex::Unregister(Node* node)
{
    for (Ordered* nodes : {&m_withRules, &m_includes, &m_dates, &m_timed, &m_sections, &m_timeEnds})
        nodes->erase(node);
}

Node* DeckIndex::At(const KeywordIterator& position) const
{
    const IKeyword* keyword = *position;
    const auto found = m_nodes.find(keyword);
    if (keyword == nullptr || found == m_nodes.end()) return nullptr;
    Node* node = found->second.get();
    if (node->sameKeyword == nullptr) return node;
    const IteratorPath::Places path = IteratorPath::Of(position);
    for (Node* candidate = node; candidate != nullptr; candidate = candidate->sameKeyword) {
        std::size_t level = path.size();
        const Node* step = candidate;
        while (step != nullptr && level > 0 && path[level - 1] == step->place) {
            step = step->include;
            --level;
        }
        if (step == nullptr && level == 0) return candidate;
    }
    return node;
}

Node* DeckIndex::At(KeywordFileIterator place) const
{
    for (const KeywordFile* file = IteratorAccess::File(place); file != nullptr;) {
        // A walk ends ahead of an ENDINC.
        const auto found = place != file->End() ? m_nodes.find(*place) : m_nodes.end();
        if (found != m_nodes.end()) return found->second.get();
        const auto include = m_includeOf.find(file);
        if (include == m_includeOf.end()) break;
        place = include->second->place;
        file = IteratorAccess::File(place);
        ++place;
    }
    return nullptr;
}

KeywordIterator DeckIndex::PositionOf(const Node* node) const
{
    if (node == nullptr) return m_deck.GetDeckKeywords()->PhysicalEnd();
    IteratorPath::Places path;
    for (const Node* step = node; step != nullptr; step = step->include)
        path.push_back(step->place);
    std::reverse(path.begin(), path.end());
    return IteratorPath::ToPosition(path, false);
}

Node* DeckIndex::BehindContent(const Node* node) const
{
    const auto isWithin = [node](const Node* other) {
        while (other != nullptr && other != node)
            other = other->include;
        return other == node;
    };
    Node* behind = node->next;
    while (behind != nullptr && isWithin(behind->include))
        behind = behind->next;
    return behind;
}

// --- labels --------------------------------------------------------------------------------------

void DeckIndex::Link(Node* node, Node* next)
{
    node->next = next;
    node->previous = next != nullptr ? next->previous : m_last;
    (node->previous != nullptr ? node->previous->next : m_first) = node;
    (next != nullptr ? next->previous : m_last) = node;
    Label(node);
}

void DeckIndex::Unlink(Node* node)
{
    (node->previous != nullptr ? node->previous->next : m_first) = node->next;
    (node->next != nullptr ? node->next->previous : m_last) = node->previous;
}

void DeckIndex::Label(Node* node)
{
    const std::uint64_t before = node->previous != nullptr ? node->previous->label : 0;
    if (node->next == nullptr) {
        node->label = before + usualGap;
        return;
    }
    node->label = before + (node->next->label - before) / 2;
    if (node->label == before || node->label == node->next->label) Spread(node);
}

/// Gives new labels to as many neighbours as it takes to have room between them again.
void DeckIndex::Spread(Node* node)
{
    constexpr std::uint64_t enoughRoom = 1 << 16;
    Node* begin = node;
    Node* last = node;
    std::uint64_t count = 1;
    for (std::uint64_t reach = 32;; reach *= 2) {
        for (std::uint64_t i = 0; i < reach && begin->previous != nullptr; ++i, ++count)
            begin = begin->previous;
        for (std::uint64_t i = 0; i < reach && last->next != nullptr; ++i, ++count)
            last = last->next;
        const std::uint64_t low = begin->previous != nullptr ? begin->previous->label : 0;
        const std::uint64_t high = last->next != nullptr ? last->next->label : low + (count + 1) * usualGap;
        const std::uint64_t gap = (high - low) / (count + 1);
        if (gap < enoughRoom) continue;
        std::uint64_t label = low;
        for (Node* step = begin;; step = step->next) {
            step->label = label += gap;
            if (step == last) return;
        }
    }
}

// --- scopes --------------------------------------------------------------------------------------

/// Finds the scopes from a node on, as far as they are others than they were.
void DeckIndex::FindScopes(Node* from)
{
    Open open;
    const Node* previous = from != nullptr ? from->previous : m_last;
    for (Node* head = previous != nullptr ? previous->scopeAfter : nullptr; head != nullptr; head = head->scope)
        open.heads.push_back(head);
    std::reverse(open.heads.begin(), open.heads.end());
    for (Node* node = from; node != nullptr; node = node->next) {
        if (!FindScopeOf(node, open)) return;
    }
    for (Node* head : open.heads)
        head->close = nullptr;
}

/// False when everything behind the node is as it was.
bool DeckIndex::FindScopeOf(Node* node, Open& open)
{
    Node* innermostClosed = nullptr;
    if (node->isAnchor) {
        while (!open.heads.empty() && Closes(*node->keyword, *open.heads.back()->keyword)) {
            Node* head = open.heads.back();
            open.heads.pop_back();
            open.moved.erase(head);
            head->close = node;
            const bool isWithin = HasOwnCloser(*head->keyword) && !node->keyword->GetSyntax()->IsScopeStart();
            if (isWithin && innermostClosed == nullptr) innermostClosed = head;
            const std::string& name = node->keyword->GetName();
            const bool concernsOuter =
                node->keyword->GetSyntax()->IsScopeStart() || (head->keyword->GetName() == "BOX" && name == "ENDFIN") ||
                (head->keyword->GetName() == "DATES" && node->keyword->GetSyntax()->GetKind() == KeywordKind::EndSkip);
            if (!concernsOuter) break;
        }
    }
    Node* scope = innermostClosed != nullptr ? innermostClosed : open.heads.empty() ? nullptr : open.heads.back();
    if (node->isNew || scope != node->scope) {
        if (!node->isNew) DropMember(node);
        if (node->isHead) open.moved.insert(node);
        node->scope = scope;
        const auto members = m_members.find(scope);
        if (members != m_members.end()) AddMember(*members->second, node);
    }
    if (node->isHead) open.heads.push_back(node);
    Node* after = open.heads.empty() ? nullptr : open.heads.back();
    // A head that has come into another scope leaves that one behind when it is closed.
    const bool isSettled = !node->isNew && after == node->scopeAfter && open.moved.empty();
    node->scopeAfter = after;
    node->isNew = false;
    return !isSettled;
}

Node* DeckIndex::NextIn(const Ordered& nodes, Node* node) const
{
    const auto found = nodes.upper_bound(node);
    return found != nodes.end() ? *found : nullptr;
}

Node* DeckIndex::ScopeEnd(Node* node) const
{
    if (node == nullptr) return nullptr;
    if (node->isHead) {
        const bool isWithin = node->close != nullptr && HasOwnCloser(*node->keyword) &&
                              !node->close->keyword->GetSyntax()->IsScopeStart();
        return isWithin ? node->close->next : node->close;
    }
    if (IsTimeKeyword(*node->keyword) && !node->keyword->GetSyntax()->IsScopeStart()) return NextIn(m_timeEnds, node);
    return At(MergeScopeEnd(PositionOf(node), m_deck));
}

Node* DeckIndex::ScopeClose(Node* node) const
{
    if (node == nullptr) return nullptr;
    return node->isHead ? node->close : At(MergeScopeClose(PositionOf(node), m_deck));
}

// --- members of scopes ---------------------------------------------------------------------------

/// What stands at the top level of a scope. It is gathered when it is first asked for.
DeckIndex::Members& DeckIndex::MembersOf(Node* scope)
{
    std::unique_ptr<Members>& members = m_members[scope];
    if (members) return *members;
    members = std::make_unique<Members>();
    Node* const end = scope != nullptr ? ScopeEnd(scope) : nullptr;
    Node* node = scope != nullptr ? scope->next : m_first;
    while (IsAhead(node, end)) {
        AddMember(*members, node);
        node = node->isHead ? ScopeEnd(node) : node->next;
    }
    return *members;
}

void DeckIndex::AddMember(Members& members, Node* node)
{
    if (m_times.Holds(node->keyword)) {
        const Service::Time time = m_times.Of(node->keyword);
        if (time.IsDef()) members.byTime.emplace(time.ToMilliseconds(), node);
    }
    if (!node->isAnchor) return;
    NameBucket& ofName = members.byName[node->keyword->GetName()];
    AddTo(ofName.all, node);
    if (ofName.hasIdentities) AddTo(ofName.byIdentity[IdentityOf(node)], node);
}

void DeckIndex::DropMember(Node* node)
{
    const auto found = m_members.find(node->scope);
    if (found == m_members.end()) return;
    Members& members = *found->second;
    for (auto entry = members.byTime.begin(); IsTimeKeyword(*node->keyword) && entry != members.byTime.end(); ++entry) {
        if (entry->second != node) continue;
        members.byTime.erase(entry);
        break;
    }
    const auto ofName = members.byName.find(node->keyword->GetName());
    if (ofName == members.byName.end()) return;
    DropFrom(ofName->second.all, node);
    if (!ofName->second.hasIdentities) return;
    const auto ofIdentity = ofName->second.byIdentity.find(IdentityOf(node));
    if (ofIdentity != ofName->second.byIdentity.end()) DropFrom(ofIdentity->second, node);
}

void DeckIndex::AddTo(Bucket& bucket, Node* node)
{
    const auto add = [node](std::vector<Node*>& nodes) {
        if (nodes.empty() || nodes.back()->label < node->label)
            nodes.push_back(node);
        else
            nodes.insert(std::lower_bound(nodes.begin(), nodes.end(), node, ByLabel()), node);
    };
    add(bucket.all);
    add(bucket.ofFile[FileKey(node)]);
}

void DeckIndex::DropFrom(std::vector<Node*>& nodes, Node* node)
{
    const auto found = std::lower_bound(nodes.begin(), nodes.end(), node, ByLabel());
    if (found != nodes.end() && *found == node) nodes.erase(found);
}

void DeckIndex::DropFrom(Bucket& bucket, Node* node)
{
    DropFrom(bucket.all, node);
    const auto ofFile = bucket.ofFile.find(FileKey(node));
    if (ofFile != bucket.ofFile.end()) DropFrom(ofFile->second, node);
}

const void* DeckIndex::FileKey(const Node* node) const
{
    const KeywordFile* file = IteratorAccess::File(node->place);
    if (!m_filesByName) return file;
    const std::string*& leaf = m_leaves[file];
    if (leaf == nullptr) leaf = &*m_leafNames.insert(LeafName(*file)).first;
    return leaf;
}

const void* DeckIndex::FileKeyOf(const std::string& leaf) const
{
    const auto found = m_leafNames.find(leaf);
    return found != m_leafNames.end() ? &*found : nullptr;
}

/// A walk over the top level of a range that begins deep inside scopes comes through each of them.
std::vector<const DeckIndex::Members*> DeckIndex::ScopesOfRange(const Node* begin, const Node* end)
{
    std::vector<const Members*> scopes;
    if (!IsAhead(begin, end)) return scopes;
    for (Node* scope = begin->scope;; scope = scope->scope) {
        scopes.push_back(&MembersOf(scope));
        if (scope == nullptr) break;
        const Node* scopeEnd = ScopeEnd(scope);
        if (scopeEnd == nullptr || (end != nullptr && scopeEnd->label >= end->label)) break;
    }
    return scopes;
}

std::vector<DeckIndex::Segment> DeckIndex::Find(const Node* begin, const Node* end, const Wanted& wanted)
{
    std::vector<Segment> segments;
    const auto isAheadOf = [](const Node* node, std::uint64_t label) { return node->label < label; };
    for (const Members* constMembers : ScopesOfRange(begin, end)) {
        auto& members = const_cast<Members&>(*constMembers);
        const auto ofName = members.byName.find(wanted.name);
        if (ofName == members.byName.end()) continue;
        NameBucket& names = ofName->second;
        const Bucket* bucket = &names.all;
        if (wanted.identity != nullptr) {
            if (!names.hasIdentities) {
                for (Node* node : names.all.all)
                    AddTo(names.byIdentity[IdentityOf(node)], node);
                names.hasIdentities = true;
            }
            const auto ofIdentity = names.byIdentity.find(*wanted.identity);
            if (ofIdentity == names.byIdentity.end()) continue;
            bucket = &ofIdentity->second;
        }
        const std::vector<Node*>& nodes = bucket->all;
        const auto first = std::lower_bound(nodes.begin(), nodes.end(), begin->label, isAheadOf);
        const auto last = end != nullptr ? std::lower_bound(first, nodes.end(), end->label, isAheadOf) : nodes.end();
        if (first != last) {
            segments.push_back({bucket, static_cast<std::size_t>(first - nodes.begin()),
                                static_cast<std::size_t>(last - nodes.begin())});
        }
    }
    return segments;
}

Node* DeckIndex::FindTime(const Node* begin, const Node* end, std::int64_t moment)
{
    Node* found = nullptr;
    for (const Members* members : ScopesOfRange(begin, end)) {
        const auto last = members->byTime.upper_bound(moment + Service::MILLISECOND);
        for (auto entry = members->byTime.lower_bound(moment - Service::MILLISECOND); entry != last; ++entry) {
            Node* node = entry->second;
            if (node->label >= begin->label && IsAhead(node, end) && IsAhead(node, found)) found = node;
        }
    }
    return found;
}

Node* DeckIndex::TimeAhead(const Node* node) const
{
    const auto ahead = [node](const Ordered& nodes) -> Node* {
        const auto found = node != nullptr ? nodes.lower_bound(const_cast<Node*>(node)) : nodes.end();
        return found != nodes.begin() ? *std::prev(found) : nullptr;
    };
    Node* time = ahead(m_timed);
    const Node* section = ahead(m_sections);
    return time != nullptr && (section == nullptr || section->label < time->label) ? time : nullptr;
}

std::string DeckIndex::IdentityOf(const Keywords::IKeywordData* data)
{
    return Keywords::KeywordIdentity(data).ToKey();
}

const std::string& DeckIndex::IdentityOf(Node* node) const
{
    if (!node->identity) {
        const Service::LogEnabler quiet(false);
        try {
            node->identity = IdentityOf(m_deck.GetDeckKeywords()->GetKeywordData(node->keyword));
        } catch (const DeckManagerException&) {
            node->identity = unreadable;
        }
    }
    return *node->identity;
}

// --- edits ---------------------------------------------------------------------------------------

void DeckIndex::Refresh()
{
    if (!m_isStale) return;
    m_isStale = false;
    Build();
}

void DeckIndex::Inserted(const KeywordFileIterator& place)
{
    const IKeyword& keyword = **place;
    const KeywordFile* included = IsInclude(keyword) ? KeywordFile::IncludedFileOf(&keyword) : nullptr;
    if (m_isStale || m_hasRepeatedFiles || (included != nullptr && m_includeOf.count(included) > 0)) {
        m_isStale = true;
        return;
    }
    const auto outer = m_includeOf.find(IteratorAccess::File(place));
    KeywordFileIterator behind = place;
    Node* next = At(++behind);
    Node* node = Make(keyword, place, outer != m_includeOf.end() ? outer->second : nullptr);
    Link(node, next);
    Register(node);
    if (included != nullptr) LinkContent(node, *included);
    if (!m_isStale) FindScopes(node);
}

/// Links what an INCLUDE that was put in brings along.
void DeckIndex::LinkContent(Node* include, const KeywordFile& included)
{
    Node* const next = include->next;
    KeywordIterator walk = PositionOf(include);
    FilesAround around;
    Node* last = include;
    for (++walk; *walk != nullptr && IsWithin(walk, included); ++walk) {
        around.GoTo(FileOf(walk), last);
        if (m_nodes.count(*walk) > 0) {
            m_isStale = true;
            return;
        }
        last = Make(**walk, IteratorAccess::CurrentFileIter(walk), around.Include());
        Link(last, next);
        Register(last);
    }
}

void DeckIndex::Removing(const KeywordFileIterator& place)
{
    const auto found = m_nodes.find(*place);
    if (m_isStale || found == m_nodes.end()) return;
    Node* node = found->second.get();
    // What an INCLUDE brings in goes with it.
    if (m_hasRepeatedFiles || IsInclude(*node->keyword)) {
        m_isStale = true;
        return;
    }
    DropMember(node);
    Unregister(node);
    Node* next = node->next;
    Unlink(node);
    // What a head held is found to be in another scope now.
    FindScopes(next);
    m_members.erase(node);
    m_nodes.erase(found);
}

void DeckIndex::TagChanged(const KeywordFileIterator& place)
{
    const auto found = m_nodes.find(*place);
    if (m_isStale || found == m_nodes.end()) return;
    if (m_hasRepeatedFiles) {
        m_isStale = true;
        return;
    }
    Node* node = found->second.get();
    DropMember(node);
    Unregister(node);
    node->isAnchor = IsAnchor(*node->keyword);
    node->isHead = node->isAnchor && node->keyword->GetSyntax()->IsScopeStart();
    node->isNew = true;
    Register(node);
    FindScopes(node);
    if (!node->isHead) m_members.erase(node);
}

} // namespace Tarn::Fjel::Core::DeckManager
