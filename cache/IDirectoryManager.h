#pragma once

#include <string>

namespace Tarn::Fjel::Core::Service {
class Directory;
}

namespace Tarn::Fjel::Core::DeckManager {

/// Answers where the project lies, where its cache lies and where a temporary project lies; with a project directory or
/// without one, so that no other code has to ask which case holds.
class IDirectoryManager
{
public:
    virtual ~IDirectoryManager() = default;

    /// True when the directory exists afterwards. Throws `DeckManagerException` for an incomplete path, and for one
    /// that names a file.
    virtual bool SetProjectDir(const Service::Directory& directory) = 0;
    /// Not set without a project.
    virtual const Service::Directory& ProjectDir() const = 0;
    virtual const std::string& ProjectDirName() const = 0;
    /// The folder for cached data in the project directory; nothing creates it here.
    virtual const Service::Directory& CacheDir() const = 0;
    /// False, and nothing changes, for a path that can't be a project directory. A directory that isn't set clears the
    /// temporary project.
    virtual bool SetTempProjectDir(const Service::Directory& directory) = 0;
    virtual const std::string& TempProjectDirName() const = 0;
    virtual const Service::Directory& TempProjectDir() const = 0;
};

} // namespace Tarn::Fjel::Core::DeckManager
