#include "keywords/TextSplice.h"

#include <algorithm>

#include <deckmanager/LineReaderUtil.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <fmt/format.h>
#include <tarn/service/Strings.h>

#include "text/LineStringReader.h"
#include "text/Tokenizer.h"

namespace Tarn::Fjel::Core::DeckManager {

namespace {

constexpr std::size_t lineLimit = Tokenizer::MaxLineLength;

bool IsBlank(char c)
{
    return c != '\n' && VeldaneDeckInfo::IsSpace(c);
}

std::string_view RawOf(std::string_view text, const SlotPlaces::Token& token)
{
    return text.substr(static_cast<std::size_t>(token.begin), static_cast<std::size_t>(token.end - token.begin));
}

/// What a repeat repeats, as it stands; empty for a default.
std::string_view RepeatedValue(std::string_view raw)
{
    std::size_t digits = 0;
    while (digits < raw.size() && Service::IsDigit(raw[digits]))
        ++digits;
    return digits > 0 && digits < raw.size() && raw[digits] == VeldaneDeckInfo::REPEAT_CHAR ? raw.substr(digits + 1)
                                                                                            : raw;
}

/// `count` copies of a value, with a blank on one side; nothing for none.
std::string Copies(std::string_view value, std::int64_t count)
{
    if (count <= 0) return {};
    if (value.empty()) return DefaultsToken(count);
    return count == 1 ? std::string(value) : fmt::format("{}*{}", count, value);
}

std::string Joined(std::string first, std::string_view second)
{
    if (!first.empty() && !second.empty()) first += ' ';
    return first += second;
}

/// A default that stands between two commas, or ahead of the first.
bool IsMadeByComma(std::string_view raw)
{
    return raw.empty() || raw.front() == ',';
}

/// Behind the last character that is data: ahead of a comment, or behind the first terminator.
std::size_t DataEnd(std::string_view text, std::size_t begin, std::size_t end)
{
    for (std::size_t at = TextLines::FirstOfLine(text, begin); at < end; ++at) {
        if (text[at] == VeldaneDeckInfo::TERMINATION) return at + 1;
        if (text.substr(at, end - at).starts_with(VeldaneDeckInfo::COMMENT_MARKER)) return at;
        if (text[at] == VeldaneDeckInfo::QUOTE) at = std::min(text.find(VeldaneDeckInfo::QUOTE, at + 1), end);
    }
    return end;
}

/// Where the line that begins at `begin` and passes the limit is best broken: at the blanks behind the last token that
/// keeps within it. What stands behind a terminator, and a comment, stay in one piece. npos when there is no place.
std::size_t BreakOf(std::string_view text, std::size_t begin, std::size_t end)
{
    const std::size_t first = TextLines::FirstOfLine(text, begin);
    std::size_t best = std::string_view::npos;
    std::size_t at = first;
    const std::string_view behindMarkers = VeldaneDeckInfo::SkipSuppressMarker(text.substr(begin, end - begin));
    const std::size_t head = end - behindMarkers.size();
    while (at < end) {
        if (text.substr(at, end - at).starts_with(VeldaneDeckInfo::COMMENT_MARKER) ||
            text[at] == VeldaneDeckInfo::TERMINATION)
            break;
        if (text[at] == VeldaneDeckInfo::QUOTE) {
            const std::size_t closing = text.substr(0, end).find(VeldaneDeckInfo::QUOTE, at + 1);
            if (closing == std::string_view::npos) break;
            at = closing + 1;
        } else if (IsBlank(text[at])) {
            const std::size_t blanks = at;
            while (at < end && IsBlank(text[at]))
                ++at;
            if (blanks - head > lineLimit || at == end) break;
            best = blanks;
        } else {
            ++at;
        }
    }
    return best;
}

/// Breaks the line at `begin` as often as needed. Returns where the line behind it begins.
std::size_t BreakLine(std::string& text, std::size_t begin, bool& fits)
{
    for (;;) {
        const std::size_t end = TextLines::End(text, begin);
        const std::size_t size =
            VeldaneDeckInfo::SkipSuppressMarker(std::string_view(text).substr(begin, end - begin)).size();
        if (size <= lineLimit) return TextLines::Next(text, begin);
        const std::size_t at = BreakOf(text, begin, end);
        if (at == std::string_view::npos) {
            fits = false;
            return TextLines::Next(text, begin);
        }
        std::size_t behind = at;
        while (behind < end && IsBlank(text[behind]))
            ++behind;
        // A blank at least, so that no word of data is taken for a keyword.
        std::string lead(TextLines::LineEndAt(text, begin));
        const std::size_t leadEnd = lead.size();
        lead += std::string_view(text).substr(begin, TextLines::FirstOfLine(text, begin) - begin);
        if (lead.empty() || !IsBlank(lead.back()) || lead.size() == leadEnd) lead += ' ';
        text.replace(at, behind - at, lead);
        begin = at + leadEnd;
    }
}

} // namespace

namespace TextLines {

std::size_t Begin(std::string_view text, std::size_t position)
{
    const std::size_t feed = position == 0 ? std::string_view::npos : text.rfind('\n', position - 1);
    return feed == std::string_view::npos ? 0 : feed + 1;
}

std::size_t End(std::string_view text, std::size_t position)
{
    std::size_t end = std::min(text.find('\n', position), text.size());
    if (end > position && end < text.size() && text[end - 1] == '\r') --end;
    return end;
}

std::size_t Next(std::string_view text, std::size_t position)
{
    const std::size_t feed = text.find('\n', position);
    return feed == std::string_view::npos ? text.size() : feed + 1;
}

std::size_t FirstOfLine(std::string_view text, std::size_t begin)
{
    const std::size_t end = End(text, begin);
    const std::string_view line = text.substr(begin, end - begin);
    std::size_t at = begin + (line.size() - VeldaneDeckInfo::SkipSuppressMarker(line).size());
    while (at < end && IsBlank(text[at]))
        ++at;
    return at;
}

bool IsAtHead(std::string_view text, std::size_t position)
{
    const std::size_t begin = Begin(text, position);
    return VeldaneDeckInfo::SkipSuppressMarker(text.substr(begin, position - begin)).empty();
}

std::string_view LineEndAt(std::string_view text, std::size_t position)
{
    std::size_t feed = text.find('\n', position);
    if (feed == std::string_view::npos) feed = text.rfind('\n');
    return feed != std::string_view::npos && feed > 0 && text[feed - 1] == '\r' ? "\r\n" : "\n";
}

bool LooksLikeKeyword(std::string_view text, std::size_t begin)
{
    if (begin >= text.size()) return false;
    const std::string_view line = VeldaneDeckInfo::SkipSuppressMarker(text.substr(begin, End(text, begin) - begin));
    if (line.empty() || !Service::IsAlpha(line.front())) return false;
    LineStringReader reader{std::string(line)};
    std::string keyword;
    return LineReaderUtil::FindNextKeywordInAnySection(reader, keyword);
}

} // namespace TextLines

std::string DefaultsToken(std::int64_t count)
{
    return count == 1 ? VeldaneDeckInfo::DEFAULT_TOKEN : fmt::format("{}{}", count, VeldaneDeckInfo::REPEAT_CHAR);
}

TextSplice TextSplice::Replacing(std::string_view text, const SlotPlaces::Token& token, std::string_view replacement)
{
    const std::string_view raw = RawOf(text, token);
    TextSplice splice{static_cast<std::size_t>(token.begin), static_cast<std::size_t>(token.end),
                      std::string(replacement)};
    if (IsMadeByComma(raw)) {
        splice.begin += raw.size() > 0 ? 1 : 0;
        splice.end = splice.begin;
    } else if (token.copies > 1) {
        const std::string_view value = RepeatedValue(raw);
        splice.replacement =
            Joined(Joined(Copies(value, token.copy), replacement), Copies(value, token.copies - token.copy - 1));
    }
    return splice;
}

TextSplice TextSplice::InsertingAhead(std::string_view text, const SlotPlaces::Token& token, std::string_view inserted)
{
    TextSplice splice{static_cast<std::size_t>(token.begin), static_cast<std::size_t>(token.begin),
                      std::string(inserted) + ' '};
    if (token.copy > 0) {
        const std::string_view value = RepeatedValue(RawOf(text, token));
        splice.end = static_cast<std::size_t>(token.end);
        splice.replacement =
            Joined(Joined(Copies(value, token.copy), inserted), Copies(value, token.copies - token.copy));
    }
    return splice;
}

TextSplice TextSplice::InsertingBehind(const SlotPlaces::Token& token, std::string_view inserted)
{
    const auto at = static_cast<std::size_t>(token.end);
    return {at, at, ' ' + std::string(inserted)};
}

TextSplice TextSplice::Removing(std::string_view text, const SlotPlaces::Token& token)
{
    TextSplice splice{static_cast<std::size_t>(token.begin), static_cast<std::size_t>(token.end), {}};
    if (token.copies > 1) {
        splice.replacement = Copies(RepeatedValue(RawOf(text, token)), token.copies - 1);
        return splice;
    }
    const std::size_t lineBegin = TextLines::Begin(text, splice.begin);
    const std::size_t lineEnd = TextLines::End(text, splice.begin);
    const std::size_t first = TextLines::FirstOfLine(text, lineBegin);
    std::size_t behind = splice.end;
    while (behind < lineEnd && IsBlank(text[behind]))
        ++behind;
    if (behind < lineEnd && text[behind] == ',') {
        splice.end = behind + 1;
        return splice;
    }
    if (first == splice.begin) {
        splice.end = behind;
        if (behind == lineEnd) {
            splice.begin = lineBegin;
            splice.end = TextLines::Next(text, lineBegin);
        }
        return splice;
    }
    const bool endsLine = behind == lineEnd || text.substr(behind).starts_with(VeldaneDeckInfo::COMMENT_MARKER);
    if (!endsLine) {
        splice.end = behind;
        return splice;
    }
    while (splice.begin > first && (IsBlank(text[splice.begin - 1]) || text[splice.begin - 1] == ','))
        --splice.begin;
    return splice;
}

std::string TextSplice::Apply(std::string_view text, bool& fits) const
{
    fits = true;
    const std::size_t oldLine = TextLines::End(text, begin) - TextLines::Begin(text, begin);
    std::string result;
    result.reserve(text.size() + replacement.size() + 8);
    result.append(text.substr(0, begin)).append(replacement).append(text.substr(end));
    std::size_t line = TextLines::Begin(result, begin);
    // What lay beyond the limit already is nobody's data.
    if (oldLine > lineLimit && DataEnd(result, line, TextLines::End(result, line)) - line <= lineLimit) return result;
    std::size_t last = begin + replacement.size();
    do {
        const std::size_t before = result.size();
        line = BreakLine(result, line, fits);
        last += result.size() - before;
    } while (line < last);
    return result;
}

} // namespace Tarn::Fjel::Core::DeckManager
