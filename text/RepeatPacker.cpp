#include "text/RepeatPacker.h"

#include <algorithm>
#include <charconv>

#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

constexpr std::string_view defaultToken = VeldaneDeckInfo::DEFAULT_TOKEN;
constexpr char separator = VeldaneDeckInfo::SEPARATOR_TOKEN[0];
static_assert(VeldaneDeckInfo::SEPARATOR_TOKEN[1] == 0);

std::size_t Digits(std::int64_t number)
{
    std::size_t digits = 1;
    for (; number >= 10; number /= 10)
        ++digits;
    return digits;
}

} // namespace

bool RepeatPacker::IsDefault() const
{
    return Holds(defaultToken);
}

bool RepeatPacker::IsJoined() const
{
    const std::int32_t limit = IsDefault() ? defaultRepeatLimit : valueRepeatLimit;
    return limit > 0 && m_repeats >= limit && !Service::AllBlanks(std::string_view(m_line).substr(m_token));
}

std::size_t RepeatPacker::RepeatedWidth() const
{
    const std::size_t length = m_line.size() - m_token;
    if (IsJoined()) return m_token + Digits(m_repeats) + defaultToken.size() + (IsDefault() ? 0 : length);
    return m_line.size() + static_cast<std::size_t>(m_repeats) * (length + 1);
}

void RepeatPacker::Begin(std::string_view token)
{
    WriteOut(false);
    if (!m_line.empty()) m_line += separator;
    m_token = m_line.size();
    m_line += token;
    m_hasRun = true;
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

void RepeatPacker::WriteOut(bool atContainerEnd)
{
    if (!m_hasRun) return;
    if (atContainerEnd && dropTrailingDefaults && IsDefault()) {
        m_line.resize(m_token > 0 ? m_token - 1 : 0); // a terminator means the same
    } else if (m_repeats > 0 && IsJoined()) {
        const bool isDefault = IsDefault();
        const std::string_view token = std::string_view(m_line).substr(m_token);
        const std::size_t indent = token.size() - Service::TrimmedLeft(token).size();
        char count[24];
        char* end = std::to_chars(count, count + sizeof count - 1, m_repeats + 1).ptr;
        *end++ = VeldaneDeckInfo::REPEAT_CHAR;
        m_line.insert(m_token + indent, count, static_cast<std::size_t>(end - count));
        if (isDefault) m_line.resize(m_line.size() - defaultToken.size());
    } else {
        const std::size_t length = m_line.size() - m_token;
        for (; m_repeats > 0; --m_repeats) {
            m_line += separator;
            m_line.append(m_line, m_token, length);
        }
    }
    m_repeats = 0;
    m_hasRun = false;
}

void RepeatPacker::Clear()
{
    m_line.clear();
    m_repeats = 0;
    m_hasRun = false;
}

} // namespace Tarn::Fjel::Core::DeckManager
