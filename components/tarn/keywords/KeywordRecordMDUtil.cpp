#include <tarn/keywords/KeywordRecordMDUtil.h>

#include <tarn/keywords/IKeywordListMD.h>
#include <tarn/keywords/KeywordUtils.h>

namespace Tarn::Fjel::Core::Keywords {

namespace {

bool IsNumeric(const IKeywordMD& md)
{
    switch (md.GetType()) {
    case MDType::Integer:
    case MDType::Real:
        return true;
    case MDType::List:
        return IsNumeric(*static_cast<const IKeywordListMD&>(md).GetElementMD());
    case MDType::Record:
        return KeywordRecordMDUtil::AllNumeric(static_cast<const IKeywordRecordMD&>(md));
    default:
        return false;
    }
}

} // namespace

// A load asks this for every keyword that is a list of records: no iterator with a stack of its own here.
bool KeywordRecordMDUtil::AllNumeric(const IKeywordRecordMD& md)
{
    for (int i = 0; i < md.GetItemCount(); ++i) {
        if (!IsNumeric(*md.GetItemMD(i))) return false;
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
