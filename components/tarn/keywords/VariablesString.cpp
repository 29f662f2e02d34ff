#include <tarn/keywords/VariablesString.h>

#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::Keywords {

namespace {

constexpr std::string_view commentMarker = "--";
constexpr std::string_view suppressMarker = "--@@@"; // what stands behind it is live text

bool BeginsName(char c)
{
    return Service::IsAlpha(c) || c == '_';
}

/// text begins with "$".
bool BeginsWithReference(std::string_view text)
{
    text.remove_prefix(1);
    if (!text.starts_with('{')) return !text.empty() && BeginsName(text.front());
    text.remove_prefix(1);
    if (text.empty() || !BeginsName(text.front())) return false;
    while (!text.empty() && (BeginsName(text.front()) || Service::IsDigit(text.front())))
        text.remove_prefix(1);
    return text.starts_with('}');
}

bool LineHasReference(std::string_view line)
{
    line = Service::TrimmedLeft(line);
    while (line.starts_with(suppressMarker))
        line.remove_prefix(suppressMarker.size());
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '\'') quoted = !quoted;
        if (!quoted && line.substr(i).starts_with(commentMarker)) return false;
        if (line[i] == '$' && BeginsWithReference(line.substr(i))) return true;
    }
    return false;
}

} // namespace

bool VariablesString::ContainsVariables(std::string_view text) noexcept
{
    // Most texts hold no "$" at all; only lines with one are looked at closely.
    for (std::size_t at = text.find('$'); at != std::string_view::npos; at = text.find('$', at)) {
        const std::size_t before = text.rfind('\n', at);
        const std::size_t begin = before == std::string_view::npos ? 0 : before + 1;
        const std::size_t end = text.find('\n', at);
        if (LineHasReference(text.substr(begin, end == std::string_view::npos ? end : end - begin))) return true;
        if (end == std::string_view::npos) return false;
        at = end;
    }
    return false;
}

} // namespace Tarn::Fjel::Core::Keywords
