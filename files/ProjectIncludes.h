#pragma once

#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include <deckmanager/KeywordFileManager.h>
#include <tarn/service/FileName.h>

namespace Tarn::Fjel::Core::DeckManager {

class Context;
class IDirectoryManager;
class KeywordINCLUDE;
class MovedPaths;

/// An INCLUDE keyword that has to name its file in another way once the project has moved.
struct IncludeCorrection
{
    KeywordINCLUDE* keyword;
    std::string dataText; ///< its data with the new name in the place of the old one
};

/// The corrections of one file of the project.
struct FileCorrections
{
    std::shared_ptr<KeywordFile> file;
    bool isOpen; ///< the file is one of the manager's own; otherwise nobody else knows the object
    std::vector<IncludeCorrection> includes;
};

/// Files of a project beside those that its manager holds, in the context of their decks. Reading them takes from the
/// manager's cache, and brings neither files nor anything else into the manager.
class ClosedFiles : public KeywordFileManager
{
public:
    explicit ClosedFiles(KeywordFileManager& open) : KeywordFileManager(std::string()), m_open(open) {}

    bool GetCacheEntry(const IKeywordFile& file, CacheEntry& entry) override;
    bool SetCacheEntry(const IKeywordFile& file, const CacheEntry& entry) override;
    /// A file that is open has the flag for variables that it has there.
    std::shared_ptr<KeywordFile> GetKeywordFile(const Service::FileName& name, bool useVariables) override;

    /// Reads a file and all that it includes.
    void Load(const Service::FileName& top);

private:
    KeywordFileManager& m_open;
};

/// Finds out which INCLUDE keywords of a project's files the move of the project would lead astray. Nothing is changed.
///
/// A relative path counts from the folder of the deck's top file, wherever the keyword stands. The decks of a project
/// that nobody has open are therefore opened for this, from their top files down.
class ProjectIncludes
{
public:
    ProjectIncludes(KeywordFileManager& manager, const IDirectoryManager& directories, const MovedPaths& paths)
        : m_manager(manager), m_directories(directories), m_paths(paths), m_closed(manager)
    {
    }

    /// The files with corrections, in the order of their names. They live as long as this object. Throws
    /// `DeckManagerException` when a file outside of the project, which must stay as it is, would be led astray, and
    /// when no text can hold a name.
    std::vector<FileCorrections> Find();

    /// The files below the folders of the project; those directly in it don't count, nor does what is cached.
    static void ProjectDataFiles(const IDirectoryManager& directories, std::vector<Service::FileName>& names);

private:
    /// The top files of the decks that the file belongs to.
    static std::vector<const KeywordFile*> TopsOf(const KeywordFile& file);
    static bool IsPotentiallyKeywordFile(const Service::FileName& name);
    void LoadClosedDecks(const std::vector<Service::FileName>& names);
    std::vector<Service::Directory> BasesOf(const Service::FileName& name, const KeywordFile* open,
                                            const KeywordFile* closed) const;
    std::vector<IncludeCorrection> FixInclude(KeywordFile& file, const std::vector<Service::Directory>& bases,
                                              bool managed) const;
    void TellOfAlias(KeywordINCLUDE& keyword, const Service::FileName& include, const Context& context,
                     const std::vector<Service::Directory>& bases) const;
    std::optional<Service::FileName> FixManagedFileInclude(const Service::FileName& include,
                                                           const std::vector<Service::Directory>& bases) const;
    [[noreturn]] static void FixUnmanagedFileInclude(const KeywordINCLUDE& keyword, const Service::FileName& include);
    void TellOfOutsideFiles(const std::unordered_set<std::string>& corrected) const;
    void TellOfSkipped(const KeywordFile& open, const KeywordFile& closed,
                       const std::vector<Service::Directory>& bases) const;
    void TellOfUncorrected(const KeywordFile& file, const std::vector<Service::Directory>& bases,
                           const std::string& why, const std::unordered_set<long long>& corrected) const;

    KeywordFileManager& m_manager;
    const IDirectoryManager& m_directories;
    const MovedPaths& m_paths;
    ClosedFiles m_closed;
};

} // namespace Tarn::Fjel::Core::DeckManager
