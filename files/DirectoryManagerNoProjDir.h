#pragma once

#include "cache/IDirectoryManager.h"

namespace Tarn::Fjel::Core::DeckManager {

/// The directories of a manager without a project: none is set.
class DirectoryManagerNoProjDir : public IDirectoryManager
{
public:
    bool SetProjectDir(const Service::Directory&) override { return false; }
    const Service::Directory& ProjectDir() const override;
    const std::string& ProjectDirName() const override;
    const Service::Directory& CacheDir() const override;
    bool SetTempProjectDir(const Service::Directory&) override { return false; }
    const std::string& TempProjectDirName() const override;
    const Service::Directory& TempProjectDir() const override;
};

} // namespace Tarn::Fjel::Core::DeckManager
