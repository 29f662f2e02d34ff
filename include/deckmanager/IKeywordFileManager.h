#pragma once

#include <memory>

namespace Tarn::Fjel::Core::Service {
class Directory;
class FileName;
} // namespace Tarn::Fjel::Core::Service

namespace Tarn::Fjel::Core::DeckManager {

class CacheEntry;
class IKeywordFile;
class KeywordFile;

/// The owner of all keyword files of a deck manager, as files and the editor see it.
class IKeywordFileManager
{
public:
    virtual ~IKeywordFileManager() = default;

    /// The stored keyword positions of the file. True when there are any and they still describe the file on disk.
    virtual bool GetCacheEntry(const IKeywordFile& file, CacheEntry& entry) = 0;
    virtual bool SetCacheEntry(const IKeywordFile& file, const CacheEntry& entry) = 0;

    /// The one object for that path, made when there is none yet; a relative name counts from the process's working
    /// directory. Empty without a leaf name, and with a message when the path is no file (a directory, say). The file
    /// need not exist.
    virtual std::shared_ptr<KeywordFile> GetKeywordFile(const Service::FileName& name, bool useVariables) = 0;

    /// The project directory; not set when there is none.
    virtual const Service::Directory& ProjectDir() const = 0;
    virtual bool HasProjectDir() const = 0;

    /// Renames the file on disk, where it exists, and everywhere here. Nothing happens when it has that name already.
    /// Throws `DeckManagerException` when something stands under the new name, and
    /// `boost::filesystem::filesystem_error` when it can't be renamed.
    virtual void MoveKeywordFile(KeywordFile& file, const Service::FileName& target) = 0;

    /// Reports a rename that someone else did on disk. Throws `DeckManagerException` when no file stands at the new
    /// name.
    virtual void KeywordFileMoved(KeywordFile& file, const Service::FileName& newName) = 0;

    /// Reports that another file stands under the name of a file now: its new text.
    virtual void KeywordFileReplaced(KeywordFile& file) = 0;

    /// Reports that someone else deleted a directory of the project.
    virtual void DirectoryDeleted(const Service::Directory& directory) = 0;

    /// Drops every file that no deck and no INCLUDE keyword holds any more.
    virtual void ClearUnreferencedFiles() = 0;

    virtual void SaveCacheTable() = 0;

    virtual const Service::Directory& TempProjectDir() const = 0;
    virtual bool HasTempProjectDir() const = 0;
    virtual void SetTempProjectDir(const Service::Directory& directory) = 0;
};

} // namespace Tarn::Fjel::Core::DeckManager
