#pragma once

#include <span>
#include <string>
#include <string_view>

#include <tarn/keywords/IKeywordMD.h>
#include <tarn/keywords/IRecordItemTraits.h>
#include <tarn/keywords/Termination.h>

namespace Tarn::Fjel::Core::Keywords {

/// Metadata of a record: a fixed row of items and nested containers.
class IKeywordRecordMD : public IKeywordMD
{
public:
    virtual int GetItemCount() const noexcept = 0;

    /// REQUIRES: 0 <= index < GetItemCount(); anything else throws KeywordException, here and below.
    virtual const IKeywordMD* GetItemMD(int index) const = 0;

    /// The item may be defaulted, whether or not the catalogue knows the default value.
    virtual bool IsItemDefaultable(int index) const = 0;

    virtual Termination GetTermination() const noexcept = 0;

    /// Null for a record without optional items.
    virtual const IRecordItemTraits* GetItemTraits() const noexcept = 0;

    /// The name of an item or nested container, in capitals; empty if it has none.
    virtual const std::string& GetItemName(int index) const = 0;

    /// The index of the item of that name, without regard to case; -1 if there is none.
    virtual int FindItem(std::string_view name) const noexcept = 0;

    /// The items that tell records of this kind apart, by index in ascending order; empty if none do.
    virtual std::span<const int> GetIdentityItems() const noexcept = 0;

protected:
    using IKeywordMD::IKeywordMD;
};

} // namespace Tarn::Fjel::Core::Keywords
