#pragma once

#include <string_view>

#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordMapMD.h>

namespace Tarn::Fjel::Core::Keywords {

/// The data of a map: an integer for each entry of its metadata, unset at first.
/// An index out of range throws KeywordException.
class IKeywordMapData : public IKeywordData
{
public:
    const IKeywordMapMD* GetMapMD() const noexcept { return static_cast<const IKeywordMapMD*>(GetMetaData()); }

    virtual int GetEntryCount() const noexcept = 0;

    /// The value, or UnsetValue::MapEntry.
    virtual int GetEntryValue(int index) const = 0;

    /// Sets the entry that goes by that name, without regard to case. An unknown name does nothing. A name that stands
    /// for one certain value of an entry sets that value when it is set to 1.
    virtual void SetEntry(std::string_view name, int value) = 0;
    virtual void SetEntry(int index, int value) = 0;

    virtual const IKeywordMapEntryMD* GetEntryMD(int index) const = 0;

protected:
    using IKeywordData::IKeywordData;
};

} // namespace Tarn::Fjel::Core::Keywords
