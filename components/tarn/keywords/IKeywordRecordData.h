#pragma once

#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordRecordMD.h>

namespace Tarn::Fjel::Core::Keywords {

/// The data of a record. Its items are there from the start, unset; so are its nested containers, empty.
/// An index out of range throws KeywordException.
class IKeywordRecordData : public IKeywordData
{
public:
    const IKeywordRecordMD* GetRecordMD() const noexcept { return static_cast<const IKeywordRecordMD*>(GetMetaData()); }

    virtual int GetItemCount() const noexcept = 0;

    virtual Slot GetItem(int index) = 0;
    virtual ConstSlot GetItem(int index) const = 0;

    /// The nested container at index; throws KeywordException where an item stands.
    virtual IKeywordData& GetContainer(int index) = 0;
    virtual const IKeywordData& GetContainer(int index) const = 0;

    /// All items hold the same as those of `other`, reals bit for bit; nested containers aside. False where the
    /// metadata aren't the same object.
    virtual bool HasSameItems(const IKeywordRecordData& other) const = 0;

protected:
    using IKeywordData::IKeywordData;
};

} // namespace Tarn::Fjel::Core::Keywords
