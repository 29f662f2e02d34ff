#include "output/Json.h"

#include <cstddef>
#include <iterator>

#include <fmt/format.h>

namespace Deckman {

namespace {

/// The length of the UTF-8 sequence at the head of `text`; 0 when there is none.
std::size_t SequenceLength(std::string_view text)
{
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC2 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    if (length > text.size()) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return 0;
    }
    // Overlong forms, surrogates, and what lies behind the last character.
    if (lead == 0xE0 && byte(1) < 0xA0) return 0;
    if (lead == 0xED && byte(1) > 0x9F) return 0;
    if (lead == 0xF0 && byte(1) < 0x90) return 0;
    if (lead == 0xF4 && byte(1) > 0x8F) return 0;
    return length;
}

bool IsPlain(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x20 && byte < 0x7F && c != '"' && c != '\\';
}

template <class Append>
void Escape(std::string_view text, Append&& append)
{
    append("\"");
    while (!text.empty()) {
        std::size_t plain = 0;
        while (plain < text.size() && IsPlain(text[plain]))
            ++plain;
        append(text.substr(0, plain));
        text.remove_prefix(plain);
        if (text.empty()) break;

        const char c = text.front();
        const std::size_t length = SequenceLength(text);
        if (length > 1)
            append(text.substr(0, length));
        else if (c == '"')
            append("\\\"");
        else if (c == '\\')
            append("\\\\");
        else if (c == '\n')
            append("\\n");
        else if (c == '\t')
            append("\\t");
        else if (c == '\r')
            append("\\r");
        else
            append(fmt::format("\\u{:04x}", static_cast<unsigned>(static_cast<unsigned char>(c))));
        text.remove_prefix(length > 1 ? length : 1);
    }
    append("\"");
}

} // namespace

std::string JsonString(std::string_view text)
{
    std::string result;
    Escape(text, [&result](std::string_view piece) { result.append(piece); });
    return result;
}

void AppendJsonString(Output& out, std::string_view text)
{
    Escape(text, [&out](std::string_view piece) { out.Append(piece); });
}

} // namespace Deckman
