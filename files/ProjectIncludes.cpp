#include "files/ProjectIncludes.h"

#include <algorithm>
#include <array>
#include <string_view>

#include <boost/filesystem/exception.hpp>

#include "cache/IDirectoryManager.h"
#include "files/KeywordFile.h"
#include "files/KeywordINCLUDE.h"
#include "files/MovedPaths.h"
#include "text/KeywordFileReader.h"
#include "text/Tokenizer.h"
#include <deckmanager/Context.h>
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/Environment.h>
#include <deckmanager/KeywordVariables.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/DataAccessUtils.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/service/FileStatus.h>
#include <tarn/service/FileStream.h>
#include <tarn/service/FileStreamBuffer.h>
#include <tarn/service/FileUtils.h>
#include <tarn/service/Log.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

using Service::Directory;
using Service::FileName;
using Service::Log;

namespace {

std::optional<FileName> ToFileName(const std::optional<std::string>& text)
{
    if (!text || Service::AllBlanks(*text)) return std::nullopt;
    try {
        return FileName(*text);
    } catch (const boost::filesystem::filesystem_error&) {
        return std::nullopt;
    }
}

/// The name as the text has it: neither a variable nor an alias is replaced.
std::optional<FileName> NameInText(KeywordINCLUDE& keyword)
{
    // What is to be said of a deck's data is said to who works on it.
    const Log::Probe probe;
    KeywordVariables variables;
    const std::unique_ptr<Keywords::IKeywordData> data = keyword.ReadData(Context(), &variables);
    return ToFileName(Keywords::DataAccessUtils::GetINCLUDEFileName(data.get()));
}

bool IsLeftToTheDeck(const FileName& name)
{
    return name.GetFullName().find('$') != std::string::npos;
}

/// A file stands there, or may: the system doesn't tell.
bool LeadsToFile(const FileName& name)
{
    const Service::FileStatus status = Service::FileStatus::Of(name);
    return status.IsRegularFile() || status.isUnknown;
}

/// While it stands, files are read with what a simulator skips: that has to be right for the others.
class WithoutSkipping
{
public:
    WithoutSkipping()
        : m_enabled(Environment::Instance().SKIPENDSKIPEnabled()),
          m_simulator(Environment::Instance().SKIPENDSKIPSimulator())
    {
        Environment::Instance().EnableSKIPENDSKIP(false, m_simulator);
    }
    ~WithoutSkipping() { Environment::Instance().EnableSKIPENDSKIP(m_enabled, m_simulator); }
    WithoutSkipping(const WithoutSkipping&) = delete;
    WithoutSkipping& operator=(const WithoutSkipping&) = delete;

private:
    bool m_enabled;
    Keywords::SimulatorType m_simulator;
};

[[noreturn]] void RefuseUnreadable(const FileName& name)
{
    throw DeckManagerException("The file " + name.GetFullName() + " cannot be read.");
}

/// A data text whose name and terminator stand ahead of the column behind which nothing is read; no value where the
/// name is too long for that.
std::optional<std::string> FittedToLine(const std::string& dataText)
{
    constexpr std::size_t columns = Tokenizer::MaxLineLength;
    const auto [at, size] = FileReferencingKeyword::NameToken(dataText);
    const std::size_t lineBegin = dataText.rfind('\n', at) + 1;
    const std::size_t lineEnd = std::min(dataText.find('\n', at), dataText.size());
    const std::string_view rest = std::string_view(dataText).substr(at + size, lineEnd - at - size);
    if (size > columns) return std::nullopt;
    const std::size_t end = rest.find(VeldaneDeckInfo::TERMINATION_TOKEN);
    const bool nameFits = at - lineBegin + size <= columns;
    if (nameFits && (end == std::string_view::npos || at + size + end - lineBegin < columns)) return dataText;
    std::string fitted = dataText.substr(0, nameFits ? at : lineBegin) + dataText.substr(at, size);
    if (!Service::AllBlanks(rest)) fitted.append("\n ").append(Service::TrimmedLeft(rest));
    return fitted + dataText.substr(lineEnd);
}

[[noreturn]] void Refuse(const KeywordINCLUDE& keyword, const std::string& text)
{
    throw DeckManagerException(keyword.GetFile()->GetFileName().GetFullName() + ", line " +
                               std::to_string(keyword.GetLine()) + ": " + text);
}

} // namespace

// --- files that nobody has open ----------------------------------------------------------------------------------

bool ClosedFiles::GetCacheEntry(const IKeywordFile& file, CacheEntry& entry)
{
    return m_open.GetCacheEntry(file, entry);
}

bool ClosedFiles::SetCacheEntry(const IKeywordFile&, const CacheEntry&)
{
    // Whoever opens the deck may open it with other settings: what is stored is theirs.
    return false;
}

std::shared_ptr<KeywordFile> ClosedFiles::GetKeywordFile(const FileName& name, bool useVariables)
{
    const std::shared_ptr<KeywordFile> twin = m_open.FindKeywordFile(name);
    return KeywordFileManager::GetKeywordFile(name, twin ? twin->UsesVariables() : useVariables);
}

void ClosedFiles::Load(const FileName& top)
{
    const std::shared_ptr<KeywordFile> file = GetKeywordFile(top, false);
    if (!file) return;
    std::unordered_set<const KeywordFile*> seen{file.get()};
    std::vector<KeywordFile*> waiting{file.get()};
    while (!waiting.empty()) {
        KeywordFile& next = *waiting.back();
        waiting.pop_back();
        for (const KeywordFileIterator& include : next.GetINCLUDEKeywords()) {
            KeywordFile* included = KeywordFile::IncludedFileOf(*include);
            if (included != nullptr && seen.insert(included).second) waiting.push_back(included);
        }
    }
}

// --- what there is -----------------------------------------------------------------------------------------------

void ProjectIncludes::ProjectDataFiles(const IDirectoryManager& directories, std::vector<FileName>& names)
{
    names.clear();
    for (const std::string& folder : directories.ProjectDir().FindSubdirectories()) {
        const Directory directory(folder);
        if (directory == directories.CacheDir()) continue;
        for (const std::string& file : directory.FindFilesBelow())
            names.emplace_back(file);
    }
}

bool ProjectIncludes::IsPotentiallyKeywordFile(const FileName& name)
{
    static constexpr std::array<std::string_view, 8> neverDeckText = {"PRT",   "XML",    "ZRF",  "MSG",
                                                                      "FGRID", "FEGRID", "FGSG", "FINIT"};
    const std::string extension = Service::Uppercased(name.GetExtension());
    if (std::find(neverDeckText.begin(), neverDeckText.end(), extension) != neverDeckText.end()) return false;
    const Service::ReadWatch reading;
    if (!Service::FileInputStream(name.GetFullName())) RefuseUnreadable(name);
    const bool isText = Service::FileUtils::IsAscii(name, 2500);
    if (reading.SawFailure()) RefuseUnreadable(name);
    return isText;
}

/// First the files that decks of a project begin with, then what looks like one, then the rest: a file that has come
/// with a deck is no top file.
void ProjectIncludes::LoadClosedDecks(const std::vector<FileName>& names)
{
    // What is to be said of a deck is said to who works on it.
    const Log::Probe probe;
    const WithoutSkipping all;
    const auto rankOf = [this](const FileName& name) {
        const std::string extension = name.GetExtension();
        const Directory& folder = name.GetDirectory();
        const bool isDeck = (extension == "DATA" && name.GetRootName() == FileName(folder.LeafName()).GetRootName()) ||
                            (extension == "VFP" && name.GetFileName() == folder.LeafName());
        if (isDeck && folder.Parent() == m_directories.ProjectDir()) return 0;
        return Service::NoCaseStringEqual(extension, "DATA") ? 1 : 2;
    };
    for (int rank = 0; rank < 3; ++rank) {
        for (const FileName& name : names) {
            if (rankOf(name) != rank || m_closed.FindKeywordFile(name)) continue;
            if (m_manager.FindKeywordFile(name) || IsPotentiallyKeywordFile(name)) m_closed.Load(name);
        }
    }
}

std::vector<FileCorrections> ProjectIncludes::Find()
{
    std::vector<FileName> names;
    ProjectDataFiles(m_directories, names);
    // Texts of commits that are under way are no files of their own.
    std::unordered_set<std::string> seen;
    for (const std::shared_ptr<KeywordFile>& file : m_manager.Files()) {
        if (file->IsPending()) seen.insert(FileName(file->FileReader()->GetPath()).CanonicalName());
    }
    std::erase_if(names, [&](const FileName& name) { return seen.count(name.CanonicalName()) > 0; });
    LoadClosedDecks(names);

    std::vector<FileCorrections> found;
    for (const FileName& name : names) {
        const std::string canonical = name.CanonicalName();
        if (!seen.insert(canonical).second) continue;
        std::shared_ptr<KeywordFile> open = m_manager.FindKeywordFile(name);
        const std::shared_ptr<KeywordFile> closed = m_closed.FindKeywordFile(name);
        // What is known of a file that has changed since says nothing of its text.
        if (open && open->HasChangedOnDisk() && !open->IsModified()) open = nullptr;
        const std::shared_ptr<KeywordFile>& file = open ? open : closed;
        if (!file) continue;
        const Service::ReadWatch reading;
        file->Begin();
        const OpenReaderGuard guard(*file);
        if (file->LoadFailed() || (name.FileExists() && !file->OpenedReader(*file->FileReader())))
            RefuseUnreadable(name);
        const bool managed = m_paths.IsInManagedArea(FileName(canonical).GetDirectory(), {});
        const std::vector<Directory> bases = BasesOf(name, open.get(), closed.get());
        std::vector<IncludeCorrection> includes = FixInclude(*file, bases, managed);
        if (open && closed && Environment::Instance().SKIPENDSKIPEnabled()) TellOfSkipped(*open, *closed, bases);
        if (reading.SawFailure()) RefuseUnreadable(name);
        if (!includes.empty()) found.push_back({file, open != nullptr, std::move(includes)});
    }
    TellOfOutsideFiles(seen);
    return found;
}

// --- what has to change ------------------------------------------------------------------------------------------

std::vector<const KeywordFile*> ProjectIncludes::TopsOf(const KeywordFile& file)
{
    std::vector<const KeywordFile*> tops;
    std::unordered_set<const KeywordFile*> seen{&file};
    std::vector<const KeywordFile*> waiting{&file};
    while (!waiting.empty()) {
        const KeywordFile* next = waiting.back();
        waiting.pop_back();
        const std::vector<KeywordFile*> above = next->IncludingFiles();
        if (above.empty()) tops.push_back(next);
        for (const KeywordFile* including : above) {
            if (seen.insert(including).second) waiting.push_back(including);
        }
    }
    return tops;
}

/// The folders from which a relative path of the file counts: those of the top files of its decks. A file that no other
/// includes is its own.
std::vector<Directory> ProjectIncludes::BasesOf(const FileName& name, const KeywordFile* open,
                                                const KeywordFile* closed) const
{
    std::vector<Directory> bases;
    const auto add = [&bases](const Directory& folder) {
        const auto isSame = [&](const Directory& base) { return base.Name() == folder.Name(); };
        if (std::none_of(bases.begin(), bases.end(), isSame)) bases.push_back(folder);
    };
    for (const KeywordFile* file : {open, closed}) {
        if (file == nullptr) continue;
        for (const KeywordFile* top : TopsOf(*file))
            add(top->GetFileName().GetDirectory());
    }
    if (bases.empty()) add(name.GetDirectory());
    return bases;
}

std::vector<IncludeCorrection> ProjectIncludes::FixInclude(KeywordFile& file, const std::vector<Directory>& bases,
                                                           bool managed) const
{
    std::vector<IncludeCorrection> corrections;
    for (const KeywordFileIterator& place : file.GetINCLUDEKeywords()) {
        KeywordINCLUDE& keyword = *KeywordINCLUDE::From(const_cast<IKeyword*>(*place));
        if (keyword.IsCommentedOut()) continue;
        const std::optional<FileName> include = NameInText(keyword);
        // A bare leaf lies beside the top file, wherever that is.
        if (!include || !include->GetDirectory().IsSet()) continue;
        if (IsLeftToTheDeck(*include)) {
            TellOfAlias(keyword, *include, file.RootContext(), bases);
            continue;
        }
        const std::optional<FileName> corrected = FixManagedFileInclude(*include, bases);
        if (!corrected || corrected->GetFullName() == include->GetFullName()) continue;
        if (!managed) FixUnmanagedFileInclude(keyword, *include);
        std::optional<std::string> dataText = keyword.TextWithName(corrected->GetFullName(), file.RootContext());
        if (dataText) dataText = FittedToLine(*dataText);
        if (!dataText) Refuse(keyword, "No INCLUDE can hold the name " + corrected->GetFullName() + ".");
        corrections.push_back({&keyword, *dataText});
    }
    return corrections;
}

/// What a variable or an alias stands for is the deck's to say. A user may have to.
void ProjectIncludes::TellOfAlias(KeywordINCLUDE& keyword, const FileName& include, const Context& context,
                                  const std::vector<Directory>& bases) const
{
    std::optional<FileName> resolved;
    {
        const Log::Probe probe;
        resolved = ToFileName(Keywords::DataAccessUtils::GetINCLUDEFileName(keyword.GetData(context)));
    }
    if (!resolved || IsLeftToTheDeck(*resolved)) return;
    const std::optional<FileName> needed = FixManagedFileInclude(*resolved, bases);
    if (!needed || needed->GetFullName() == resolved->GetFullName()) return;
    const Log::Place place(keyword.GetFile()->GetFileName().GetFullName(), keyword.GetLine());
    Log::SendLogMessage("The INCLUDE path \"" + include.GetFullName() +
                            "\" is not corrected, since it holds an alias. After the move it would have to stand for "
                            "\"" +
                            needed->GetFullName() + "\".",
                        Log::Warning);
}

/// The name that leads from the new place of the deck to what the old name leads to; no value for a name that leads
/// nowhere.
std::optional<FileName> ProjectIncludes::FixManagedFileInclude(const FileName& include,
                                                               const std::vector<Directory>& bases) const
{
    if (include.IsComplete()) {
        if (!LeadsToFile(include)) return std::nullopt;
        return m_paths.Moved(include);
    }
    std::optional<FileName> corrected;
    FileName firstTarget;
    for (const Directory& base : bases) {
        FileName target = include;
        if (!target.MakeComplete(base) || !LeadsToFile(target)) continue;
        FileName candidate = include;
        candidate = m_paths.Way(target.GetDirectory(), base);
        if (!corrected) {
            corrected = candidate;
            firstTarget = target;
        } else if (candidate.GetFullName() != corrected->GetFullName() && target == firstTarget) {
            // Decks in different places share the file: only a complete name serves them all.
            return m_paths.Moved(target);
        }
    }
    return corrected;
}

/// A file outside of the project stays as it is, and what it says of the project would no longer be true.
void ProjectIncludes::FixUnmanagedFileInclude(const KeywordINCLUDE& keyword, const FileName& include)
{
    const Log::Place place(keyword.GetFile()->GetFileName().GetFullName(), keyword.GetLine());
    Log::SendLogMessage("The INCLUDE path \"" + include.GetFullName() +
                            "\" leads into the project, and the file lies outside of it.",
                        Log::Error);
    throw DeckManagerException("DeckManager::KeywordFileManager::FixUnmanagedFileInclude: cannot update unmanaged "
                               "file referencing a managed file");
}

/// Files that are not the project's to correct, and yet are read with its decks or are open.
void ProjectIncludes::TellOfOutsideFiles(const std::unordered_set<std::string>& corrected) const
{
    std::unordered_set<std::string> seen = corrected;
    for (const KeywordFileManager* manager :
         {static_cast<const KeywordFileManager*>(&m_manager), static_cast<const KeywordFileManager*>(&m_closed)})
    {
        for (const std::shared_ptr<KeywordFile>& file : manager->Files()) {
            if (!file->WasLoaded() || !seen.insert(file->GetFileName().CanonicalName()).second) continue;
            TellOfUncorrected(*file, BasesOf(file->GetFileName(), file.get(), nullptr),
                              "lies in no folder of the project", {});
        }
    }
}

/// What an open file skips is not in its list, and yet in its text.
void ProjectIncludes::TellOfSkipped(const KeywordFile& open, const KeywordFile& closed,
                                    const std::vector<Directory>& bases) const
{
    std::unordered_set<long long> listed;
    for (const std::shared_ptr<IKeyword>& keyword : open.DiskList())
        listed.insert(KeywordFileContents::AsKeyword(keyword).Position());
    TellOfUncorrected(closed, bases, "is open and skips it", listed);
}

/// `corrected`: positions of keywords that others see to.
void ProjectIncludes::TellOfUncorrected(const KeywordFile& file, const std::vector<Directory>& bases,
                                        const std::string& why, const std::unordered_set<long long>& corrected) const
{
    for (const KeywordFileIterator& place : file.GetINCLUDEKeywords()) {
        KeywordINCLUDE& keyword = *KeywordINCLUDE::From(const_cast<IKeyword*>(*place));
        if (corrected.count(keyword.Position()) > 0) continue;
        const std::optional<FileName> include = NameInText(keyword);
        if (!include || !include->GetDirectory().IsSet() || IsLeftToTheDeck(*include)) continue;
        const std::optional<FileName> needed = FixManagedFileInclude(*include, bases);
        if (!needed || needed->GetFullName() == include->GetFullName()) continue;
        const Log::Place logPlace(file.GetFileName().GetFullName(), keyword.GetLine());
        Log::SendLogMessage("The INCLUDE path \"" + include->GetFullName() + "\" is not corrected, since the file " +
                                why + ". After the move it would be \"" + needed->GetFullName() + "\".",
                            Log::Warning);
    }
}

} // namespace Tarn::Fjel::Core::DeckManager
