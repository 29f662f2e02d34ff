#pragma once

#include "text/Tokenizer.h"

namespace Tarn::Fjel::Core::DeckManager {

/// Turns `n*value` into n tokens and `n*` into n default tokens. A quoted token is final, and so is a token whose count
/// has more than nine digits.
class ExpandingTokenizer final : public IStringTokenizer
{
public:
    void SetText(const std::string* text) override
    {
        m_inner.SetText(text);
        m_repeatCount = 0;
    }
    bool Next(std::string& token, bool* quoted, bool allowCommas) override;
    bool AtBegin() const override { return m_inner.AtBegin(); }
    bool NextView(std::string_view& token, bool* quoted, bool allowCommas) override;
    std::int32_t TakeRepeats() override
    {
        const std::int32_t count = m_repeatCount;
        m_repeatCount = 0;
        return count;
    }

    /// As `TakeRepeats`, at most that many copies; the others stay.
    std::int32_t TakeRepeats(std::int32_t most)
    {
        const std::int32_t count = most < m_repeatCount ? most : m_repeatCount;
        m_repeatCount -= count;
        return count;
    }

    /// The copies still to be given.
    std::int32_t RepeatCount() const { return m_repeatCount; }
    Tokenizer& Inner() { return m_inner; }

private:
    bool ParseRepeat(std::string_view token);

    Tokenizer m_inner;
    std::int32_t m_repeatCount = 0;
    std::string m_value;
};

} // namespace Tarn::Fjel::Core::DeckManager
