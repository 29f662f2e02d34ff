#include <tarn/keywords/ConstMetaDataIterator.h>

#include <tarn/keywords/IKeywordListMD.h>
#include <tarn/keywords/IKeywordRecordMD.h>

namespace Tarn::Fjel::Core::Keywords {

ConstMetaDataIterator::ConstMetaDataIterator(const IKeywordMD* md)
{
    if (md) m_pending.push_back(md);
}

void ConstMetaDataIterator::Next()
{
    const IKeywordMD* md = m_pending.back();
    m_pending.pop_back();
    if (md->GetType() == MDType::List) {
        m_pending.push_back(static_cast<const IKeywordListMD*>(md)->GetElementMD());
    } else if (md->GetType() == MDType::Record) {
        const auto& record = *static_cast<const IKeywordRecordMD*>(md);
        for (int i = record.GetItemCount(); i > 0; --i)
            m_pending.push_back(record.GetItemMD(i - 1));
    }
}

} // namespace Tarn::Fjel::Core::Keywords
