#include <tarn/service/XMLForm.h>

#include <cstddef>
#include <utility>

namespace Tarn::Fjel::Core::Service::XMLForm {

namespace {

constexpr std::string_view hexDigits = "0123456789abcdef";

/// The size of the UTF-8 sequence at the beginning of text; 0 when there is no valid one of several bytes.
std::size_t SequenceSize(std::string_view text)
{
    const auto byte = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
    const auto isNext = [&](std::size_t i) { return (byte(i) & 0xc0) == 0x80; };
    const unsigned first = byte(0);
    if (first >= 0xc2 && first <= 0xdf) return isNext(1) ? 2 : 0;
    if ((first & 0xf0) == 0xe0) {
        if (!isNext(1) || !isNext(2)) return 0;
        if (first == 0xe0 && byte(1) < 0xa0) return 0;                     // longer than it needs to be
        if (first == 0xed && byte(1) > 0x9f) return 0;                     // half of a surrogate pair
        if (first == 0xef && byte(1) == 0xbf && byte(2) >= 0xbe) return 0; // U+FFFE and U+FFFF
        return 3;
    }
    if (first >= 0xf0 && first <= 0xf4) {
        if (!isNext(1) || !isNext(2) || !isNext(3)) return 0;
        if ((first == 0xf0 && byte(1) < 0x90) || (first == 0xf4 && byte(1) > 0x8f)) return 0;
        return 4;
    }
    return 0;
}

bool IsUtf8(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t size = static_cast<unsigned char>(text[0]) < 0x80 ? 1 : SequenceSize(text);
        if (size == 0) return false;
        text.remove_prefix(size);
    }
    return true;
}

int HexValue(char c)
{
    const std::size_t value = hexDigits.find(c);
    return value == std::string_view::npos ? -1 : static_cast<int>(value);
}

} // namespace

std::string Escape(std::string_view text)
{
    const bool isUtf8 = IsUtf8(text);
    std::string escaped;
    escaped.reserve(text.size());
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7f || c == '\\' || (byte > 0x7f && !isUtf8)) {
            escaped += {'\\', 'x', hexDigits[byte >> 4], hexDigits[byte & 15]};
        } else {
            escaped += c;
        }
    }
    return escaped;
}

bool Unescape(std::string_view text, std::string& bytes)
{
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            result += text[i];
            continue;
        }
        if (i + 3 >= text.size() || text[i + 1] != 'x') return false;
        const int high = HexValue(text[i + 2]);
        const int low = HexValue(text[i + 3]);
        if (high < 0 || low < 0) return false;
        result += static_cast<char>(high * 16 + low);
        i += 3;
    }
    bytes = std::move(result);
    return true;
}

} // namespace Tarn::Fjel::Core::Service::XMLForm
