#include "files/MadeDirectories.h"

#include <algorithm>

#include <tarn/service/Directory.h>
#include <tarn/service/FileSystem.h>

namespace Tarn::Fjel::Core::DeckManager {

using Service::FileSystem;
using ErrorCode = Service::FileSystem::ErrorCode;

bool MadeDirectories::Make(const Service::Directory& directory, std::string& failure)
{
    if (!directory.IsSet()) return true;
    std::vector<std::string> missing;
    for (Service::Directory level = directory; level.IsSet() && !level.Exists(); level = level.Parent())
        missing.push_back(level.Name());
    std::reverse(missing.begin(), missing.end());
    for (const std::string& level : missing) {
        ErrorCode error;
        if (!FileSystem::Instance().MakeDirectory(level, error)) {
            failure = "The directory " + directory.Name() + " cannot be made: " + error.message() + ".";
            return false;
        }
        m_names.push_back(level);
    }
    if (directory.IsDirectory()) return true;
    failure = "The directory " + directory.Name() + " cannot be made: something else stands there.";
    return false;
}

void MadeDirectories::Remove()
{
    for (auto name = m_names.rbegin(); name != m_names.rend(); ++name) {
        ErrorCode ignored;
        FileSystem::Instance().RemoveDirectory(*name, ignored);
    }
    m_names.clear();
}

} // namespace Tarn::Fjel::Core::DeckManager
