#include "text/RepeatPacker.h"

#include <algorithm>
#include <charconv>

#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

constexpr std::string_view defaultToken = VeldaneDeckInfo::DEFAULT_TOKEN;
constexpr std::string_view separator = VeldaneDeckInfo::SEPARATOR_TOKEN;

std::size_t Digits(std::int64_t number)
{
    std::size_t digits = 1;
    for (; number >= 10; number /= 10)
        ++digits;
    return digits;
}

} // namespace

bool RepeatPacker::IsJoined() const
{
    const std::int32_t limit = m_isDefault ? defaultRepeatLimit : valueRepeatLimit;
    return limit > 0 && m_repeats >= limit && !m_isBlank;
}

std::size_t RepeatPacker::Width() const
{
    if (m_token.empty()) return m_line.size();
    const std::size_t before = m_line.empty() ? 0 : m_line.size() + separator.size();
    if (IsJoined()) return before + Digits(m_repeats) + defaultToken.size() + (m_isDefault ? 0 : m_token.size());
    const std::size_t repeats = static_cast<std::size_t>(m_repeats);
    return before + m_token.size() + repeats * (m_token.size() + separator.size());
}

void RepeatPacker::Add(std::string_view token)
{
    if (m_token == token) {
        ++m_repeats;
        return;
    }
    WriteOut(false);
    m_token.assign(token);
    m_isDefault = token == defaultToken;
    m_isBlank = token.front() == ' ' && Service::AllBlanks(token);
}

std::int64_t RepeatPacker::Repeat(std::int64_t count)
{
    std::int64_t step = 1;
    if (IsJoined()) {
        std::int64_t bound = 9; // the largest number of as many digits
        while (bound < m_repeats)
            bound = bound * 10 + 9;
        step = std::clamp<std::int64_t>(bound - m_repeats, 1, count);
    }
    m_repeats += step;
    return step;
}

void RepeatPacker::AppendToken(std::string_view token)
{
    if (!m_line.empty()) m_line += separator;
    m_line += token;
}

void RepeatPacker::WriteOut(bool atContainerEnd)
{
    if (m_token.empty()) return;
    if (atContainerEnd && dropTrailingDefaults && m_isDefault) {
        // A terminator means the same.
    } else if (IsJoined()) {
        const std::string_view token = m_token;
        const std::size_t indent = token.size() - Service::TrimmedLeft(token).size();
        AppendToken(token.substr(0, indent));
        char digits[24];
        m_line.append(digits, std::to_chars(digits, digits + sizeof digits, m_repeats + 1).ptr);
        m_line += VeldaneDeckInfo::REPEAT_CHAR;
        if (!m_isDefault) m_line += token.substr(indent);
    } else {
        for (std::int64_t copy = 0; copy <= m_repeats; ++copy)
            AppendToken(m_token);
    }
    m_token.clear();
    m_repeats = 0;
    m_isDefault = m_isBlank = false;
}

void RepeatPacker::Clear()
{
    m_line.clear();
    m_token.clear();
    m_repeats = 0;
    m_isDefault = m_isBlank = false;
}

} // namespace Tarn::Fjel::Core::DeckManager
