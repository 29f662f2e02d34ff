#include "files/DirectoryManager.h"

#include <deckmanager/DeckManagerException.h>

namespace Tarn::Fjel::Core::DeckManager {

DirectoryManager::DirectoryManager(const Service::Directory& projectDir)
{
    DirectoryManager::SetProjectDir(projectDir);
}

bool DirectoryManager::Validate(const Service::Directory& directory, bool mustThrow)
{
    if (directory.IsComplete() && (!directory.Exists() || directory.IsDirectory())) return true;
    if (mustThrow) {
        throw DeckManagerException("DeckManager project dir must be a complete path and can not be a file.");
    }
    return false;
}

bool DirectoryManager::SetProjectDir(const Service::Directory& directory)
{
    Validate(directory, true);
    m_projectDir = directory;
    m_projectDirName = directory.Name();
    m_cacheDirKnown = false;
    return m_projectDir.Create();
}

const Service::Directory& DirectoryManager::CacheDir() const
{
    if (!m_cacheDirKnown) {
        m_cacheDir = m_projectDir;
        m_cacheDir.Append("Cache__");
        m_cacheDirKnown = true;
    }
    return m_cacheDir;
}

bool DirectoryManager::SetTempProjectDir(const Service::Directory& directory)
{
    if (directory.IsSet() && !Validate(directory, false)) return false;
    m_tempProjectDir = directory;
    m_tempProjectDirName = directory.Name();
    return m_tempProjectDir.Create();
}

} // namespace Tarn::Fjel::Core::DeckManager
