#pragma once

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>

#include "merge/TimeLine.h"
#include <deckmanager/KeywordFileIterator.h>
#include <deckmanager/KeywordIterator.h>

namespace Tarn::Fjel::Core::DeckManager {

class IDeck;
class IKeyword;

/// Source positions from a section keyword down through the nested heads to the scope that is walked.
using ScopeStack = std::deque<KeywordIterator>;

/// From the name of an included file in the source to its name in the target.
using IncludeNames = std::map<std::string, std::string>;

/// Target positions. What finds nothing gives the end.
struct MergeRange
{
    KeywordIterator begin;
    KeywordIterator end;
};

/// What the search for positions has to know of a merge.
struct MergeWork
{
    const IDeck& source;
    const IDeck& target;
    const IncludeNames& includeNames;
    TimeLine sourceTimes;
    TimeLine targetTimes;
    /// The scopes in force at each generated INCLUDE of the source that was walked.
    std::unordered_map<const IKeyword*, ScopeStack> includeScopes;
    /// The place of a scope in the target, which is made where it is missing, and whether it was there.
    std::function<std::pair<KeywordIterator, bool>(const ScopeStack&)> resolveScope;
};

/// Answers the two questions of a merge: which keyword of the target corresponds to one of the source, and where in the
/// target a user's keyword goes.
class IPositionSearch
{
public:
    virtual ~IPositionSearch() = default;

    /// The target keyword that corresponds to a source keyword, which `head` (null: none) opens the scope of: a time
    /// keyword by its moment, any other by name, identity and rank.
    virtual KeywordIterator FindCounterpart(const KeywordIterator& keyword, const KeywordIterator* head,
                                            const MergeRange& range) = 0;
    /// Where a DATES keyword goes that opens a scope which the target scope lacks. Throws `DeckManagerException` when
    /// it has no date.
    virtual KeywordFileIterator FindDatesPosition(const KeywordIterator& keyword, const KeywordIterator& scope) = 0;
    /// Where a keyword of the scope of `head` in the source goes in a scope of the target. Throws
    /// `DeckManagerException` when the keyword isn't met in its scope, or when ordering takes too many tests.
    virtual KeywordFileIterator FindUserKeywordPosition(const KeywordIterator& scope, const KeywordIterator& keyword,
                                                        const KeywordIterator& head) = 0;
    /// `MergeScopeEnd` in the target.
    virtual KeywordIterator TargetScopeEnd(const KeywordIterator& position) = 0;
    /// `MergeScopeEnd` in the source.
    virtual KeywordIterator SourceScopeEnd(const KeywordIterator& position) = 0;
    /// The place in the deck of a keyword of the target.
    virtual KeywordIterator TargetPositionOf(const KeywordFileIterator& place) = 0;
    /// Where time stands ahead of a keyword of the source, and of the target.
    virtual Service::Time SourceTimeAhead(const KeywordIterator& position) = 0;
    virtual Service::Time TargetTimeAhead(const KeywordIterator& position) = 0;
    /// `IsAhead` in the target.
    virtual bool IsAheadInTarget(const KeywordIterator& position, const KeywordIterator& other) = 0;

    // The merge tells what it changes in the target.

    virtual void OnInserted(const KeywordFileIterator& place) = 0;
    virtual void OnRemoving(const KeywordFileIterator& place) = 0;
    /// The keyword's tag has changed, and with it whether it is an anchor.
    virtual void OnTagChanged(const KeywordFileIterator& place) = 0;
    /// Anything may have changed.
    virtual void OnRebuilt() = 0;
};

} // namespace Tarn::Fjel::Core::DeckManager
