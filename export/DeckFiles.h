#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <utility>

namespace Tarn::Fjel::Core::Service {
class FileName;
}

namespace Tarn::Fjel::Core::DeckManager {

class Context;
class KeywordFile;

/// The files of a deck on the disk, grid files too: what no export may write over.
class DeckFiles
{
public:
    /// Those of the deck that `file` belongs to, at whatever depth it stands in it. Loads all of them.
    DeckFiles(const KeywordFile& file, const Context& context);

    /// The name leads to a file of the deck, whatever it is called. A file that a keyword names and that isn't there
    /// counts by its name.
    bool Contains(const Service::FileName& name) const;

private:
    void Add(const Service::FileName& name);

    std::set<std::pair<std::uint64_t, std::uint64_t>> m_files; ///< device and inode
    std::set<std::string> m_names;                             ///< canonical
};

} // namespace Tarn::Fjel::Core::DeckManager
