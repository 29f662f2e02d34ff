#include <tarn/keywords/CompactString.h>

#include <cstdint>
#include <cstdlib>
#include <new>

#include <tarn/keywords/KeywordException.h>

namespace Tarn::Fjel::Core::Keywords {

CompactString::CompactString(const CompactString& other) : CompactString()
{
    if (other.HasValue()) Set(other.View());
}

CompactString& CompactString::operator=(const CompactString& other)
{
    if (this == &other) return *this;
    if (other.HasValue()) {
        Set(other.View());
    } else {
        Clear();
    }
    return *this;
}

void CompactString::Set(std::string_view text)
{
    if (text.size() > MaxLength) throw KeywordException("A string of the data is longer than 4 GiB");
    // The text may lie in this very string: the old block goes last, and bytes in place are moved.
    char* old = nullptr;
    if (m_bytes[TagAt] == Heap) std::memcpy(&old, m_bytes, sizeof old);
    if (text.size() <= InPlace) {
        std::memmove(m_bytes, text.data(), text.size());
        m_bytes[TagAt] = static_cast<unsigned char>(text.size());
    } else {
        auto* block = static_cast<char*>(std::malloc(text.size()));
        if (!block) throw std::bad_alloc();
        std::memcpy(block, text.data(), text.size());
        const auto length = static_cast<std::uint32_t>(text.size());
        std::memcpy(m_bytes, &block, sizeof block);
        std::memcpy(m_bytes + sizeof block, &length, sizeof length);
        m_bytes[TagAt] = Heap;
    }
    std::free(old);
}

void CompactString::Clear() noexcept
{
    if (m_bytes[TagAt] == Heap) Release();
    m_bytes[TagAt] = Unset;
}

std::string_view CompactString::HeapView() const noexcept
{
    const char* block;
    std::uint32_t length;
    std::memcpy(&block, m_bytes, sizeof block);
    std::memcpy(&length, m_bytes + sizeof block, sizeof length);
    return {block, length};
}

void CompactString::Release() noexcept
{
    char* block;
    std::memcpy(&block, m_bytes, sizeof block);
    std::free(block);
}

} // namespace Tarn::Fjel::Core::Keywords
