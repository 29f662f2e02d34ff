#include "text/Tokenizer.h"

#include <array>
#include <cstring>
#include <optional>

#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/service/Log.h>
#include <tarn/service/MessageCapper.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

const char* FindQuote(const char* from, const char* end)
{
    return static_cast<const char*>(std::memchr(from, VeldaneDeckInfo::QUOTE, static_cast<std::size_t>(end - from)));
}

/// What a character means to a word that is to be taken in one go.
enum class InWord : unsigned char
{
    Plain,
    Ends,  ///< a blank or a terminator
    Asks,  ///< the tokenizer must look closer
    Dash,  ///< two of them begin a comment
    Repeat ///< part of a default token, maybe
};

constexpr std::array<InWord, 256> MakeInWord()
{
    std::array<InWord, 256> table{};
    for (const char c : {' ', '\t', '\n', '\v', '\f', '\r', VeldaneDeckInfo::TERMINATION})
        table[static_cast<unsigned char>(c)] = InWord::Ends;
    for (const char c : {',', VeldaneDeckInfo::QUOTE, '$'})
        table[static_cast<unsigned char>(c)] = InWord::Asks;
    table[static_cast<unsigned char>(VeldaneDeckInfo::DASH)] = InWord::Dash;
    table[static_cast<unsigned char>(VeldaneDeckInfo::REPEAT_CHAR)] = InWord::Repeat;
    return table;
}

constexpr std::array<InWord, 256> inWord = MakeInWord();

std::string_view Slice(const char* begin, const char* end)
{
    return std::string_view(begin, static_cast<std::size_t>(end - begin));
}

/// Nothing but comment and blanks stands from column `limit` on.
bool IsCommentFrom(std::string_view text, std::size_t limit)
{
    bool inQuotes = false;
    bool wordBegins = true;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (!inQuotes && wordBegins && VeldaneDeckInfo::BeginsWithCommentMarker(text.substr(at))) return true;
        if (at >= limit && !Service::IsSpace(c)) return false;
        const bool isQuote = c == VeldaneDeckInfo::QUOTE && (inQuotes || wordBegins);
        if (isQuote) inQuotes = !inQuotes;
        wordBegins = isQuote || c == ',' || c == VeldaneDeckInfo::TERMINATION || Service::IsSpace(c);
    }
    return true;
}

} // namespace

void Tokenizer::SetText(const std::string* text)
{
    m_text = text;
    if (!text) {
        m_cursor = m_begin = m_textEnd = m_limit = nullptr;
        return;
    }
    m_cursor = m_begin = text->data();
    m_textEnd = m_cursor + text->size();
    m_limit = m_textEnd;
    if (text->size() > static_cast<std::size_t>(MaxLineLength)) {
        m_limit = m_cursor + MaxLineLength;
        // Nobody misses a comment.
        std::optional<Service::Log::Probe> harmless;
        if (IsCommentFrom(*text, static_cast<std::size_t>(MaxLineLength))) harmless.emplace();
        Service::MessageCapper::instance().logW(
            "Line exceeds the maximum VELDANE keyword line length of 132 characters.  "
            "Anything beyond 132 characters will be ignored.");
    }
    m_atStart = true;
    m_ended = false;
}

bool Tokenizer::Next(std::string& token, bool* quoted, bool allowCommas)
{
    std::string_view view;
    const bool found = NextView(view, quoted, allowCommas);
    token.assign(view);
    return found;
}

bool Tokenizer::NextView(std::string_view& token, bool* quoted, bool allowCommas)
{
    token = {};
    bool found = false;
    bool isQuoted = false;
    while (!found && !m_ended) {
        while (m_cursor < m_limit && Service::IsSpace(*m_cursor))
            ++m_cursor;
        if (m_cursor >= m_limit) break;
        m_begin = m_cursor;
        const char c = *m_cursor;
        if (c == VeldaneDeckInfo::QUOTE) {
            isQuoted = found = Quoted(token);
        } else if (c == ',' && !allowCommas) {
            found = Comma(token);
        } else if (c == VeldaneDeckInfo::TERMINATION || (c == VeldaneDeckInfo::REPEAT_CHAR && m_repeatAsToken)) {
            token = Slice(m_cursor, m_cursor + 1);
            ++m_cursor;
            found = true;
        } else {
            token = Word(allowCommas);
            found = true;
        }
        m_atStart = false;
    }
    if (found && !isQuoted && VeldaneDeckInfo::BeginsWithCommentMarker(token)) {
        m_ended = true;
        found = false;
    }
    if (quoted) *quoted = isQuoted;
    return found;
}

bool Tokenizer::TakeSimple(std::string_view& token, bool& quoted)
{
    if (m_ended || m_repeatAsToken) return false;
    const char* begin = m_cursor;
    while (begin < m_limit && Service::IsSpace(*begin))
        ++begin;
    if (begin >= m_limit) return false;
    const char* const first = begin;
    const char* cursor = begin;
    if (*begin == VeldaneDeckInfo::TERMINATION) {
        ++cursor;
        quoted = false;
        token = Slice(begin, cursor);
    } else if (*begin == VeldaneDeckInfo::QUOTE) {
        ++begin;
        do {
            if (++cursor >= m_limit || *cursor == '$') return false;
        } while (*cursor != VeldaneDeckInfo::QUOTE);
        token = Service::Trimmed(Slice(begin, cursor));
        quoted = true;
        ++cursor;
    } else {
        for (; cursor < m_limit; ++cursor) {
            const InWord meaning = inWord[static_cast<unsigned char>(*cursor)];
            if (meaning == InWord::Plain) continue;
            if (meaning == InWord::Ends) break;
            if (meaning == InWord::Asks) return false;
            if (meaning == InWord::Dash) {
                if (cursor + 1 < m_limit && cursor[1] == VeldaneDeckInfo::DASH) return false;
            } else if (cursor != begin + 1 || *begin != '1') {
                return false;
            }
        }
        token = Slice(begin, cursor);
        if (token.size() > 2 && token[1] == VeldaneDeckInfo::REPEAT_CHAR) return false; // 1*value
        quoted = false;
    }
    m_begin = first;
    m_cursor = cursor;
    m_atStart = false;
    return true;
}

/// A quoted string may end behind the limit. Without an end the rest is read as if the quote weren't there.
bool Tokenizer::Quoted(std::string_view& token)
{
    ++m_cursor;
    const char* closing = FindQuote(m_cursor, m_textEnd);
    if (!closing) {
        ReportUnbalancedQuote();
        return false;
    }
    token = Service::Trimmed(Slice(m_cursor, closing));
    m_cursor = closing + 1;
    return true;
}

/// A comma separates; with nothing ahead of it, or between it and the comma before, it stands for a defaulted item.
bool Tokenizer::Comma(std::string_view& token)
{
    if (m_atStart) {
        token = VeldaneDeckInfo::DEFAULT_TOKEN;
        return true;
    }
    const char* next = m_cursor + 1;
    while (next < m_limit && Service::IsSpace(*next))
        ++next;
    if (next >= m_limit) {
        m_cursor = m_limit;
        return false;
    }
    if (*next != ',') {
        ++m_cursor;
        return false;
    }
    token = VeldaneDeckInfo::DEFAULT_TOKEN;
    m_cursor = next;
    return true;
}

/// A word is a slice of the line, but for a quote without a partner, which is left out.
std::string_view Tokenizer::Word(bool allowCommas)
{
    const char* begin = m_cursor;
    const bool isComment = VeldaneDeckInfo::BeginsWithCommentMarker(Slice(begin, m_limit));
    const char* cursor = begin + 1;
    const char* quotedEnd = nullptr;
    bool gathered = false;
    for (; cursor < m_limit; ++cursor) {
        const char c = *cursor;
        if (Service::IsSpace(c) || c == VeldaneDeckInfo::TERMINATION) break;
        if (c == ',' && !allowCommas) break;
        if (c == VeldaneDeckInfo::REPEAT_CHAR && m_repeatAsToken) break;
        if (c == VeldaneDeckInfo::DASH) {
            const bool followsDash = cursor != quotedEnd && cursor[-1] == VeldaneDeckInfo::DASH;
            if (cursor + 1 < m_limit && cursor[1] == VeldaneDeckInfo::DASH && !followsDash) break;
        } else if (c == VeldaneDeckInfo::QUOTE) {
            if (const char* closing = FindQuote(cursor + 1, m_limit)) {
                cursor = closing;
                quotedEnd = closing + 1;
            } else {
                // What stands behind a comment marker is prose, and its apostrophe no quote.
                std::optional<Service::Log::Probe> harmless;
                if (isComment) harmless.emplace();
                ReportUnbalancedQuote();
                if (!gathered) m_scratch.clear();
                gathered = true;
                m_scratch.append(begin, cursor);
                begin = cursor + 1;
            }
        }
    }
    m_cursor = cursor;
    if (!gathered) return Slice(begin, cursor);
    m_scratch.append(begin, cursor);
    return m_scratch;
}

void Tokenizer::ReportUnbalancedQuote() const
{
    Service::Log::SendLogMessage("Unbalanced quote while reading keyword data: " + *m_text, Service::Log::Error);
}

} // namespace Tarn::Fjel::Core::DeckManager
