#include "text/ExpandingTokenizer.h"

#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

/// A longer count is no count: the token stays as it is, and converts to nothing.
constexpr std::size_t MaxCountDigits = 9;

} // namespace

bool ExpandingTokenizer::Next(std::string& token, bool* quoted, bool allowCommas)
{
    std::string_view view;
    const bool found = NextView(view, quoted, allowCommas);
    token.assign(view);
    return found;
}

bool ExpandingTokenizer::NextView(std::string_view& token, bool* quoted, bool allowCommas)
{
    bool behindRepeat = false;
    for (;;) {
        if (m_repeatCount != 0) {
            token = m_value;
            --m_repeatCount;
            if (quoted) *quoted = false;
            return true;
        }
        bool isQuoted = false;
        const bool found = m_inner.NextView(token, &isQuoted, allowCommas);
        if (quoted) *quoted = isQuoted && !behindRepeat;
        if (!found) return false;
        if (isQuoted || !ParseRepeat(token)) return true;
        // A count of 0 gives nothing: what stands behind it comes in its place, as a repeated value would.
        behindRepeat = true;
        allowCommas = false;
    }
}

/// Takes a token of the form `n*value` for a repeat.
bool ExpandingTokenizer::ParseRepeat(std::string_view token)
{
    std::size_t digits = 0;
    std::int32_t count = 0;
    while (digits < token.size() && digits <= MaxCountDigits && Service::IsDigit(token[digits])) {
        if (digits < MaxCountDigits) count = 10 * count + (token[digits] - '0');
        ++digits;
    }
    if (digits == 0 || digits > MaxCountDigits || digits == token.size()) return false;
    if (token[digits] != VeldaneDeckInfo::REPEAT_CHAR) return false;

    m_repeatCount = count;
    std::string_view value = token.substr(digits + 1);
    if (value.empty()) {
        m_value = VeldaneDeckInfo::DEFAULT_TOKEN;
        return true;
    }
    value = Service::Trimmed(value);
    const std::size_t size = value.size();
    if (value.starts_with(VeldaneDeckInfo::QUOTE)) value.remove_prefix(1);
    if (value.ends_with(VeldaneDeckInfo::QUOTE)) value.remove_suffix(1);
    if (value.size() != size) value = Service::Trimmed(value);
    m_value.assign(value);
    return true;
}

} // namespace Tarn::Fjel::Core::DeckManager
