#pragma once

#include <memory>

#include "text/IStringTokenizer.h"

namespace Tarn::Fjel::Core::DeckManager {

/// Lets a reader look at the next token without taking it.
class PeekingTokenizer final : public IStringTokenizer
{
public:
    explicit PeekingTokenizer(std::unique_ptr<IStringTokenizer> inner) : m_inner(std::move(inner)) {}

    void SetText(const std::string* text) override
    {
        m_inner->SetText(text);
        m_hasPeeked = false;
    }
    /// A token that was peeked comes as the peek cut it, whatever `allowCommas` says.
    bool Next(std::string& token, bool* quoted, bool allowCommas) override;
    bool AtBegin() const override { return m_hasPeeked ? m_peekedAtBegin : m_inner->AtBegin(); }
    bool NextView(std::string_view& token, bool* quoted, bool allowCommas) override;
    std::int32_t TakeRepeats() override { return m_hasPeeked ? 0 : m_inner->TakeRepeats(); }

    /// The next token, which stays. At the end of the line false; `token` and `quoted` are then what they were.
    bool Peek(std::string& token, bool* quoted);
    /// As `Peek`, without a copy: the view is good until the next call of `SetText`, `Next` or `NextView`.
    bool PeekView(std::string_view& token, bool* quoted);

    /// Whether a token has been peeked and not taken.
    bool HasPeeked() const { return m_hasPeeked; }
    IStringTokenizer& Inner() { return *m_inner; }

private:
    std::unique_ptr<IStringTokenizer> m_inner;
    std::string m_peekedToken;
    bool m_hasPeeked = false;
    bool m_peekedQuoted = false;
    bool m_peekedAtBegin = false;
};

} // namespace Tarn::Fjel::Core::DeckManager
