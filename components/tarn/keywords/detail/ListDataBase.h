#pragma once

#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/detail/DataNodes.h>

namespace Tarn::Fjel::Core::Keywords::Detail {

/// Refuses what is meant for lists of another kind; the lists override what is theirs.
class ListDataBase : public IKeywordListData
{
public:
    std::unique_ptr<IKeywordData> CloneSafely() const override { return CloneTree(*this); }

    IKeywordData& GetContainer(int index) override { FailPlace(*this, index, "container"); }
    const IKeywordData& GetContainer(int index) const override { FailPlace(*this, index, "container"); }
    void AddElement(const IKeywordData&) override { Fail("container"); }
    void SetElement(int index, const ConstSlot&) override { FailPlace(*this, index, "single value"); }
    void SetElement(int index, const IKeywordData&) override { FailPlace(*this, index, "container"); }

    bool IsElementDefaulted(int) const override { return false; }
    void SetElementDefaulted(int index, bool) override { FailPlace(*this, index, "default mark"); }
    bool HasDefaultedElements() const noexcept override { return false; }

    std::int64_t AppendRun(const ConstSlot&, std::int64_t) override { Fail("single value"); }
    std::int64_t AppendDefaults(std::int64_t) override { Fail("default mark"); }
    std::int64_t AppendYesNoRun(signed char, std::int64_t) override { Fail("yes or no"); }
    std::int64_t AppendOptionRun(int, std::int64_t) override { Fail("option"); }
    std::int64_t AppendIntegerRun(int, std::int64_t) override { Fail("integer"); }
    std::int64_t AppendRealRun(double, std::int64_t) override { Fail("real"); }
    std::int64_t AppendStringRun(std::string_view, std::int64_t) override { Fail("string"); }
    std::int64_t AppendIntegers(std::span<const int>) override { Fail("integer"); }
    std::int64_t AppendReals(std::span<const double>) override { Fail("real"); }

    std::span<const signed char> YesNos() const override { Fail("yes or no"); }
    std::span<const int> Options() const override { Fail("option"); }
    std::span<const int> Integers() const override { Fail("integer"); }
    std::span<const double> Reals() const override { Fail("real"); }
    std::span<const CompactString> Strings() const override { Fail("string"); }
    std::span<int> MutableIntegers() override { Fail("integer"); }
    std::span<double> MutableReals() override { Fail("real"); }

protected:
    using IKeywordListData::IKeywordListData;

    const ListMD& MD() const noexcept { return *static_cast<const ListMD*>(GetMetaData()); }
    [[noreturn]] void Fail(const char* what) const;
    [[noreturn]] void FailFull() const;
};

/// A list of items of that metadata's kind.
std::unique_ptr<IKeywordData> MakeItemList(const ListMD& md);
/// Assigns between two lists of items of the same metadata.
void AssignItemList(IKeywordListData& target, const IKeywordListData& source);

/// A list of records or lists. The elements hang on a block that several lists may share; the list that made the block
/// keeps its elements at their addresses when the lists part.
class ContainerListData final : public ListDataBase
{
public:
    explicit ContainerListData(const ListMD& md) : ListDataBase(md) {}
    ~ContainerListData() override { Release(); }

    int GetElementCount() const noexcept override { return m_block ? static_cast<int>(m_block->nodes.size()) : 0; }
    std::int64_t GetRoom() const noexcept override;
    Slot GetElement(int index) override;
    ConstSlot GetElement(int index) const override;
    IKeywordData& GetContainer(int index) override;
    const IKeywordData& GetContainer(int index) const override;
    void AddElement(const ConstSlot* value) override;
    void AddElement(const IKeywordData& source) override;
    void SetElement(int index, const ConstSlot& source) override;
    void SetElement(int index, const IKeywordData& source) override;
    void RemoveElement(int index) override;
    void Clear() noexcept override { Release(); }

    void Assign(const ContainerListData& source, bool shares, CloneContext& context);
    IKeywordData* RawAt(int index) const { return m_block->nodes[At(index)].get(); }
    const void* SharedBlock() const noexcept { return m_block && m_block->users > 1 ? m_block : nullptr; }

protected:
    const IKeywordMD* MDAt(int index) const override;
    const void* ValueAt(int index, MDType) const override { FailPlace(*this, index, "single value"); }
    void* MutableValueAt(int index, MDType, bool) override { FailPlace(*this, index, "single value"); }
    bool IsDefaultedAt(int) const override { return false; }
    const IKeywordData* ContainerAt(int index) const override { return RawAt(index); }
    IKeywordData* MutableContainerAt(int index) override { return &GetContainer(index); }
    void AssignContainerAt(int index, const IKeywordData& source) override { SetElement(index, source); }

private:
    struct Block
    {
        int users = 1;
        ContainerListData* owner = nullptr; // the list whose elements these are at heart; null when it has left
        std::vector<std::unique_ptr<IKeywordData>> nodes;
    };

    static std::vector<std::unique_ptr<IKeywordData>> CloneNodes(const Block& block, CloneContext& context);

    std::size_t At(int index) const
    {
        if (index < 0 || index >= GetElementCount()) FailPlace(*this, index, "element");
        return static_cast<std::size_t>(index);
    }
    void Part();
    void Release() noexcept;
    void Append(std::unique_ptr<IKeywordData> node);

    Block* m_block = nullptr;
};

} // namespace Tarn::Fjel::Core::Keywords::Detail
