#pragma once

#include <map>
#include <string>

#include "cache/CacheEntry.h"
#include <tarn/service/FileUtils.h>
#include <tarn/service/ISerializable.h>

namespace Tarn::Fjel::Core::DeckManager {

class IDirectoryManager;

/// What the cache of a project keeps: a file on disk for all that stands directly in the project directory, and one for
/// each folder in it, each loaded at its first use.
///
/// Nothing here ever fails for the caller: what can't be read is empty, and what can't be written stays in memory.
class CacheTable
{
public:
    /// One cache file on disk: the entries of the files below its directory.
    class CacheFile : public Service::ISerializable
    {
    public:
        /// Reads the file of that table, in the form that the project asks for. A file that is missing, damaged, of the
        /// other form or of another version is empty. `directoryManager` isn't owned.
        void Load(const IDirectoryManager& directoryManager, const std::string& tableKey);
        /// Writes what has changed since the last load or save; the file on disk is always a whole one.
        void Save();

        /// The entry of the file with that full name, where there is one that still describes it.
        bool GetEntry(const std::string& fullName, CacheEntry& entry) const;
        /// Stores an entry under the file's time and size of now.
        void SetEntry(const std::string& fullName, const CacheEntry& entry);
        /// The file has another name, of the same table.
        void ReplaceEntry(const std::string& oldName, const std::string& newName);
        /// What is stored of the file, whether it still describes it or not.
        bool FindEntry(const std::string& fullName, CacheEntry& entry) const;
        void Clear();

        bool IsDirty() const { return m_dirty; }
        bool UsesXml() const { return m_useXml; }

        void Serialize(Service::Serializer& serializer) override;

        /// The path below the table's directory, in the project or in the temporary one; the whole name of a file
        /// outside.
        std::string EntryKeyOf(const std::string& fullName) const;

    private:
        using Entries = std::map<std::string, CacheEntry, Service::FileUtils::FileNameLess>;

        std::string Path() const;

        Entries m_entries; ///< by `EntryKeyOf`
        bool m_dirty = false;
        const IDirectoryManager* m_directoryManager = nullptr;
        bool m_useXml = true;
        std::string m_tableKey;
    };

    explicit CacheTable(const IDirectoryManager& directoryManager) : m_directoryManager(directoryManager) {}

    /// The name of the first folder below the project, or below the temporary one; empty for a file directly in it, in
    /// a folder whose name begins with a dot, and outside.
    std::string TableKeyOf(const std::string& fullName) const;

    CacheFile& GetOrLoad(const std::string& tableKey);
    /// Drops a table with all that was not saved.
    void Erase(const std::string& tableKey) { m_files.erase(tableKey); }
    void Save();
    /// Empties the tables that are loaded.
    void Clear();

private:
    const IDirectoryManager& m_directoryManager;
    std::map<std::string, CacheFile, Service::FileUtils::FileNameLess> m_files;
};

} // namespace Tarn::Fjel::Core::DeckManager
