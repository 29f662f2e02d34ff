#include <tarn/keywords/KeywordRecordMDUtil.h>

#include <tarn/keywords/ConstMetaDataIterator.h>
#include <tarn/keywords/KeywordUtils.h>

namespace Tarn::Fjel::Core::Keywords {

bool KeywordRecordMDUtil::AllNumeric(const IKeywordRecordMD& md)
{
    for (ConstMetaDataIterator it(&md); !it.AtEnd(); it.Next()) {
        const MDType type = it.Get()->GetType();
        const bool passes =
            type == MDType::Integer || type == MDType::Real || type == MDType::Record || type == MDType::List;
        if (!passes) return false;
    }
    return true;
}

bool KeywordRecordMDUtil::HasStringType(const IKeywordRecordMD& md)
{
    for (int i = 0; i < md.GetItemCount(); ++i) {
        const MDType type = md.GetItemMD(i)->GetType();
        if (type == MDType::String || type == MDType::RestOfLine) return true;
    }
    return false;
}

bool KeywordRecordMDUtil::HasNestedContainer(const IKeywordRecordMD& md)
{
    for (int i = 0; i < md.GetItemCount(); ++i) {
        if (!KeywordUtils::IsItemMDType(md.GetItemMD(i))) return true;
    }
    return false;
}

} // namespace Tarn::Fjel::Core::Keywords
