#pragma once

#include <memory>

#include "cache/ICacheManager.h"

namespace Tarn::Fjel::Core::DeckManager {

class CacheTable;
class IDirectoryManager;

/// The cache of a project. An entry is trusted while its file isn't newer than what was stored, and of the same size;
/// whether the text is the same nobody looks here.
///
/// Entries reach the disk by `SaveCacheTable` only: a process that dies loses what a scan rebuilds. Nothing fails for
/// the caller.
class CacheManager : public ICacheManager
{
public:
    /// `directoryManager` outlives this.
    explicit CacheManager(const IDirectoryManager& directoryManager);
    ~CacheManager() override;

    bool GetCacheEntry(const IKeywordFile& file, CacheEntry& entry) override;
    /// The time and the size that the entry brings don't count: those of the file do.
    bool SetCacheEntry(const IKeywordFile& file, const CacheEntry& entry) override;
    /// Nothing: what is stored is relative to the project.
    void ProjectDirMoved(const Service::Directory&) override {}
    void MoveCacheEntry(const Service::FileName& oldName, const Service::FileName& newName) override;
    /// A folder directly in the project takes its table along; a deeper one leaves entries that nobody asks for.
    void DirectoryDeleted(const Service::Directory& directory) override;
    void SaveCacheTable() override;
    /// Empties the folder for cached data, and the tables that are loaded.
    void FlushCache() override;

private:
    CacheTable& Table();

    const IDirectoryManager& m_directoryManager;
    std::unique_ptr<CacheTable> m_table; ///< made when it is first needed
};

} // namespace Tarn::Fjel::Core::DeckManager
