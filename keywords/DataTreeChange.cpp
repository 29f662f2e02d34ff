#include "keywords/DataTreeChange.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <span>

#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordMapData.h>
#include <tarn/keywords/IKeywordRawTextData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/KeywordUtils.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::MDType;

namespace {

bool IsSameSlot(const Keywords::ConstSlot& a, const Keywords::ConstSlot& b)
{
    switch (a.Kind()) {
    case MDType::YesNo:
        return a.GetYesNo() == b.GetYesNo();
    case MDType::Option:
        return a.GetOption() == b.GetOption();
    case MDType::Integer:
        return a.GetInteger() == b.GetInteger();
    case MDType::Real:
        return std::bit_cast<std::uint64_t>(a.GetReal()) == std::bit_cast<std::uint64_t>(b.GetReal());
    default:
        return a.HasValue() == b.HasValue() && a.GetString() == b.GetString();
    }
}

template <class Value>
bool HasSameBytes(std::span<const Value> a, int beginA, std::span<const Value> b, int beginB, int count)
{
    return std::memcmp(a.data() + beginA, b.data() + beginB, static_cast<std::size_t>(count) * sizeof(Value)) == 0;
}

/// `count` elements of two lists of items, from there on.
bool HasSameItems(const Keywords::IKeywordListData& a, int beginA, const Keywords::IKeywordListData& b, int beginB,
                  int count)
{
    if (count <= 0) return true;
    bool slotBySlot = a.HasDefaultedElements() || b.HasDefaultedElements();
    switch (a.GetElementType()) {
    case MDType::Real:
        if (!slotBySlot) return HasSameBytes(a.Reals(), beginA, b.Reals(), beginB, count);
        break;
    case MDType::Integer:
        if (!slotBySlot) return HasSameBytes(a.Integers(), beginA, b.Integers(), beginB, count);
        break;
    default:
        break;
    }
    for (int i = 0; i < count; ++i) {
        const bool defaulted = a.IsElementDefaulted(beginA + i);
        if (defaulted != b.IsElementDefaulted(beginB + i)) return false;
        if (!defaulted && !IsSameSlot(a.GetElement(beginA + i), b.GetElement(beginB + i))) return false;
    }
    return true;
}

class Comparison
{
public:
    explicit Comparison(const DataTreeChange& change) : m_change(change) {}

    /// `depth`: how many steps of the way lead to the container; -1 off the way.
    bool IsSame(const Keywords::IKeywordData& a, const Keywords::IKeywordData& b, int depth) const
    {
        if (a.GetMetaData() != b.GetMetaData()) return false;
        switch (a.GetType()) {
        case MDType::Record:
            return IsSame(static_cast<const Keywords::IKeywordRecordData&>(a),
                          static_cast<const Keywords::IKeywordRecordData&>(b), depth);
        case MDType::List:
            return IsSame(static_cast<const Keywords::IKeywordListData&>(a),
                          static_cast<const Keywords::IKeywordListData&>(b), depth);
        case MDType::Map: {
            const auto& mapA = static_cast<const Keywords::IKeywordMapData&>(a);
            const auto& mapB = static_cast<const Keywords::IKeywordMapData&>(b);
            for (int i = 0; i < mapA.GetEntryCount(); ++i) {
                if (!IsChanged(depth, i) && mapA.GetEntryValue(i) != mapB.GetEntryValue(i)) return false;
            }
            return true;
        }
        default:
            return static_cast<const Keywords::IKeywordRawTextData&>(a).GetText() ==
                   static_cast<const Keywords::IKeywordRawTextData&>(b).GetText();
        }
    }

private:
    bool IsTarget(int depth) const { return depth == static_cast<int>(m_change.way.size()); }
    bool IsChanged(int depth, int index) const { return IsTarget(depth) && index == m_change.index; }
    int DepthOf(int depth, int index) const
    {
        const bool onWay = depth >= 0 && !IsTarget(depth) && m_change.way[static_cast<std::size_t>(depth)] == index;
        return onWay ? depth + 1 : -1;
    }

    bool IsSame(const Keywords::IKeywordRecordData& a, const Keywords::IKeywordRecordData& b, int depth) const
    {
        const bool here = IsTarget(depth);
        if (!here && !a.HasSameItems(b)) return false;
        for (int i = 0; i < a.GetItemCount(); ++i) {
            if (here && i == m_change.index) continue;
            const Keywords::ConstSlot slot = a.GetItem(i);
            const bool same = slot.GetContainer() ? IsSame(a.GetContainer(i), b.GetContainer(i), DepthOf(depth, i))
                                                  : !here || IsSameSlot(slot, b.GetItem(i));
            if (!same) return false;
        }
        return true;
    }

    bool IsSame(const Keywords::IKeywordListData& a, const Keywords::IKeywordListData& b, int depth) const
    {
        const int countA = a.GetElementCount();
        const int countB = b.GetElementCount();
        const bool here = IsTarget(depth);
        const int goneA = here && m_change.kind != DataTreeChange::Kind::Insert ? 1 : 0;
        const int goneB = here && m_change.kind != DataTreeChange::Kind::Remove ? 1 : 0;
        if (countA - goneA != countB - goneB) return false;
        const int head = here ? m_change.index : countA;
        const int tail = countA - goneA - head;
        if (head < 0 || tail < 0) return false;
        if (Keywords::KeywordUtils::IsItemMDType(a.GetElementType()))
            return HasSameItems(a, 0, b, 0, head) && HasSameItems(a, head + goneA, b, head + goneB, tail);
        for (int i = 0; i < head; ++i) {
            if (!IsSame(a.GetContainer(i), b.GetContainer(i), DepthOf(depth, i))) return false;
        }
        for (int i = head; i < head + tail; ++i) {
            if (!IsSame(a.GetContainer(i + goneA), b.GetContainer(i + goneB), -1)) return false;
        }
        return true;
    }

    const DataTreeChange& m_change;
};

} // namespace

bool DataTreeChange::LeadsFrom(const Keywords::IKeywordData& before, const Keywords::IKeywordData& after) const
{
    return Comparison(*this).IsSame(before, after, 0);
}

} // namespace Tarn::Fjel::Core::DeckManager
