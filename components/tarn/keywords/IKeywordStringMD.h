#pragma once

#include <tarn/keywords/IKeywordItemMD.h>

namespace Tarn::Fjel::Core::Keywords {

/// Metadata of a string item.
class IKeywordStringMD : public IKeywordItemMD
{
public:
    /// The string keeps its lower case letters: file names, titles.
    virtual bool PreservesCase() const noexcept = 0;

    /// The most characters that count; 0 means no limit.
    virtual int GetMaxLength() const noexcept = 0;

    /// A comma in a string list is part of the string, and ends no token.
    virtual bool AllowsCommas() const noexcept = 0;

protected:
    using IKeywordItemMD::IKeywordItemMD;
};

} // namespace Tarn::Fjel::Core::Keywords
