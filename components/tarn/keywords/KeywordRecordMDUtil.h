#pragma once

#include <tarn/keywords/IKeywordRecordMD.h>

namespace Tarn::Fjel::Core::Keywords {

/// Questions to the metadata of a record.
class KeywordRecordMDUtil
{
public:
    /// Every value of the record is an integer or a real, those of nested records and lists included.
    static bool AllNumeric(const IKeywordRecordMD& md);

    /// An item of the record itself is a string or a rest of line.
    static bool HasStringType(const IKeywordRecordMD& md);

    /// An item of the record is a container.
    static bool HasNestedContainer(const IKeywordRecordMD& md);
};

} // namespace Tarn::Fjel::Core::Keywords
