#pragma once

#include <tarn/keywords/IKeywordItemMD.h>
#include <tarn/keywords/IKeywordListMD.h>
#include <tarn/keywords/IKeywordOptionMD.h>
#include <tarn/keywords/IKeywordRecordMD.h>
#include <tarn/keywords/KeywordUtils.h>

namespace Tarn::Fjel::Core::DeckManager {

/// Looks at metadata as a certain kind of node; null where they are another.
namespace MetadataShape {

inline const Keywords::IKeywordListMD* AsList(const Keywords::IKeywordMD* md)
{
    return Keywords::KeywordUtils::GetMDType(md) == Keywords::MDType::List
               ? static_cast<const Keywords::IKeywordListMD*>(md)
               : nullptr;
}

/// A record of that many items.
inline const Keywords::IKeywordRecordMD* AsRecord(const Keywords::IKeywordMD* md, int itemCount)
{
    if (Keywords::KeywordUtils::GetMDType(md) != Keywords::MDType::Record) return nullptr;
    const auto* const record = static_cast<const Keywords::IKeywordRecordMD*>(md);
    return record->GetItemCount() == itemCount ? record : nullptr;
}

inline const Keywords::IKeywordOptionMD* AsOption(const Keywords::IKeywordMD* md)
{
    return Keywords::KeywordUtils::GetMDType(md) == Keywords::MDType::Option
               ? static_cast<const Keywords::IKeywordOptionMD*>(md)
               : nullptr;
}

/// An item of that kind.
inline const Keywords::IKeywordItemMD* AsItem(const Keywords::IKeywordMD* md, Keywords::MDType type)
{
    return Keywords::KeywordUtils::GetMDType(md) == type ? static_cast<const Keywords::IKeywordItemMD*>(md) : nullptr;
}

/// What a list's elements are; null for null.
inline const Keywords::IKeywordMD* ElementOf(const Keywords::IKeywordListMD* list)
{
    return list ? list->GetElementMD() : nullptr;
}

/// An item of a record; null for null. REQUIRES: the record has it.
inline const Keywords::IKeywordMD* ItemOf(const Keywords::IKeywordRecordMD* record, int index)
{
    return record ? record->GetItemMD(index) : nullptr;
}

} // namespace MetadataShape
} // namespace Tarn::Fjel::Core::DeckManager
