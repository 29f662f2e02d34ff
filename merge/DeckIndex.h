#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include <deckmanager/KeywordFileIterator.h>
#include <deckmanager/KeywordIterator.h>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
}

namespace Tarn::Fjel::Core::DeckManager {

class IDeck;
class IKeyword;
class KeywordFile;
class TimeLine;

/// The keywords of a deck in the order of the walk, with the scopes that generated heads open, in a form that answers
/// the questions of a merge without walking. A source is indexed once; the index of a target follows the merge's own
/// edits.
///
/// Positions at the end of the walk are null. Nodes live as long as their keyword stands in the deck, or until the next
/// `Build`.
class DeckIndex
{
public:
    struct Node
    {
        const IKeyword* keyword = nullptr;
        KeywordFileIterator place;
        Node* include = nullptr; ///< that brings in the file; null in the top file
        Node* previous = nullptr;
        Node* next = nullptr;
        Node* sameKeyword = nullptr; ///< the next one of a file that is included again
        std::uint64_t label = 0;     ///< grows along the walk
        /// The innermost head whose scope the keyword is in, and the one that is open behind the keyword.
        Node* scope = nullptr;
        Node* scopeAfter = nullptr;
        Node* close = nullptr; ///< of a head: what closes its scope
        bool isAnchor = false;
        bool isHead = false; ///< an anchor
        bool isNew = true;   ///< its scopes aren't known yet
        std::optional<std::string> identity;
    };

    /// Some nodes in order.
    struct Bucket
    {
        std::vector<Node*> all;
        /// Those of one file (source), or of the files of one name (target).
        std::unordered_map<const void*, std::vector<Node*>> ofFile;
    };

    /// Positions of a bucket.
    struct Segment
    {
        const Bucket* bucket;
        std::size_t begin;
        std::size_t end;
    };

    /// What is looked for: a name, and an identity where it counts.
    struct Wanted
    {
        std::string_view name;
        const std::string* identity = nullptr;
    };

    /// `times` null: the deck's time keywords aren't looked for. `filesByName`: the files of one name count as one.
    DeckIndex(const IDeck& deck, const TimeLine& times, bool filesByName);
    ~DeckIndex();
    DeckIndex(const DeckIndex&) = delete;
    DeckIndex& operator=(const DeckIndex&) = delete;

    void Build();
    /// Builds anew where an edit was more than the index could follow. To be called ahead of questions.
    void Refresh();
    Node* At(const KeywordIterator& position) const;
    /// The first node of the walk at or behind a place of a file.
    Node* At(KeywordFileIterator place) const;
    KeywordIterator PositionOf(const Node* node) const;
    Node* First() const { return m_first; }
    Node* Last() const { return m_last; }

    /// Null stands behind all.
    static bool IsAhead(const Node* node, const Node* other)
    {
        return node != nullptr && (other == nullptr || node->label < other->label);
    }

    /// `MergeScopeEnd` and `MergeScopeClose`.
    Node* ScopeEnd(Node* node) const;
    Node* ScopeClose(Node* node) const;
    /// Behind a node, and behind what it includes.
    Node* BehindContent(const Node* node) const;

    /// The anchors of that kind at the top level of a range, in order.
    std::vector<Segment> Find(const Node* begin, const Node* end, const Wanted& wanted);
    /// The first time keyword at the top level of a range that leads to a moment, to a millisecond.
    Node* FindTime(const Node* begin, const Node* end, std::int64_t moment);
    /// The nearest time keyword of the section ahead of a node.
    Node* TimeAhead(const Node* node) const;
    const void* FileKey(const Node* node) const;
    /// Of the files of a name; null where none was asked for.
    const void* FileKeyOf(const std::string& leaf) const;

    struct ByLabel
    {
        bool operator()(const Node* left, const Node* right) const { return left->label < right->label; }
    };
    using Ordered = std::set<Node*, ByLabel>;
    const Ordered& WithRules() const { return m_withRules; }
    const Ordered& Includes() const { return m_includes; }
    const Ordered& Dates() const { return m_dates; }

    /// Equal for data of one identity.
    static std::string IdentityOf(const Keywords::IKeywordData* data);
    /// Of a keyword of the deck; "unreadable" is equal to nothing.
    const std::string& IdentityOf(Node* node) const;

    // Edits. Each is told when it has been made, a removal ahead of it.

    void Inserted(const KeywordFileIterator& place);
    void Removing(const KeywordFileIterator& place);
    void TagChanged(const KeywordFileIterator& place);

private:
    struct NameBucket
    {
        Bucket all;
        bool hasIdentities = false;
        std::unordered_map<std::string, Bucket> byIdentity;
    };
    struct Members
    {
        std::unordered_map<std::string_view, NameBucket> byName;
        std::multimap<std::int64_t, Node*> byTime;
    };

    class FilesAround;

    void LinkContent(Node* include, const KeywordFile& included);
    Node* Make(const IKeyword& keyword, const KeywordFileIterator& place, Node* include);
    void Link(Node* node, Node* next);
    void Unlink(Node* node);
    void Label(Node* node);
    void Spread(Node* node);
    void Register(Node* node);
    void Unregister(Node* node);
    void FindScopes(Node* from);
    struct Open
    {
        std::vector<Node*> heads;        ///< the innermost at the back
        std::unordered_set<Node*> moved; ///< of these, those that are in another scope than they were
    };
    bool FindScopeOf(Node* node, Open& open);
    Members& MembersOf(Node* scope);
    void AddMember(Members& members, Node* node);
    void DropMember(Node* node);
    void AddTo(Bucket& bucket, Node* node);
    static void DropFrom(std::vector<Node*>& nodes, Node* node);
    void DropFrom(Bucket& bucket, Node* node);
    Node* NextIn(const Ordered& nodes, Node* node) const;
    std::vector<const Members*> ScopesOfRange(const Node* begin, const Node* end);

    const IDeck& m_deck;
    const TimeLine& m_times;
    bool m_filesByName;
    bool m_hasRepeatedFiles = false;
    bool m_isStale = false;
    std::unordered_map<const IKeyword*, std::unique_ptr<Node>> m_nodes;
    std::vector<std::unique_ptr<Node>> m_repeated;
    Node* m_first = nullptr;
    Node* m_last = nullptr;
    std::unordered_map<const Node*, std::unique_ptr<Members>> m_members; ///< of the scopes that were asked for
    std::unordered_map<const KeywordFile*, Node*> m_includeOf;           ///< the first INCLUDE that brings in a file
    mutable std::unordered_map<const KeywordFile*, const std::string*> m_leaves;
    mutable std::unordered_set<std::string> m_leafNames;
    Ordered m_withRules;
    Ordered m_includes;
    Ordered m_dates;
    Ordered m_timed;
    Ordered m_sections;
    Ordered m_timeEnds; ///< what ends the stretch behind a TSTEP
};

} // namespace Tarn::Fjel::Core::DeckManager
