#pragma once

#include "cache/IDirectoryManager.h"
#include <tarn/service/Directory.h>

namespace Tarn::Fjel::Core::DeckManager {

/// The directories of a manager with a project.
class DirectoryManager : public IDirectoryManager
{
public:
    /// As `SetProjectDir`.
    explicit DirectoryManager(const Service::Directory& projectDir);

    bool SetProjectDir(const Service::Directory& directory) override;
    const Service::Directory& ProjectDir() const override { return m_projectDir; }
    const std::string& ProjectDirName() const override { return m_projectDirName; }
    const Service::Directory& CacheDir() const override;
    bool SetTempProjectDir(const Service::Directory& directory) override;
    const std::string& TempProjectDirName() const override { return m_tempProjectDirName; }
    const Service::Directory& TempProjectDir() const override { return m_tempProjectDir; }

    /// A project may lie there. Otherwise false, or with `mustThrow` the exception of `SetProjectDir`.
    static bool Validate(const Service::Directory& directory, bool mustThrow);

private:
    Service::Directory m_projectDir;
    std::string m_projectDirName;
    mutable bool m_cacheDirKnown = false;
    mutable Service::Directory m_cacheDir;
    Service::Directory m_tempProjectDir;
    std::string m_tempProjectDirName;
};

} // namespace Tarn::Fjel::Core::DeckManager
