#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace Tarn::Fjel::Core::Keywords {

/// The string of one data slot in 16 bytes: unset, or up to 15 characters in place, or a block of its own.
///
/// The object may be moved in memory bit by bit, so that arrays of it grow by realloc.
class CompactString
{
public:
    /// The most characters that a string may have; a longer one throws KeywordException.
    static constexpr std::size_t MaxLength = 0xFFFFFFFF;

    CompactString() noexcept : m_bytes{} { m_bytes[TagAt] = Unset; }
    CompactString(const CompactString& other);
    CompactString& operator=(const CompactString& other);
    ~CompactString()
    {
        if (m_bytes[TagAt] == Heap) Release();
    }

    bool HasValue() const noexcept { return m_bytes[TagAt] != Unset; }

    /// The characters; empty while unset. Good until the string is changed or moved.
    std::string_view View() const noexcept
    {
        if (m_bytes[TagAt] <= InPlace) return {reinterpret_cast<const char*>(m_bytes), m_bytes[TagAt]};
        return m_bytes[TagAt] == Heap ? HeapView() : std::string_view();
    }

    /// The bytes of the block of its own, with what the allocator adds; 0 for a string in place.
    std::size_t BlockBytes() const noexcept
    {
        return m_bytes[TagAt] == Heap ? ((HeapView().size() + 8 + 15) & ~std::size_t(15)) : 0;
    }

    void Set(std::string_view text);
    void Clear() noexcept;

private:
    static constexpr std::size_t TagAt = 15;
    static constexpr unsigned char InPlace = 15; // the last byte is the length of a string in place ...
    static constexpr unsigned char Heap = 0xFE;  // ... or one of these
    static constexpr unsigned char Unset = 0xFF;

    std::string_view HeapView() const noexcept;
    void Release() noexcept;

    alignas(8) unsigned char m_bytes[16];
};

} // namespace Tarn::Fjel::Core::Keywords
