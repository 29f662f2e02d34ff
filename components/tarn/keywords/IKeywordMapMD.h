#pragma once

#include <string_view>

#include <tarn/keywords/IKeywordMD.h>
#include <tarn/keywords/IKeywordMapEntryMD.h>
#include <tarn/keywords/Termination.h>

namespace Tarn::Fjel::Core::Keywords {

/// Metadata of a map: a fixed set of named integers, written as NAME or NAME=value, or by position.
class IKeywordMapMD : public IKeywordMD
{
public:
    virtual int GetEntryCount() const noexcept = 0;

    /// REQUIRES: 0 <= index < GetEntryCount(); anything else throws KeywordException.
    virtual const IKeywordMapEntryMD* GetEntryMD(int index) const = 0;

    /// The entry that goes by that name, without regard to case; -1 if there is none. An exact name goes before one
    /// that ends in "*" and whose stem begins the name.
    virtual int FindEntry(std::string_view name) const noexcept = 0;

    virtual Termination GetTermination() const noexcept = 0;

protected:
    using IKeywordMD::IKeywordMD;
};

} // namespace Tarn::Fjel::Core::Keywords
