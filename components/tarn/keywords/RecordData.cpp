#include <algorithm>
#include <cstring>
#include <new>

#include <tarn/keywords/CompactString.h>
#include <tarn/keywords/UnsetValue.h>
#include <tarn/keywords/detail/DataNodes.h>

namespace Tarn::Fjel::Core::Keywords::Detail {

namespace {

bool IsString(MDType kind)
{
    return kind == MDType::String || kind == MDType::RestOfLine;
}

bool IsContainer(MDType kind)
{
    return kind == MDType::Record || kind == MDType::List || kind == MDType::Map || kind == MDType::RawText;
}

std::size_t SizeOf(MDType kind)
{
    switch (kind) {
    case MDType::YesNo:
        return sizeof(signed char);
    case MDType::Option:
    case MDType::Integer:
        return sizeof(int);
    case MDType::String:
    case MDType::RestOfLine:
        return sizeof(CompactString);
    default:
        return sizeof(void*); // reals and containers
    }
}

template <class T>
void Put(std::vector<std::byte>& block, std::size_t at, const T& value)
{
    std::memcpy(block.data() + at, &value, sizeof value);
}

} // namespace

void RecordMD::MakeLayout()
{
    m_layout.places.resize(m_items.size());
    // Values of eight bytes first, then those of four and of one, so that nothing lies between them.
    std::size_t end = 0;
    for (const std::size_t size : {std::size_t(16), std::size_t(8), std::size_t(4), std::size_t(1)}) {
        for (std::size_t i = 0; i < m_items.size(); ++i) {
            const MDType kind = m_items[i].md->GetType();
            if (SizeOf(kind) != size) continue;
            m_layout.places[i] = {static_cast<std::uint32_t>(end), kind};
            end += size;
        }
    }
    m_layout.unset.resize(end);
    for (std::size_t i = 0; i < m_items.size(); ++i) {
        const auto [at, kind] = m_layout.places[i];
        const int index = static_cast<int>(i);
        switch (kind) {
        case MDType::YesNo:
            Put(m_layout.unset, at, UnsetValue::YesNo);
            break;
        case MDType::Option:
        case MDType::Integer:
            Put(m_layout.unset, at, UnsetValue::Integer);
            break;
        case MDType::Real:
            Put(m_layout.unset, at, UnsetValue::Real);
            break;
        case MDType::String:
        case MDType::RestOfLine: {
            const CompactString none;
            std::memcpy(m_layout.unset.data() + at, static_cast<const void*>(&none), sizeof none);
            m_layout.strings.push_back(index);
            break;
        }
        default:
            m_layout.containers.push_back(index);
            break;
        }
    }
}

std::unique_ptr<RecordData> RecordData::Create(const RecordMD& md)
{
    void* block = ::operator new(sizeof(RecordData) + md.Layout().unset.size());
    try {
        return std::unique_ptr<RecordData>(new (block) RecordData(md));
    } catch (...) {
        ::operator delete(block);
        throw;
    }
}

RecordData::RecordData(const RecordMD& md) : IKeywordRecordData(md)
{
    const RecordLayout& layout = Layout();
    if (layout.unset.empty()) return;
    std::memcpy(Block(), layout.unset.data(), layout.unset.size());
    try {
        for (const int index : layout.containers)
            ChildPointer(index) = MakeNode(*md.GetItemMD(index)).release();
    } catch (...) {
        for (const int index : layout.containers)
            delete ChildPointer(index);
        throw;
    }
}

RecordData::~RecordData()
{
    const RecordLayout& layout = Layout();
    for (const int index : layout.strings)
        static_cast<CompactString*>(Value(index, MDType::String))->~CompactString();
    for (const int index : layout.containers)
        delete ChildPointer(index);
}

Slot RecordData::GetItem(int index)
{
    PlaceAt(index);
    return Slot(*this, index);
}

ConstSlot RecordData::GetItem(int index) const
{
    PlaceAt(index);
    return ConstSlot(*this, index);
}

IKeywordData& RecordData::GetContainer(int index)
{
    IKeywordData* child = Child(index);
    if (!child) FailPlace(*this, index, "container");
    return *child;
}

const IKeywordData& RecordData::GetContainer(int index) const
{
    const IKeywordData* child = Child(index);
    if (!child) FailPlace(*this, index, "container");
    return *child;
}

bool RecordData::HasSameItems(const IKeywordRecordData& other) const
{
    if (GetMetaData() != other.GetMetaData()) return false;
    const auto& record = static_cast<const RecordData&>(other);
    const RecordLayout& layout = Layout();
    for (const int index : layout.strings) {
        const auto& mine = *static_cast<const CompactString*>(Value(index, MDType::String));
        const auto& others = *static_cast<const CompactString*>(record.Value(index, MDType::String));
        if (mine.HasValue() != others.HasValue() || mine.View() != others.View()) return false;
    }
    // Strings come first, and nothing lies between the values.
    const std::size_t begin = layout.strings.size() * sizeof(CompactString);
    if (layout.containers.empty())
        return std::memcmp(Block() + begin, record.Block() + begin, layout.unset.size() - begin) == 0;
    return std::all_of(layout.places.begin(), layout.places.end(), [&](const RecordLayout::Place& place) {
        return IsString(place.kind) || IsContainer(place.kind) ||
               std::memcmp(Block() + place.offset, record.Block() + place.offset, SizeOf(place.kind)) == 0;
    });
}

void RecordData::Assign(const RecordData& source, bool shares, CloneContext& context)
{
    const RecordLayout& layout = Layout();
    for (std::size_t i = 0; i < layout.places.size(); ++i) {
        const auto [offset, kind] = layout.places[i];
        const int index = static_cast<int>(i);
        if (IsString(kind)) {
            *static_cast<CompactString*>(Value(index, kind)) =
                *static_cast<const CompactString*>(source.Value(index, kind));
        } else if (IKeywordData* child = Child(index)) {
            AssignNode(*child, *source.Child(index), shares, context);
        } else {
            std::memcpy(Block() + offset, source.Block() + offset, SizeOf(kind));
        }
    }
}

void RecordData::AssignContainerAt(int index, const IKeywordData& source)
{
    CloneContext context;
    AssignNode(GetContainer(index), source, false, context);
}

IKeywordData* RecordData::Child(int index) const
{
    return IsContainer(PlaceAt(index).kind) ? ChildPointer(index) : nullptr;
}

IKeywordData*& RecordData::ChildPointer(int index) const noexcept
{
    const std::uint32_t offset = Layout().places[static_cast<std::size_t>(index)].offset;
    return *reinterpret_cast<IKeywordData**>(Block() + offset);
}

MapData::MapData(const MapMD& md)
    : SlotlessData(md), m_values(static_cast<std::size_t>(md.GetEntryCount()), UnsetValue::MapEntry)
{
}

void MapData::SetEntry(std::string_view name, int value)
{
    std::optional<int> ownValue;
    const int index = static_cast<const MapMD*>(GetMetaData())->FindEntry(name, ownValue);
    if (index >= 0) SetEntry(index, ownValue && value == 1 ? *ownValue : value);
}

} // namespace Tarn::Fjel::Core::Keywords::Detail
