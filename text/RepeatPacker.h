#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::DeckManager {

/// A line in hand, and behind it a run of equal tokens that isn't written into it yet.
class RepeatPacker
{
public:
    /// The line without the run. Whoever writes it out clears the packer.
    std::string& Line() { return m_line; }
    /// The width that the line would have with the run in it, at most.
    std::size_t Width() const;

    /// REQUIRES: the token isn't empty.
    void Add(std::string_view token);
    /// Lengthens the run by one at least, by more as long as that makes it no wider, and by `count` at most; returns by
    /// how much. REQUIRES: `Holds(token)` of the token to be repeated, and count > 0.
    std::int64_t Repeat(std::int64_t count);
    bool Holds(std::string_view token) const { return m_token == token; }

    /// Writes the run into the line; at the end of a container it may be dropped instead.
    void WriteOut(bool atContainerEnd);
    void Clear();

    bool dropTrailingDefaults = true;
    std::int32_t valueRepeatLimit = 0;
    std::int32_t defaultRepeatLimit = 0;

private:
    bool IsJoined() const;
    void AppendToken(std::string_view token);

    std::string m_line;
    std::string m_token;        ///< of the run; empty for no run
    std::int64_t m_repeats = 0; ///< one less than the run has tokens
    bool m_isDefault = false;
    bool m_isBlank = false; ///< an indent, which is never repeated
};

} // namespace Tarn::Fjel::Core::DeckManager
