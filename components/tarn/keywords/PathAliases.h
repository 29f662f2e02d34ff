#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::Keywords {

/// The path aliases of a deck: "$ALIAS" at the head of a path stands for another path.
class PathAliases
{
public:
    /// Enters an alias, without its "$" and without regard to case. A later entry of one name replaces the earlier.
    void AddAlias(std::string_view alias, std::string_view path);

    bool IsEmpty() const noexcept { return m_paths.empty(); }

    /// out becomes in, with an alias at its head (up to the next "/" or "\", or the end) replaced by its path, which
    /// may begin with an alias again. A name without an entry, or a ring of aliases, leaves the text as it is and
    /// gives false. in and out may be one string.
    bool resolvePathAliases(const std::string& in, std::string& out) const;

private:
    std::map<std::string, std::string, std::less<>> m_paths; // by name in capitals
};

} // namespace Tarn::Fjel::Core::Keywords
