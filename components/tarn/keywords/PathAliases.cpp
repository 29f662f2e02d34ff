#include <tarn/keywords/PathAliases.h>

#include <algorithm>

#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::Keywords {

void PathAliases::AddAlias(std::string_view alias, std::string_view path)
{
    if (alias.starts_with('$')) alias.remove_prefix(1);
    if (!alias.empty()) m_paths.insert_or_assign(Service::Uppercased(alias), std::string(path));
}

bool PathAliases::resolvePathAliases(const std::string& in, std::string& out) const
{
    std::string path = in;
    // Each alias is replaced once at most on a way that ends, so that more steps than aliases mean a ring.
    for (std::size_t steps = 0; path.starts_with('$'); ++steps) {
        const std::size_t end = std::min(path.find_first_of("/\\"), path.size());
        const auto found = m_paths.find(Service::Uppercased(std::string_view(path).substr(1, end - 1)));
        if (found == m_paths.end() || steps == m_paths.size()) {
            if (&in != &out) out = in;
            return false;
        }
        path.replace(0, end, found->second);
    }
    out = std::move(path);
    return true;
}

} // namespace Tarn::Fjel::Core::Keywords
