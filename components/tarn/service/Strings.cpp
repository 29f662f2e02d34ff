#include <tarn/service/Strings.h>

#include <algorithm>

namespace Tarn::Fjel::Core::Service {

void StringTrim(std::string& text, std::string_view characters)
{
    const std::size_t first = text.find_first_not_of(characters);
    if (first == std::string::npos) {
        text.clear();
        return;
    }
    text.erase(text.find_last_not_of(characters) + 1);
    text.erase(0, first);
}

void StringTrim(std::string& text)
{
    StringTrimRight(text);
    text.erase(0, text.size() - TrimmedLeft(text).size());
}

void StringTrimBlank(std::string& text)
{
    StringTrim(text);
}

void StringTrimSpace(std::string& text)
{
    StringTrim(text);
}

void StringTrimRight(std::string& text)
{
    text.erase(TrimmedRight(text).size());
}

void StringToUpper(std::string& text)
{
    for (char& c : text)
        c = ToUpper(c);
}

std::string Uppercased(std::string_view text)
{
    std::string result(text);
    StringToUpper(result);
    return result;
}

std::string Lowercased(std::string_view text)
{
    std::string result(text);
    for (char& c : result)
        c = ToLower(c);
    return result;
}

std::size_t StringReplace(std::string& text, std::string_view from, std::string_view to)
{
    if (from.empty()) return 0;
    std::size_t position = text.find(from);
    if (position == std::string::npos) return 0;

    // One pass into a new text: replacing in place would move the rest of a large text for each occurrence.
    std::string result;
    result.reserve(text.size());
    std::size_t count = 0;
    std::size_t copied = 0;
    for (; position != std::string::npos; position = text.find(from, copied)) {
        result.append(text, copied, position - copied).append(to);
        copied = position + from.size();
        ++count;
    }
    result.append(text, copied, std::string::npos);
    text.swap(result);
    return count;
}

bool StringEqual(std::string_view left, std::string_view right, bool caseSensitive)
{
    return caseSensitive ? left == right : NoCaseStringEqual(left, right);
}

bool NoCaseStringEqual(std::string_view left, std::string_view right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return ToUpper(a) == ToUpper(b); });
}

bool NoCaseStringLess(std::string_view left, std::string_view right)
{
    return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end(), [](char a, char b) {
        return static_cast<unsigned char>(ToUpper(a)) < static_cast<unsigned char>(ToUpper(b));
    });
}

} // namespace Tarn::Fjel::Core::Service
