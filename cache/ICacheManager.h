#pragma once

namespace Tarn::Fjel::Core::Service {
class Directory;
class FileName;
} // namespace Tarn::Fjel::Core::Service

namespace Tarn::Fjel::Core::DeckManager {

class CacheEntry;
class IKeywordFile;

/// Decides whether stored keyword positions still describe a file on disk, and stores new ones.
class ICacheManager
{
public:
    virtual ~ICacheManager() = default;

    /// True when there is an entry and it is trusted; `entry` then holds it.
    virtual bool GetCacheEntry(const IKeywordFile& file, CacheEntry& entry) = 0;
    virtual bool SetCacheEntry(const IKeywordFile& file, const CacheEntry& entry) = 0;
    virtual void ProjectDirMoved(const Service::Directory& oldDirectory) = 0;
    virtual void MoveCacheEntry(const Service::FileName& oldName, const Service::FileName& newName) = 0;
    virtual void DirectoryDeleted(const Service::Directory& directory) = 0;
    virtual void SaveCacheTable() = 0;
    virtual void FlushCache() = 0;
};

} // namespace Tarn::Fjel::Core::DeckManager
