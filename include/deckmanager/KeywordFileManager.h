#pragma once

#include <list>
#include <memory>
#include <string>

#include <deckmanager/IKeywordFileManager.h>
#include <deckmanager/ProjectMovePlan.h>

namespace Tarn::Fjel::Core::DeckManager {

class ICacheManager;
class IDirectoryManager;

/// Owns the keyword files of one deck manager: one object for each file on disk, however many decks and INCLUDE
/// keywords name it, and under whatever names.
class KeywordFileManager : public IKeywordFileManager
{
public:
    /// `projectDir` empty: a manager without a project. Otherwise it must be a complete path and no file
    /// (`DeckManagerException`); it is created when it does not exist.
    explicit KeywordFileManager(const std::string& projectDir);
    ~KeywordFileManager() override;
    KeywordFileManager(const KeywordFileManager&) = delete;
    KeywordFileManager& operator=(const KeywordFileManager&) = delete;

    bool GetCacheEntry(const IKeywordFile& file, CacheEntry& entry) override;
    bool SetCacheEntry(const IKeywordFile& file, const CacheEntry& entry) override;
    std::shared_ptr<KeywordFile> GetKeywordFile(const Service::FileName& name, bool useVariables) override;
    const Service::Directory& ProjectDir() const override;
    bool HasProjectDir() const override;
    void MoveKeywordFile(KeywordFile& file, const Service::FileName& target) override;
    void KeywordFileMoved(KeywordFile& file, const Service::FileName& newName) override;
    void KeywordFileReplaced(KeywordFile& file) override;
    void DirectoryDeleted(const Service::Directory& directory) override;
    void ClearUnreferencedFiles() override;
    void SaveCacheTable() override;
    const Service::Directory& TempProjectDir() const override;
    bool HasTempProjectDir() const override;
    void SetTempProjectDir(const Service::Directory& directory) override;

    /// The file of that name; empty when there is none.
    std::shared_ptr<KeywordFile> FindKeywordFile(const Service::FileName& name) const;

    /// All files, in order of creation.
    const std::list<std::shared_ptr<KeywordFile>>& Files() const { return m_files; }

    void Clear();
    void FlushCache() const;

    /// Writes the uncommitted changes of open decks while a project moves.
    class ICommitter
    {
    public:
        virtual ~ICommitter() = default;
        virtual void Commit() const = 0;
    };

    /// As `IDeckManager::MoveProjectDir`.
    void MoveProjectDir(const std::string& path, bool deleteOld, const ICommitter& committer);
    /// As `IDeckManager::PlanProjectDirMove`.
    ProjectMovePlan PlanProjectDirMove(const std::string& path);

private:
    class FileIndex;
    class Move;

    bool CanMoveTo(const Service::Directory& directory) const;
    void FilesRenamed();

    std::unique_ptr<IDirectoryManager> m_directoryManager;
    std::unique_ptr<ICacheManager> m_cacheManager;
    std::list<std::shared_ptr<KeywordFile>> m_files;
    std::unique_ptr<FileIndex> m_index;
};

} // namespace Tarn::Fjel::Core::DeckManager
