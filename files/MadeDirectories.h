#pragma once

#include <string>
#include <vector>

namespace Tarn::Fjel::Core::Service {
class Directory;
}

namespace Tarn::Fjel::Core::DeckManager {

/// The directories that an operation has made for its files, to be taken away again when it comes to nothing.
class MadeDirectories
{
public:
    /// Makes the directory with all above it. False, with `failure` set, when that can't be done; what was made stays
    /// noted. A directory that isn't set is there.
    bool Make(const Service::Directory& directory, std::string& failure);
    /// Removes those that were made and are empty.
    void Remove();

private:
    std::vector<std::string> m_names; ///< outermost first
};

} // namespace Tarn::Fjel::Core::DeckManager
