#include "text/PeekingTokenizer.h"

namespace Tarn::Fjel::Core::DeckManager {

bool PeekingTokenizer::Next(std::string& token, bool* quoted, bool allowCommas)
{
    std::string_view view;
    const bool found = NextView(view, quoted, allowCommas);
    token.assign(view);
    return found;
}

bool PeekingTokenizer::NextView(std::string_view& token, bool* quoted, bool allowCommas)
{
    if (!m_hasPeeked) return m_inner->NextView(token, quoted, allowCommas);
    token = m_peekedToken;
    if (quoted) *quoted = m_peekedQuoted;
    m_hasPeeked = false;
    return true;
}

bool PeekingTokenizer::Peek(std::string& token, bool* quoted)
{
    std::string_view view;
    if (!PeekView(view, quoted)) return false;
    token.assign(view);
    return true;
}

bool PeekingTokenizer::PeekView(std::string_view& token, bool* quoted)
{
    if (!m_hasPeeked) {
        const bool atBegin = m_inner->AtBegin();
        std::string_view next;
        bool nextQuoted = false;
        if (!m_inner->NextView(next, &nextQuoted, false)) return false;
        m_peekedToken.assign(next);
        m_peekedQuoted = nextQuoted;
        m_peekedAtBegin = atBegin;
        m_hasPeeked = true;
    }
    token = m_peekedToken;
    if (quoted) *quoted = m_peekedQuoted;
    return true;
}

} // namespace Tarn::Fjel::Core::DeckManager
