#include <deckmanager/KeywordFileManager.h>

#include <string_view>
#include <unordered_map>
#include <vector>

#include "cache/CacheEntry.h"
#include "cache/CacheManager.h"
#include "cache/CacheManagerNoProjDir.h"
#include "files/DirectoryManager.h"
#include "files/DirectoryManagerNoProjDir.h"
#include "files/KeywordFile.h"
#include <deckmanager/DeckManagerException.h>
#include <tarn/service/Directory.h>
#include <tarn/service/FileName.h>
#include <tarn/service/FileStatus.h>
#include <tarn/service/Log.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

/// A relative name counts from the working directory of now, which may be another one later.
Service::FileName Completed(Service::FileName name)
{
    if (!name.IsComplete()) name.MakeComplete(Service::Directory::Current());
    return name;
}

} // namespace

/// Finds files by name without a walk over all of them.
///
/// Two names are one file when they are equal, or when they lead to the same place through links. So a name is looked
/// up as it stands first; then only files with its inode, or missing ones with its leaf, can be the same, and these are
/// compared.
class KeywordFileManager::FileIndex
{
public:
    std::shared_ptr<KeywordFile> Find(const Service::FileName& name, const Service::FileStatus& status) const
    {
        if (std::shared_ptr<KeywordFile> file = Lookup(m_byName, name.GetFullName(), name)) return file;
        if (status.Exists()) {
            if (std::shared_ptr<KeywordFile> file = Lookup(m_byInode, status.inode, name)) return file;
        }
        if (std::shared_ptr<KeywordFile> file = Lookup(m_byLeaf, name.GetFileName(), name)) return file;
        // One that was there when it came, and has gone.
        return status.Exists() ? nullptr : Lookup(m_presentByLeaf, name.GetFileName(), name);
    }

    void Add(const std::shared_ptr<KeywordFile>& file, const Service::FileStatus& status)
    {
        m_byName.emplace(file->GetFileName().GetFullName(), file);
        if (status.Exists()) {
            m_byInode.emplace(status.inode, file);
            m_presentByLeaf.emplace(file->GetFileName().GetFileName(), file);
        } else {
            m_byLeaf.emplace(file->GetFileName().GetFileName(), file);
        }
    }

    /// The file has another inode.
    void Replaced(const std::shared_ptr<KeywordFile>& file)
    {
        const Service::FileStatus status = Service::FileStatus::Of(file->GetFileName().GetFullName());
        if (status.Exists()) m_byInode.emplace(status.inode, file);
    }

    /// Starts anew for these files.
    void Rebuild(const std::list<std::shared_ptr<KeywordFile>>& files)
    {
        Clear();
        for (const std::shared_ptr<KeywordFile>& file : files) {
            Add(file, Service::FileStatus::Of(file->GetFileName().GetFullName()));
        }
    }

    void Clear()
    {
        m_byName.clear();
        m_byInode.clear();
        m_byLeaf.clear();
        m_presentByLeaf.clear();
    }

private:
    template <class Map, class Key>
    static std::shared_ptr<KeywordFile> Lookup(const Map& map, const Key& key, const Service::FileName& name)
    {
        const auto [first, last] = map.equal_range(key);
        for (auto entry = first; entry != last; ++entry) {
            const std::shared_ptr<KeywordFile> file = entry->second.lock();
            if (file && file->GetFileName() == name) return file;
        }
        return nullptr;
    }

    // Weak: a file that is going may ask for another one, and must not be found itself.
    std::unordered_multimap<std::string, std::weak_ptr<KeywordFile>> m_byName;
    std::unordered_multimap<std::uint64_t, std::weak_ptr<KeywordFile>> m_byInode;
    std::unordered_multimap<std::string, std::weak_ptr<KeywordFile>>
        m_byLeaf; ///< files that were missing when they came
    std::unordered_multimap<std::string, std::weak_ptr<KeywordFile>> m_presentByLeaf; ///< the others
};

KeywordFileManager::KeywordFileManager(const std::string& projectDir) : m_index(std::make_unique<FileIndex>())
{
    if (projectDir.empty()) {
        m_directoryManager = std::make_unique<DirectoryManagerNoProjDir>();
    } else {
        m_directoryManager = std::make_unique<DirectoryManager>(Service::Directory(projectDir));
    }
    if (ProjectDir().IsSet()) {
        m_cacheManager = std::make_unique<CacheManager>(*m_directoryManager);
    } else {
        m_cacheManager = std::make_unique<CacheManagerNoProjDir>();
    }
}

KeywordFileManager::~KeywordFileManager()
{
    try {
        m_cacheManager->SaveCacheTable();
    } catch (...) {
        // The cache is a convenience; without it the next process scans.
    }
    try {
        Clear();
    } catch (...) {
        // Files that are going have nobody to tell.
    }
}

bool KeywordFileManager::GetCacheEntry(const IKeywordFile& file, CacheEntry& entry)
{
    return m_cacheManager->GetCacheEntry(file, entry);
}

bool KeywordFileManager::SetCacheEntry(const IKeywordFile& file, const CacheEntry& entry)
{
    return m_cacheManager->SetCacheEntry(file, entry);
}

std::shared_ptr<KeywordFile> KeywordFileManager::GetKeywordFile(const Service::FileName& givenName, bool useVariables)
{
    const Service::FileName name = Completed(givenName);
    if (name.GetFileName().empty()) return nullptr;

    const Service::FileStatus status = Service::FileStatus::Of(name.GetFullName());
    if (std::shared_ptr<KeywordFile> file = m_index->Find(name, status)) return file;
    if (status.Exists() && !status.IsRegularFile()) {
        Service::Log::SendLogMessage("The file \"" + name.GetFullName() + "\" is not a file.", Service::Log::Error);
        return nullptr;
    }
    const std::shared_ptr<KeywordFile>& file =
        m_files.emplace_back(std::make_shared<KeywordFile>(name, *this, useVariables));
    m_index->Add(file, status);
    return file;
}

std::shared_ptr<KeywordFile> KeywordFileManager::FindKeywordFile(const Service::FileName& name) const
{
    return m_index->Find(name, Service::FileStatus::Of(name.GetFullName()));
}

const Service::Directory& KeywordFileManager::ProjectDir() const
{
    return m_directoryManager->ProjectDir();
}

bool KeywordFileManager::HasProjectDir() const
{
    return ProjectDir().IsSet();
}

void KeywordFileManager::MoveKeywordFile(KeywordFile& file, const Service::FileName& givenTarget)
{
    const Service::FileName target = Completed(givenTarget);
    const Service::FileName oldName = file.GetFileName();
    // An entry that no longer describes the file must not come to do so by the move.
    CacheEntry entry;
    const bool isCached = m_cacheManager->GetCacheEntry(file, entry);
    if (!file.MoveKeywordFile(target)) return;
    FilesRenamed();
    if (isCached) m_cacheManager->MoveCacheEntry(oldName, target);
}

void KeywordFileManager::KeywordFileMoved(KeywordFile& file, const Service::FileName& givenName)
{
    const Service::FileName newName = Completed(givenName);
    if (!newName.FileExists()) throw DeckManagerException("KeywordFileManager::KeywordFileMoved: new file not exist");
    const Service::FileName oldName = file.GetFileName();
    // What is known of a file that isn't there comes back all the same. A later time is that of another text.
    CacheEntry entry;
    m_cacheManager->GetCacheEntry(file, entry);
    file.SetFileName(newName);
    FilesRenamed();
    if (entry.stamp >= newName.TimeLastModified()) m_cacheManager->MoveCacheEntry(oldName, newName);
}

void KeywordFileManager::FilesRenamed()
{
    m_index->Rebuild(m_files);
}

void KeywordFileManager::KeywordFileReplaced(KeywordFile& file)
{
    m_index->Replaced(file.shared_from_this());
}

void KeywordFileManager::DirectoryDeleted(const Service::Directory& directory)
{
    m_cacheManager->DirectoryDeleted(directory);
}

void KeywordFileManager::ClearUnreferencedFiles()
{
    // Each INCLUDE keyword takes hold of its file first, so that the use counts tell the truth. This may add files.
    // A file that was never read has no INCLUDE keywords that could hold one.
    for (auto file = m_files.begin(); file != m_files.end(); ++file) {
        if (!(*file)->WasLoaded()) continue;
        for (const KeywordFileIterator& include : (*file)->GetINCLUDEKeywords()) {
            KeywordFile::IncludedFileOf(*include);
        }
    }
    // A file that goes takes its hold on others along: a tree falls away from the top.
    bool someLeft = false;
    for (bool again = true; again;) {
        again = false;
        for (auto file = m_files.begin(); file != m_files.end();) {
            if (file->use_count() == 1) {
                file = m_files.erase(file);
                again = someLeft = true;
            } else {
                ++file;
            }
        }
    }
    if (someLeft) m_index->Rebuild(m_files);
}

void KeywordFileManager::SaveCacheTable()
{
    m_cacheManager->SaveCacheTable();
}

const Service::Directory& KeywordFileManager::TempProjectDir() const
{
    return m_directoryManager->TempProjectDir();
}

bool KeywordFileManager::HasTempProjectDir() const
{
    return TempProjectDir().IsSet();
}

void KeywordFileManager::SetTempProjectDir(const Service::Directory& directory)
{
    m_directoryManager->SetTempProjectDir(directory);
}

void KeywordFileManager::Clear()
{
    m_index->Clear();
    // The list is empty before the first file goes, which may ask for another one.
    const std::list<std::shared_ptr<KeywordFile>> going = std::move(m_files);
    m_files.clear();
}

void KeywordFileManager::FlushCache() const
{
    m_cacheManager->FlushCache();
}

} // namespace Tarn::Fjel::Core::DeckManager
