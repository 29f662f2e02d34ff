#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::DeckManager {

/// A line in hand, at whose end a run of equal tokens may stand that isn't written out yet.
class RepeatPacker
{
public:
    /// The line. While there is a run, it stands there as one token.
    std::string& Line() { return m_line; }

    /// The width that the line would have with the run written out, at most.
    std::size_t Width() const
    {
        if (m_repeats == 0) return m_line.size();
        return RepeatedWidth();
    }

    /// REQUIRES: the token isn't empty.
    void Add(std::string_view token)
    {
        if (Holds(token))
            ++m_repeats;
        else
            Begin(token);
    }
    /// Lengthens the run by one at least, by more as long as that makes it no wider, and by `count` at most; returns by
    /// how much. REQUIRES: `Holds(token)` of the token to be repeated, and count > 0.
    std::int64_t Repeat(std::int64_t count);
    bool Holds(std::string_view token) const { return m_hasRun && std::string_view(m_line).substr(m_token) == token; }

    /// Writes the run into the line; at the end of a container it may be dropped instead.
    void WriteOut(bool atContainerEnd);
    void Clear();

    bool dropTrailingDefaults = true;
    std::int32_t valueRepeatLimit = 0;
    std::int32_t defaultRepeatLimit = 0;

private:
    void Begin(std::string_view token);
    std::size_t RepeatedWidth() const;
    bool IsDefault() const;
    bool IsJoined() const;

    std::string m_line;
    std::size_t m_token = 0;    ///< where the run's token begins in the line
    std::int64_t m_repeats = 0; ///< one less than the run has tokens
    bool m_hasRun = false;
};

} // namespace Tarn::Fjel::Core::DeckManager
