#pragma once

#include <string>

#include <tarn/keywords/IKeywordMD.h>
#include <tarn/keywords/IListEndDetector.h>
#include <tarn/keywords/Termination.h>

namespace Tarn::Fjel::Core::Keywords {

/// Metadata of a list: any number of elements of one kind.
class IKeywordListMD : public IKeywordMD
{
public:
    /// What each element is: an item, a record or a list. Never null.
    virtual const IKeywordMD* GetElementMD() const noexcept = 0;

    virtual Termination GetTermination() const noexcept = 0;

    /// Null for a list whose end no token tells.
    virtual const IListEndDetector* GetListEndDetector() const noexcept = 0;

    /// The expression that gives the number of elements; null if there is none.
    virtual const std::string* GetSizeExpression() const noexcept = 0;

    /// An element may be left to its default.
    virtual bool AllowsDefaultElements() const noexcept = 0;

    /// An element given only as its terminator repeats the element before it.
    virtual bool AutoFillsEmptyElements() const noexcept = 0;

    /// For the writer: whether the list begins on a new line, and whether its terminator stands on one.
    /// Negative: not told; 0: no; above 0: yes.
    virtual signed char StartsOnNewLine() const noexcept = 0;
    virtual signed char TerminatorOnNewLine() const noexcept = 0;

protected:
    using IKeywordMD::IKeywordMD;
};

} // namespace Tarn::Fjel::Core::Keywords
