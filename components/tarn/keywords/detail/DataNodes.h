#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include <tarn/keywords/IKeywordMapData.h>
#include <tarn/keywords/IKeywordRawTextData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/KeywordException.h>
#include <tarn/keywords/detail/MetadataNodes.h>

namespace Tarn::Fjel::Core::Keywords::Detail {

/// What one copy of a tree has to remember: which shared blocks were copied already, so that what was shared in the
/// source is shared in the copy and doesn't grow.
struct CloneContext
{
    std::unordered_map<const void*, void*> copies;
};

/// A container of that metadata with everything unset. The metadata must be of this library's own classes.
std::unique_ptr<IKeywordData> MakeNode(const IKeywordMD& md);

/// A copy in depth.
std::unique_ptr<IKeywordData> CloneNode(const IKeywordData& source, CloneContext& context);
std::unique_ptr<IKeywordData> CloneTree(const IKeywordData& source);

/// Makes target, a container of the same metadata, hold what source holds. shares: the elements of nested lists become
/// common to both until one of them is changed; else they are copied. Throws KeywordException if the metadata differ.
void AssignNode(IKeywordData& target, const IKeywordData& source, bool shares, CloneContext& context);

/// The container at a place of a record or list, to be changed for all lists that share it.
IKeywordData* RawChild(IKeywordData& container, int index);

/// What identifies the elements that a list of containers shares with other lists; null if it shares none.
const void* SharedBlock(const IKeywordData& data);

[[noreturn]] void FailPlace(const IKeywordData& data, int index, const char* what);

/// Answers for containers without slots.
template <class Interface>
class SlotlessData : public Interface
{
protected:
    using Interface::Interface;

    const IKeywordMD* MDAt(int index) const override { FailPlace(*this, index, "place"); }
    const void* ValueAt(int index, MDType) const override { FailPlace(*this, index, "value"); }
    void* MutableValueAt(int index, MDType, bool) override { FailPlace(*this, index, "value"); }
    bool IsDefaultedAt(int) const override { return false; }
    const IKeywordData* ContainerAt(int index) const override { FailPlace(*this, index, "container"); }
    IKeywordData* MutableContainerAt(int index) override { FailPlace(*this, index, "container"); }
    void AssignContainerAt(int index, const IKeywordData&) override { FailPlace(*this, index, "container"); }
};

class MapData final : public SlotlessData<IKeywordMapData>
{
public:
    explicit MapData(const MapMD& md);

    std::unique_ptr<IKeywordData> CloneSafely() const override { return CloneTree(*this); }
    int GetEntryCount() const noexcept override { return static_cast<int>(m_values.size()); }
    int GetEntryValue(int index) const override { return m_values[At(index)]; }
    void SetEntry(std::string_view name, int value) override;
    void SetEntry(int index, int value) override { m_values[At(index)] = value; }
    const IKeywordMapEntryMD* GetEntryMD(int index) const override { return GetMapMD()->GetEntryMD(index); }

    void Assign(const MapData& source) { m_values = source.m_values; }

private:
    std::size_t At(int index) const
    {
        if (index < 0 || static_cast<std::size_t>(index) >= m_values.size()) FailPlace(*this, index, "entry");
        return static_cast<std::size_t>(index);
    }

    std::vector<int> m_values;
};

class RawTextData final : public SlotlessData<IKeywordRawTextData>
{
public:
    explicit RawTextData(const RawTextMD& md) : SlotlessData(md) {}

    std::unique_ptr<IKeywordData> CloneSafely() const override { return CloneTree(*this); }
    const std::string& GetText() const noexcept override { return m_text; }
    void SetText(std::string_view text) override { m_text.assign(text); }

private:
    std::string m_text;
};

/// A record is one block of memory: the object, and behind it the values in the layout of the metadata.
class RecordData final : public IKeywordRecordData
{
public:
    static std::unique_ptr<RecordData> Create(const RecordMD& md);
    ~RecordData() override;

    static void operator delete(void* block) { ::operator delete(block); }

    std::unique_ptr<IKeywordData> CloneSafely() const override { return CloneTree(*this); }
    int GetItemCount() const noexcept override { return static_cast<int>(Layout().places.size()); }
    Slot GetItem(int index) override;
    ConstSlot GetItem(int index) const override;
    IKeywordData& GetContainer(int index) override;
    const IKeywordData& GetContainer(int index) const override;
    bool HasSameItems(const IKeywordRecordData& other) const override;

    void Assign(const RecordData& source, bool shares, CloneContext& context);

protected:
    const IKeywordMD* MDAt(int index) const override { return GetRecordMD()->GetItemMD(index); }
    const void* ValueAt(int index, MDType kind) const override { return Value(index, kind); }
    void* MutableValueAt(int index, MDType kind, bool) override { return Value(index, kind); }
    bool IsDefaultedAt(int) const override { return false; }
    const IKeywordData* ContainerAt(int index) const override { return Child(index); }
    IKeywordData* MutableContainerAt(int index) override { return Child(index); }
    void AssignContainerAt(int index, const IKeywordData& source) override;

private:
    explicit RecordData(const RecordMD& md);

    const RecordLayout& Layout() const noexcept { return static_cast<const RecordMD*>(GetMetaData())->Layout(); }
    std::byte* Block() const noexcept
    {
        return const_cast<std::byte*>(reinterpret_cast<const std::byte*>(this)) + sizeof(RecordData);
    }
    const RecordLayout::Place& PlaceAt(int index) const
    {
        const RecordLayout& layout = Layout();
        if (index < 0 || static_cast<std::size_t>(index) >= layout.places.size()) FailPlace(*this, index, "item");
        return layout.places[static_cast<std::size_t>(index)];
    }
    void* Value(int index, MDType kind) const
    {
        const RecordLayout::Place& place = PlaceAt(index);
        const auto isString = [](MDType one) { return one == MDType::String || one == MDType::RestOfLine; };
        if (place.kind != kind && !(isString(place.kind) && isString(kind)))
            FailPlace(*this, index, "value of that kind");
        return Block() + place.offset;
    }
    IKeywordData* Child(int index) const; // null for an item
    IKeywordData*& ChildPointer(int index) const noexcept;
};

} // namespace Tarn::Fjel::Core::Keywords::Detail
