#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "merge/IPositionSearch.h"

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
class IKeywordSyntax;
} // namespace Tarn::Fjel::Core::Keywords

namespace MergeTests {

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;

/// The search for places by walking, rule by rule.
class LiteralPositionSearch : public IPositionSearch
{
public:
    explicit LiteralPositionSearch(MergeWork& work);

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
    void OnInserted(const KeywordFileIterator&) override {}
    void OnRemoving(const KeywordFileIterator&) override {}
    void OnTagChanged(const KeywordFileIterator&) override {}
    void OnRebuilt() override {}

private:
    /// What is looked for: a name, and an identity where the keyword has one.
    struct Identity
    {
        bool isKnown = false; ///< else the keyword has no counterpart
        Keywords::IKeywordData* source = nullptr;
        Keywords::IKeywordData* target = nullptr;
        std::unique_ptr<Keywords::IKeywordData> mapped;
    };

    /// An anchor ahead of the keyword that is placed, and how deep below the head's file it stands.
    struct Anchor
    {
        KeywordIterator position;
        int level;
    };

    struct Anchors
    {
        std::vector<Anchor> found;
        bool headInFile = true;
    };

    KeywordIterator FindByTime(const KeywordIterator& keyword, const MergeRange& range) const;
    KeywordIterator FindByOccurrence(const KeywordIterator& keyword, const KeywordIterator* head,
                                     const MergeRange& range) const;
    KeywordIterator FindByIdentity(const KeywordIterator& keyword, const MergeRange& range) const;
    Identity IdentityOf(const KeywordIterator& keyword) const;
    Anchors CollectAnchors(const KeywordIterator& keyword, const KeywordIterator& head) const;
    KeywordIterator LowerBound(const KeywordIterator& keyword, const KeywordIterator& begin,
                               const KeywordIterator& end) const;
    KeywordIterator UpperBound(const KeywordIterator& keyword, const KeywordIterator& begin,
                               const KeywordIterator& end) const;
    KeywordIterator EndOfCounterpart(KeywordIterator position) const;
    KeywordIterator WithinScope(KeywordIterator position, const KeywordIterator& scope) const;
    KeywordFileIterator PlaceBehindUsers(const KeywordIterator& position, const KeywordIterator& keyword,
                                         const KeywordIterator* anchor) const;
    bool BelongsAheadOfEnd(const KeywordIterator& keyword) const;
    KeywordFileIterator HeldAheadOf(KeywordFileIterator place, const KeywordIterator& keyword,
                                    const KeywordIterator& bound) const;

    MergeWork& m_work;
    const IDeck& m_source;
    const IDeck& m_target;
};

} // namespace MergeTests
