#pragma once

#include <memory>

#include <deckmanager/KeywordFileIterator.h>

namespace Tarn::Fjel::Core::DeckManager {

class IKeyword;
class KeywordFile;

/// The walk over one keyword and everything that hangs below it: the hook by which a `KeywordIterator` steps from an
/// INCLUDE keyword into the included file and out again.
class ISingleKeywordIterator
{
public:
    virtual ~ISingleKeywordIterator() = default;

    virtual std::unique_ptr<ISingleKeywordIterator> Clone() const = 0;
    virtual bool Equals(const ISingleKeywordIterator& other) const = 0;
    /// The keyword that the walk stands on; null ahead of the first and behind the last.
    virtual const IKeyword* Current() const = 0;
    /// One step on; whether the walk still stands on a keyword.
    virtual bool Increment() = 0;
    /// One step back; whether the walk still stands on a keyword.
    virtual bool Decrement() = 0;
    virtual bool Less(const ISingleKeywordIterator& other) const = 0;
    virtual bool IsValid() const = 0;
    /// The innermost file of the walk.
    virtual KeywordFile* CurrentFile() const = 0;
    /// The place in the innermost file.
    virtual KeywordFileIterator CurrentFileIter() const = 0;
    /// Equal along the whole path from the top.
    virtual bool IsIdentical(const ISingleKeywordIterator& other) const = 0;
    /// A terminating keyword of an included file was passed.
    virtual bool AfterLogicalEnd() const = 0;
    /// Walk on past terminating keywords, here and below.
    virtual void SetIgnoreLogicalEnds(bool ignore) = 0;
};

} // namespace Tarn::Fjel::Core::DeckManager
