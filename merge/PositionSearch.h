#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "merge/DeckIndex.h"
#include "merge/IPositionSearch.h"

namespace Tarn::Fjel::Core::DeckManager {

/// The search through indexes of both decks. Its rules are those of a search by walking, whose time would grow with the
/// square of the decks.
class PositionSearch : public IPositionSearch
{
public:
    explicit PositionSearch(MergeWork& work);
    ~PositionSearch() override;

    KeywordIterator FindCounterpart(const KeywordIterator& keyword, const KeywordIterator* head,
                                    const MergeRange& range) override;
    KeywordFileIterator FindDatesPosition(const KeywordIterator& keyword, const KeywordIterator& scope) override;
    KeywordFileIterator FindUserKeywordPosition(const KeywordIterator& scope, const KeywordIterator& keyword,
                                                const KeywordIterator& head) override;
    KeywordIterator TargetScopeEnd(const KeywordIterator& position) override;
    KeywordIterator SourceScopeEnd(const KeywordIterator& position) override;
    KeywordIterator TargetPositionOf(const KeywordFileIterator& place) override;
    Service::Time SourceTimeAhead(const KeywordIterator& position) override;
    Service::Time TargetTimeAhead(const KeywordIterator& position) override;
    bool IsAheadInTarget(const KeywordIterator& position, const KeywordIterator& other) override;
    void OnInserted(const KeywordFileIterator& place) override;
    void OnRemoving(const KeywordFileIterator& place) override;
    void OnTagChanged(const KeywordFileIterator& place) override;
    void OnRebuilt() override;

private:
    using Node = DeckIndex::Node;

    /// What is looked for as the counterpart of a source keyword.
    struct Identity
    {
        bool isValid = true;   ///< in its section
        bool isKnown = false;  ///< else the keyword has no counterpart
        bool hasValue = false; ///< else the name alone counts
        std::string source;
        std::string target;
    };

    /// The anchors ahead of a keyword, the nearest first: each stack shares what is below with others.
    struct Anchor
    {
        Node* node;
        int level; ///< how deep below the head's file it stands
        Anchor* below;
        Anchor* bottom;
        // That no keyword of that scope is its counterpart was found when the target had that version.
        const IKeyword* absentIn = nullptr;
        unsigned long long absentSince = 0;
        Anchor* belowAbsent = nullptr;
    };

    struct Stand
    {
        Anchor* top = nullptr;
        bool headInFile = true;
    };

    /// One walk over the top level of a source scope, with the stack at each keyword that may be placed.
    struct HeadWalk
    {
        std::unordered_map<const Node*, Stand> stands;
        Stand last;
        bool endsWithout = false; ///< what it has not met is not there
        std::deque<Anchor> anchors;
    };

    struct RunEnd
    {
        KeywordFileIterator place;
        unsigned long long version;
    };

    Node* FindCounterpart(Node* keyword, Node* head, Node* begin, Node* end);
    Node* FindByTime(const Node* keyword, Node* begin, Node* end);
    Node* FindByOccurrence(Node* keyword, Node* head, Node* begin, Node* end);
    Node* FindByIdentity(Node* keyword, Node* begin, Node* end);
    const Identity& IdentityOf(Node* keyword);
    Identity ReadIdentity(Node* keyword) const;
    DeckIndex::Wanted Wanted(const Node* keyword, const Identity& identity, bool inTarget) const;
    Node* Choose(const std::vector<DeckIndex::Segment>& found, const void* file, std::size_t rank,
                 std::size_t rankInFile) const;
    Node* ChooseByWalking(const std::vector<DeckIndex::Segment>& found, const void* file, std::size_t rank,
                          std::size_t rankInFile) const;
    const HeadWalk& WalkOf(Node* head);
    void Walk(Node* head, HeadWalk& walk);
    const Stand& StandOf(Node* keyword, Node* head);
    void NoteAbsent(Anchor& anchor, const Node* scope);
    Anchor* BelowAbsent(Anchor* anchor, const Node* scope) const;
    Node* LowerBound(const Node* keyword, Node* begin, Node* end) const;
    Node* UpperBound(const Node* keyword, Node* begin, Node* end) const;
    Node* EndOfCounterpart(Node* node) const;
    Node* WithinScope(Node* node, Node* scope) const;
    Node* OutOfForeignFiles(Node* node, const Node* from) const;
    KeywordFileIterator PlaceBehindUsers(Node* behind, const Node* keyword, const Node* anchor);
    KeywordFileIterator HeldAheadOf(const KeywordFileIterator& place, const Node* keyword, const Node* bound) const;
    bool IsAheadOfEnd(const Node* keyword) const;
    KeywordFileIterator Place(Node* scope, Node* keyword, Node* head);
    KeywordFileIterator PlaceOfFile(Node* scope, Node* first, Node* keyword, Node* upper);

    MergeWork& m_work;
    DeckIndex m_source;
    DeckIndex m_target;
    std::unordered_map<const Node*, Identity> m_identities;             ///< of the source
    std::unordered_map<const Node*, std::unique_ptr<HeadWalk>> m_walks; ///< of the source
    std::unordered_map<const IKeyword*, std::optional<Service::Time>> m_firstDates;
    std::unordered_map<const IKeyword*, RunEnd> m_runEnds; ///< where users' keywords behind a target keyword end
    unsigned long long m_anchorsVersion = 0;               ///< counts anchors that come and go
    unsigned long long m_appearances = 0;                  ///< counts what can bring a counterpart into being
};

} // namespace Tarn::Fjel::Core::DeckManager
