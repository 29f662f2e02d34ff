#include "cache/CacheTable.h"

#include "cache/CacheForm.h"
#include "cache/IDirectoryManager.h"
#include <tarn/service/FileName.h>
#include <tarn/service/FileStatus.h>
#include <tarn/service/Serializer.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

constexpr int tableVersion = 1;
constexpr const char* const cacheFileName = "DeckCache.ptd";
/// A file of this name in the project directory asks for the binary form.
constexpr const char* const markerName = "deck_cache_xml.lock";

bool IsSeparator(char c)
{
    return c == '/' || c == '\\';
}

/// What stands behind `directory` in a name that lies below it.
bool PathBelow(const std::string& directory, const std::string& fullName, std::string& rest)
{
    if (directory.empty() || fullName.size() <= directory.size()) return false;
    const bool caseSensitive = Service::FileName::IsCaseSensitive();
    if (!Service::StringEqual(std::string_view(fullName).substr(0, directory.size()), directory, caseSensitive)) {
        return false;
    }
    // A root ends in a separator itself; behind any other name there must be one, or it is the head of a longer name.
    if (IsSeparator(directory.back())) {
        rest = fullName.substr(directory.size());
        return true;
    }
    if (!IsSeparator(fullName[directory.size()])) return false;
    rest = fullName.substr(directory.size() + 1);
    return true;
}

std::string DirectoryOfTable(const std::string& projectDir, const std::string& tableKey)
{
    return projectDir.empty() ? projectDir : Service::Directory(projectDir + "/" + tableKey).Name();
}

/// Whether an entry describes a file as it is now.
bool IsTrusted(const CacheEntry& entry, const Service::FileStatus& status)
{
    return entry.stamp.IsDef() && entry.stamp >= status.TimeLastModified() && entry.length == status.size;
}

} // namespace

// --- one file ----------------------------------------------------------------------------------------------------

std::string CacheTable::CacheFile::Path() const
{
    return Service::FileName(Service::Directory(DirectoryOfTable(m_directoryManager->ProjectDirName(), m_tableKey)),
                             cacheFileName)
        .GetFullName();
}

std::string CacheTable::CacheFile::EntryKeyOf(const std::string& fullName) const
{
    std::string rest;
    for (const std::string* project :
         {&m_directoryManager->ProjectDirName(), &m_directoryManager->TempProjectDirName()}) {
        if (PathBelow(DirectoryOfTable(*project, m_tableKey), fullName, rest)) return rest;
    }
    return fullName;
}

void CacheTable::CacheFile::Load(const IDirectoryManager& directoryManager, const std::string& tableKey)
{
    m_directoryManager = &directoryManager;
    m_tableKey = tableKey;
    m_entries.clear();
    m_dirty = false;
    try {
        m_useXml = !Service::FileName(directoryManager.ProjectDir(), markerName).FileExists();
        const std::string path = Path();
        if (Service::FileStatus::Of(path).IsRegularFile()) {
            CacheForm::Read(path, m_useXml ? CacheForm::Kind::Xml : CacheForm::Kind::Binary, *this);
        }
    } catch (...) {
        // What can't be read costs a scan, and nothing else.
        m_entries.clear();
    }
}

void CacheTable::CacheFile::Save()
{
    if (!m_dirty) return;
    try {
        if (CacheForm::Write(Path(), m_useXml ? CacheForm::Kind::Xml : CacheForm::Kind::Binary, *this)) m_dirty = false;
    } catch (...) {
        // It stays in memory, and is tried again with the next save.
    }
}

void CacheTable::CacheFile::Serialize(Service::Serializer& serializer)
{
    int version = tableVersion;
    serializer.SerializeImpl(version, "version");
    if (serializer.IsReading()) m_entries.clear();
    if (version != tableVersion) return;

    int count = static_cast<int>(m_entries.size());
    serializer.StartArray(count, "cache");
    std::string typeName;
    int objectVersion = -1;
    if (serializer.IsReading()) {
        for (int i = 0; i < count; ++i) {
            std::pair<std::string, CacheEntry> element;
            serializer.StartObject(typeName, objectVersion, "a", i);
            serializer.SerializeImpl(element.first, "x");
            serializer.SerializeImpl(element.second, "y");
            serializer.EndObject();
            m_entries.insert(std::move(element));
        }
    } else {
        int i = 0;
        for (auto& [key, entry] : m_entries) {
            std::string name = key;
            serializer.StartObject(typeName, objectVersion, "a", i++);
            serializer.SerializeImpl(name, "x");
            serializer.SerializeImpl(entry, "y");
            serializer.EndObject();
        }
    }
    serializer.EndArray();
}

bool CacheTable::CacheFile::FindEntry(const std::string& fullName, CacheEntry& entry) const
{
    const auto found = m_entries.find(EntryKeyOf(fullName));
    if (found == m_entries.end()) return false;
    entry = found->second;
    return true;
}

bool CacheTable::CacheFile::GetEntry(const std::string& fullName, CacheEntry& entry) const
{
    return FindEntry(fullName, entry) && IsTrusted(entry, Service::FileStatus::Of(fullName));
}

void CacheTable::CacheFile::SetEntry(const std::string& fullName, const CacheEntry& entry)
{
    const Service::FileStatus status = Service::FileStatus::Of(fullName);
    CacheEntry& stored = m_entries[EntryKeyOf(fullName)];
    stored = entry;
    stored.stamp = status.TimeLastModified();
    stored.length = status.size;
    m_dirty = true;
}

void CacheTable::CacheFile::ReplaceEntry(const std::string& oldName, const std::string& newName)
{
    CacheEntry entry;
    if (!FindEntry(oldName, entry)) return;
    m_entries.erase(EntryKeyOf(oldName));
    SetEntry(newName, entry);
}

void CacheTable::CacheFile::Clear()
{
    m_entries.clear();
    m_dirty = true;
}

// --- all of them -------------------------------------------------------------------------------------------------

std::string CacheTable::TableKeyOf(const std::string& fullName) const
{
    std::string rest;
    if (!PathBelow(m_directoryManager.ProjectDirName(), fullName, rest) &&
        !PathBelow(m_directoryManager.TempProjectDirName(), fullName, rest))
    {
        return {};
    }
    const Service::FileName file(rest);
    const Service::Directory& folder = file.GetDirectory();
    if (!folder.IsSet() || !folder.IsRelativePath()) return {};
    std::string key = folder.Name().substr(0, folder.Name().find_first_of("/\\"));
    if (key.starts_with('.')) key.clear();
    return key;
}

CacheTable::CacheFile& CacheTable::GetOrLoad(const std::string& tableKey)
{
    const auto [file, isNew] = m_files.try_emplace(tableKey);
    if (isNew) file->second.Load(m_directoryManager, tableKey);
    return file->second;
}

void CacheTable::Save()
{
    for (auto& [key, file] : m_files) {
        file.Save();
    }
}

void CacheTable::Clear()
{
    for (auto& [key, file] : m_files) {
        file.Clear();
    }
}

} // namespace Tarn::Fjel::Core::DeckManager
