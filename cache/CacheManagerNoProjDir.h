#pragma once

#include "cache/ICacheManager.h"

namespace Tarn::Fjel::Core::DeckManager {

/// Stands where there is no project directory, and so no place for a cache: it holds nothing.
class CacheManagerNoProjDir : public ICacheManager
{
public:
    bool GetCacheEntry(const IKeywordFile&, CacheEntry&) override { return false; }
    bool SetCacheEntry(const IKeywordFile&, const CacheEntry&) override { return false; }
    void ProjectDirMoved(const Service::Directory&) override {}
    void MoveCacheEntry(const Service::FileName&, const Service::FileName&) override {}
    void DirectoryDeleted(const Service::Directory&) override {}
    void SaveCacheTable() override {}
    void FlushCache() override {}
};

} // namespace Tarn::Fjel::Core::DeckManager
