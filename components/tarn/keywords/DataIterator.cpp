#include <tarn/keywords/DataIterator.h>

#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/keywords/detail/DataNodes.h>

namespace Tarn::Fjel::Core::Keywords {

DataIterator::DataIterator(IKeywordData& data, MDType only) : m_only(only)
{
    Push(data);
    Settle();
}

void DataIterator::Next()
{
    ++m_path.back().index;
    Settle();
}

Slot DataIterator::GetSlot() const
{
    return Slot(*m_path.back().node, m_path.back().index);
}

const IKeywordItemMD* DataIterator::GetItemMD() const
{
    return static_cast<const IKeywordItemMD*>(GetSlot().GetMD());
}

void DataIterator::Push(IKeywordData& node)
{
    int count = 0;
    if (node.GetType() == MDType::Record) count = static_cast<IKeywordRecordData&>(node).GetItemCount();
    if (node.GetType() == MDType::List) {
        const auto& list = static_cast<IKeywordListData&>(node);
        const MDType kind = list.GetElementType();
        const bool wanted = m_only == MDType::None || kind == m_only || !KeywordUtils::IsItemMDType(kind);
        const void* shared = Detail::SharedBlock(node);
        const bool seen = shared && !m_sharedSeen.insert(shared).second;
        if (wanted && !seen) count = list.GetElementCount();
    }
    m_path.push_back({&node, 0, count});
}

/// Goes on to the nearest place that is a value to visit.
void DataIterator::Settle()
{
    while (!m_path.empty()) {
        Level& level = m_path.back();
        if (level.index >= level.count) {
            m_path.pop_back();
            if (!m_path.empty()) ++m_path.back().index;
            continue;
        }
        const IKeywordMD* md = level.node->GetType() == MDType::Record
                                   ? static_cast<IKeywordRecordData&>(*level.node).GetRecordMD()->GetItemMD(level.index)
                                   : static_cast<IKeywordListData&>(*level.node).GetListMD()->GetElementMD();
        if (!KeywordUtils::IsItemMDType(md)) {
            Push(*Detail::RawChild(*level.node, level.index));
        } else if (m_only == MDType::None || md->GetType() == m_only) {
            return;
        } else {
            ++level.index;
        }
    }
}

} // namespace Tarn::Fjel::Core::Keywords
