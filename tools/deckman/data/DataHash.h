#pragma once

#include <bit>
#include <cstdint>
#include <string_view>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
class IKeywordListData;
} // namespace Tarn::Fjel::Core::Keywords

namespace Deckman {

namespace Keywords = Tarn::Fjel::Core::Keywords;

class ValueReader;

/// A running hash of 64 bits.
class Hash
{
public:
    void Add(std::uint64_t value)
    {
        m_state = (std::rotl(m_state, 29) ^ value) * 0x9E3779B97F4A7C15ULL;
        m_state ^= m_state >> 32;
    }
    void Add(std::string_view text);
    std::uint64_t Value() const { return m_state; }

private:
    std::uint64_t m_state = 0x243F6A8885A308D3ULL;
};

/// A hash of all values of a tree, references to variables among them. Trees that say the same have the same: how
/// values were written, and unset values at a list's end, don't count.
std::uint64_t ContentHash(const Keywords::IKeywordData& data, ValueReader& values);

/// A hash of what tells the tree from others of its kind: the identifying items of its records, in order. Strings
/// compare without regard to case.
std::uint64_t IdentityHash(const Keywords::IKeywordData& data, ValueReader& values);

/// The elements of a list of items without the unset ones at its end.
int CountToLastValue(const Keywords::IKeywordListData& list, ValueReader& values);

} // namespace Deckman
