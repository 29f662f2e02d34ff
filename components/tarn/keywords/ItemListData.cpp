#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>

#include <tarn/keywords/UnsetValue.h>
#include <tarn/keywords/detail/ListDataBase.h>

namespace Tarn::Fjel::Core::Keywords::Detail {

namespace {

/// An array that grows by realloc and that several owners share until one of them changes it. The values may be moved
/// bit by bit. Peak memory while it grows is that of the array alone, which the system moves by its page tables.
template <class T>
class SharedArray
{
public:
    SharedArray() = default;
    SharedArray(const SharedArray&) = delete;
    SharedArray& operator=(const SharedArray& other)
    {
        if (other.m_block) ++other.m_block->users;
        Release();
        m_block = other.m_block;
        return *this;
    }
    ~SharedArray() { Release(); }

    std::int64_t Size() const noexcept { return m_block ? m_block->size : 0; }
    const T* Data() const noexcept { return m_block ? Values(m_block) : nullptr; }

    /// The values, this array's own now.
    T* Own()
    {
        if (m_block && m_block->users > 1) {
            Block* copy = Allocate(nullptr, m_block->size);
            std::uninitialized_copy_n(Values(m_block), m_block->size, Values(copy));
            copy->size = m_block->size;
            --m_block->users;
            m_block = copy;
        }
        return m_block ? Values(m_block) : nullptr;
    }

    /// Makes room for count values more, which the caller then constructs and counts by Added.
    T* Grow(std::int64_t count)
    {
        Own();
        const std::int64_t size = Size();
        if (!m_block || size + count > m_block->capacity) {
            const std::int64_t old = m_block ? m_block->capacity : 0;
            m_block = Allocate(m_block, std::max(size + count, old + old / 2 + 2));
        }
        return Values(m_block) + size;
    }
    void Added(std::int64_t count) noexcept { m_block->size += count; }

    void Erase(std::int64_t index)
    {
        T* values = Own();
        values[index].~T();
        const auto behind = static_cast<std::size_t>(m_block->size - index - 1);
        std::memmove(static_cast<void*>(values + index), static_cast<const void*>(values + index + 1),
                     behind * sizeof(T));
        --m_block->size;
    }

    void Release() noexcept
    {
        if (m_block && --m_block->users == 0) {
            std::destroy_n(Values(m_block), m_block->size);
            std::free(m_block);
        }
        m_block = nullptr;
    }

private:
    struct Block
    {
        std::int64_t size;
        std::int64_t capacity;
        std::int64_t users;
    };

    static T* Values(Block* block) noexcept { return reinterpret_cast<T*>(block + 1); }

    static Block* Allocate(Block* old, std::int64_t capacity)
    {
        void* memory = std::realloc(old, sizeof(Block) + static_cast<std::size_t>(capacity) * sizeof(T));
        if (!memory) throw std::bad_alloc();
        auto* block = static_cast<Block*>(memory);
        block->capacity = capacity;
        if (!old) {
            block->size = 0;
            block->users = 1;
        }
        return block;
    }

    Block* m_block = nullptr;
};

bool IsString(MDType kind)
{
    return kind == MDType::String || kind == MDType::RestOfLine;
}

template <class T>
class ItemListData final : public ListDataBase
{
public:
    explicit ItemListData(const ListMD& md) : ListDataBase(md) {}

    using ListDataBase::AddElement;
    using ListDataBase::SetElement;

    int GetElementCount() const noexcept override { return static_cast<int>(m_values.Size()); }
    std::int64_t GetRoom() const noexcept override
    {
        const std::int64_t byBytes = (MaxBytes - m_blockBytes) / std::int64_t(sizeof(T));
        return std::max<std::int64_t>(
            std::min<std::int64_t>(byBytes, std::numeric_limits<int>::max()) - m_values.Size(), 0);
    }

    Slot GetElement(int index) override
    {
        At(index);
        return Slot(*this, index);
    }
    ConstSlot GetElement(int index) const override
    {
        At(index);
        return ConstSlot(*this, index);
    }

    void AddElement(const ConstSlot* value) override
    {
        if ((value ? AppendRun(*value, 1) : AppendValues(Unset(), 1)) == 0) FailFull();
    }

    void SetElement(int index, const ConstSlot& source) override { GetElement(index).Assign(source); }

    void RemoveElement(int index) override
    {
        const std::size_t at = At(index);
        m_blockBytes -= std::min(BlockBytesOf(m_values.Data()[at]), m_blockBytes);
        m_values.Erase(index);
        if (!m_defaults || at >= m_defaults->size()) return;
        if ((*m_defaults)[at]) --m_defaultCount;
        m_defaults->erase(m_defaults->begin() + index);
    }

    void Clear() noexcept override
    {
        m_values.Release();
        m_blockBytes = 0;
        m_defaults.reset();
        m_defaultCount = 0;
    }

    bool IsElementDefaulted(int index) const override { return IsMarked(At(index)); }

    void SetElementDefaulted(int index, bool defaulted) override
    {
        const std::size_t at = At(index);
        if (IsMarked(at) == defaulted) return;
        if (!m_defaults) m_defaults = std::make_unique<std::vector<bool>>();
        if (at >= m_defaults->size()) m_defaults->resize(at + 1);
        (*m_defaults)[at] = defaulted;
        m_defaultCount += defaulted ? 1 : -1;
    }

    bool HasDefaultedElements() const noexcept override { return m_defaultCount > 0; }

    std::int64_t AppendRun(const ConstSlot& value, std::int64_t count) override
    {
        // What the slot holds is copied first: it may be an element of this very list.
        if (!value.HasValue()) {
            ExpectKind(value.Kind());
            return AppendValues(Unset(), count);
        }
        if constexpr (std::is_same_v<T, CompactString>) {
            return AppendStringRun(value.GetString(), count);
        } else if constexpr (std::is_same_v<T, double>) {
            return AppendValues(value.GetReal(), count);
        } else if constexpr (std::is_same_v<T, signed char>) {
            return AppendValues(value.GetYesNo(), count);
        } else {
            return AppendValues(GetElementType() == MDType::Option ? value.GetOption() : value.GetInteger(), count);
        }
    }

    std::int64_t AppendDefaults(std::int64_t count) override
    {
        const std::int64_t first = m_values.Size();
        const std::int64_t added = AppendValues(Unset(), count);
        if (added == 0) return 0;
        if (!m_defaults) m_defaults = std::make_unique<std::vector<bool>>();
        m_defaults->resize(static_cast<std::size_t>(first));
        m_defaults->resize(static_cast<std::size_t>(first + added), true);
        m_defaultCount += added;
        return added;
    }

    std::int64_t AppendYesNoRun(signed char value, std::int64_t count) override
    {
        if constexpr (std::is_same_v<T, signed char>) return AppendValues(value, count);
        return ListDataBase::AppendYesNoRun(value, count);
    }
    std::int64_t AppendOptionRun(int value, std::int64_t count) override
    {
        Expect(MDType::Option);
        if constexpr (std::is_same_v<T, int>) return AppendValues(value, count);
        return ListDataBase::AppendOptionRun(value, count);
    }
    std::int64_t AppendIntegerRun(int value, std::int64_t count) override
    {
        Expect(MDType::Integer);
        if constexpr (std::is_same_v<T, int>) return AppendValues(value, count);
        return ListDataBase::AppendIntegerRun(value, count);
    }
    std::int64_t AppendRealRun(double value, std::int64_t count) override
    {
        if constexpr (std::is_same_v<T, double>) return AppendValues(value, count);
        return ListDataBase::AppendRealRun(value, count);
    }
    std::int64_t AppendStringRun(std::string_view value, std::int64_t count) override
    {
        if constexpr (std::is_same_v<T, CompactString>) {
            CompactString copy;
            copy.Set(value);
            return AppendValues(copy, count);
        }
        return ListDataBase::AppendStringRun(value, count);
    }

    std::int64_t AppendIntegers(std::span<const int> values) override
    {
        Expect(MDType::Integer);
        if constexpr (std::is_same_v<T, int>) return AppendBlock(values);
        return ListDataBase::AppendIntegers(values);
    }
    std::int64_t AppendReals(std::span<const double> values) override
    {
        if constexpr (std::is_same_v<T, double>) return AppendBlock(values);
        return ListDataBase::AppendReals(values);
    }

    std::span<const signed char> YesNos() const override
    {
        if constexpr (std::is_same_v<T, signed char>) return All();
        return ListDataBase::YesNos();
    }
    std::span<const int> Options() const override
    {
        Expect(MDType::Option);
        if constexpr (std::is_same_v<T, int>) return All();
        return ListDataBase::Options();
    }
    std::span<const int> Integers() const override
    {
        Expect(MDType::Integer);
        if constexpr (std::is_same_v<T, int>) return All();
        return ListDataBase::Integers();
    }
    std::span<const double> Reals() const override
    {
        if constexpr (std::is_same_v<T, double>) return All();
        return ListDataBase::Reals();
    }
    std::span<const CompactString> Strings() const override
    {
        if constexpr (std::is_same_v<T, CompactString>) return All();
        return ListDataBase::Strings();
    }
    std::span<int> MutableIntegers() override
    {
        Expect(MDType::Integer);
        if constexpr (std::is_same_v<T, int>) return MutableAll();
        return ListDataBase::MutableIntegers();
    }
    std::span<double> MutableReals() override
    {
        if constexpr (std::is_same_v<T, double>) return MutableAll();
        return ListDataBase::MutableReals();
    }

    void Assign(const ItemListData& source)
    {
        if (this == &source) return;
        m_values = source.m_values;
        m_blockBytes = source.m_blockBytes;
        m_defaults.reset();
        if (source.m_defaultCount > 0) m_defaults = std::make_unique<std::vector<bool>>(*source.m_defaults);
        m_defaultCount = source.m_defaultCount;
    }

protected:
    const IKeywordMD* MDAt(int index) const override
    {
        At(index);
        return MD().GetElementMD();
    }
    const void* ValueAt(int index, MDType kind) const override
    {
        const std::size_t at = At(index);
        ExpectAt(index, kind);
        return m_values.Data() + at;
    }
    void* MutableValueAt(int index, MDType kind, bool keepsDefaultMark) override
    {
        const std::size_t at = At(index);
        ExpectAt(index, kind);
        if (!keepsDefaultMark && m_defaultCount > 0) SetElementDefaulted(index, false);
        return m_values.Own() + at;
    }
    bool IsDefaultedAt(int index) const override { return m_defaultCount > 0 && IsMarked(At(index)); }
    const IKeywordData* ContainerAt(int index) const override
    {
        At(index);
        return nullptr;
    }
    IKeywordData* MutableContainerAt(int index) override
    {
        At(index);
        return nullptr;
    }
    void AssignContainerAt(int index, const IKeywordData&) override { FailPlace(*this, index, "container"); }

private:
    std::size_t At(int index) const
    {
        if (index < 0 || index >= m_values.Size()) FailPlace(*this, index, "element");
        return static_cast<std::size_t>(index);
    }
    void Expect(MDType kind) const
    {
        if (GetElementType() != kind) Fail(kind == MDType::Option ? "option" : "integer");
    }
    bool IsOwnKind(MDType kind) const
    {
        const MDType own = GetElementType();
        return own == kind || (IsString(own) && IsString(kind));
    }
    void ExpectAt(int index, MDType kind) const
    {
        if (!IsOwnKind(kind)) FailPlace(*this, index, "value of that kind");
    }
    void ExpectKind(MDType kind) const
    {
        if (!IsOwnKind(kind)) Fail("value of another kind");
    }
    bool IsMarked(std::size_t at) const { return m_defaults && at < m_defaults->size() && (*m_defaults)[at]; }

    static T Unset()
    {
        if constexpr (std::is_same_v<T, CompactString>)
            return CompactString();
        else if constexpr (std::is_same_v<T, double>)
            return UnsetValue::Real;
        else if constexpr (std::is_same_v<T, signed char>)
            return UnsetValue::YesNo;
        else
            return UnsetValue::Integer;
    }

    std::int64_t AppendValues(const T& value, std::int64_t count)
    {
        count = std::clamp<std::int64_t>(count, 0, GetRoom());
        const std::int64_t blockBytes = BlockBytesOf(value);
        if (blockBytes > 0) {
            // What lies outside the array counts too: a repeat of a long string costs many times its slots.
            const std::int64_t bytesLeft = MaxBytes - m_blockBytes - m_values.Size() * std::int64_t(sizeof(T));
            count = std::min(count, bytesLeft / (blockBytes + std::int64_t(sizeof(T))));
        }
        if (count == 0) return 0;
        T* const place = m_values.Grow(count);
        if (std::is_same_v<T, CompactString> && blockBytes == 0) {
            // A string in place is its bytes, which are copied many times faster than string by string.
            for (std::int64_t i = 0; i < count; ++i)
                std::memcpy(static_cast<void*>(place + i), static_cast<const void*>(&value), sizeof(T));
        } else {
            std::uninitialized_fill_n(place, count, value);
        }
        m_values.Added(count);
        m_blockBytes += count * blockBytes;
        return count;
    }
    static std::int64_t BlockBytesOf([[maybe_unused]] const T& value)
    {
        if constexpr (std::is_same_v<T, CompactString>)
            return static_cast<std::int64_t>(value.BlockBytes());
        else
            return 0;
    }
    std::int64_t AppendBlock(std::span<const T> values)
    {
        const std::int64_t count = std::min(static_cast<std::int64_t>(values.size()), GetRoom());
        if (count <= 0) return 0;
        std::uninitialized_copy_n(values.data(), count, m_values.Grow(count));
        m_values.Added(count);
        return count;
    }
    std::span<const T> All() const { return {m_values.Data(), static_cast<std::size_t>(m_values.Size())}; }
    std::span<T> MutableAll() { return {m_values.Own(), static_cast<std::size_t>(m_values.Size())}; }

    SharedArray<T> m_values;
    std::int64_t m_blockBytes = 0;                 // of strings that have a block of their own
    std::unique_ptr<std::vector<bool>> m_defaults; // may be shorter than the list; none while nothing is defaulted
    std::int64_t m_defaultCount = 0;
};

} // namespace

std::unique_ptr<IKeywordData> MakeItemList(const ListMD& md)
{
    switch (md.GetElementMD()->GetType()) {
    case MDType::YesNo:
        return std::make_unique<ItemListData<signed char>>(md);
    case MDType::Option:
    case MDType::Integer:
        return std::make_unique<ItemListData<int>>(md);
    case MDType::Real:
        return std::make_unique<ItemListData<double>>(md);
    default:
        return std::make_unique<ItemListData<CompactString>>(md);
    }
}

void AssignItemList(IKeywordListData& target, const IKeywordListData& source)
{
    const auto assign = [&]<class T>(std::type_identity<T>) {
        static_cast<ItemListData<T>&>(target).Assign(static_cast<const ItemListData<T>&>(source));
    };
    switch (target.GetElementType()) {
    case MDType::YesNo:
        return assign(std::type_identity<signed char>());
    case MDType::Option:
    case MDType::Integer:
        return assign(std::type_identity<int>());
    case MDType::Real:
        return assign(std::type_identity<double>());
    default:
        return assign(std::type_identity<CompactString>());
    }
}

} // namespace Tarn::Fjel::Core::Keywords::Detail
