#include "cache/CacheManager.h"

#include "cache/CacheTable.h"
#include "cache/IDirectoryManager.h"
#include <deckmanager/IKeywordFile.h>
#include <tarn/service/FileName.h>
#include <tarn/service/FileStatus.h>
#include <tarn/service/FileSystem.h>

namespace Tarn::Fjel::Core::DeckManager {

CacheManager::CacheManager(const IDirectoryManager& directoryManager) : m_directoryManager(directoryManager) {}

CacheManager::~CacheManager() = default;

CacheTable& CacheManager::Table()
{
    if (!m_table) m_table = std::make_unique<CacheTable>(m_directoryManager);
    return *m_table;
}

bool CacheManager::GetCacheEntry(const IKeywordFile& file, CacheEntry& entry)
{
    const std::string& name = file.GetFileName().GetFullName();
    return Table().GetOrLoad(Table().TableKeyOf(name)).GetEntry(name, entry);
}

bool CacheManager::SetCacheEntry(const IKeywordFile& file, const CacheEntry& entry)
{
    const std::string& name = file.GetFileName().GetFullName();
    Table().GetOrLoad(Table().TableKeyOf(name)).SetEntry(name, entry);
    return true;
}

/// The file has its new name already, so nothing can be asked of the old one. A rename across file systems may change
/// the time; a file of another size isn't the one that was stored.
void CacheManager::MoveCacheEntry(const Service::FileName& oldFile, const Service::FileName& newFile)
{
    const std::string& oldName = oldFile.GetFullName();
    const std::string& newName = newFile.GetFullName();
    if (oldName == newName) return;
    const std::string oldKey = Table().TableKeyOf(oldName);
    const std::string newKey = Table().TableKeyOf(newName);
    CacheTable::CacheFile& oldTable = Table().GetOrLoad(oldKey);
    CacheEntry entry;
    if (!oldTable.FindEntry(oldName, entry)) return;
    if (!entry.stamp.IsDef() || entry.length != Service::FileStatus::Of(newName).size) return;
    if (oldKey == newKey) {
        oldTable.ReplaceEntry(oldName, newName);
    } else {
        Table().GetOrLoad(newKey).SetEntry(newName, entry);
    }
}

void CacheManager::DirectoryDeleted(const Service::Directory& directory)
{
    if (!directory.IsSet() || !directory.IsComplete()) return;
    if (directory.Parent().Name() == m_directoryManager.ProjectDirName()) Table().Erase(directory.LeafName());
}

void CacheManager::SaveCacheTable()
{
    if (m_table) m_table->Save();
}

void CacheManager::FlushCache()
{
    const Service::Directory& cacheDir = m_directoryManager.CacheDir();
    // What a link leads to may be anyone's.
    Service::FileSystem::ErrorCode error;
    if (Service::FileSystem::Instance().Status(cacheDir.Name(), false, error).IsDirectory())
        cacheDir.DeleteContent({}, false);
    if (m_table) m_table->Clear();
}

} // namespace Tarn::Fjel::Core::DeckManager
