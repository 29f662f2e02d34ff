#include "session/DeckSession.h"

#include <cerrno>
#include <exception>
#include <unordered_set>

#include <deckmanager/DeckManagerFactory.h>
#include <deckmanager/Environment.h>
#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <deckmanager/LineEnds.h>
#include <fmt/format.h>
#include <unistd.h>

#include "command/Verbs.h"
#include "session/PlaceIndex.h"

namespace Deckman {

namespace {

/// A deck has a name besides its file, and looks for a file of that name first; this is no file's name.
constexpr const char* deckName = "deckman's deck";
constexpr const char* otherDeckName = "deckman's other deck";

Service::FileName ToFileName(const std::string& path)
{
    try {
        return Service::FileName(path);
    } catch (const std::exception&) {
        throw Failure(FileFailure, "This is no name that a file can have.", path);
    }
}

/// Throws `Failure` for what is no top file of a deck.
void CheckTopFile(const std::string& path)
{
    const Service::FileName file = ToFileName(path);
    if (Service::Directory(path).IsDirectory())
        throw Failure(FileFailure, "This is a directory, and not the top file of a deck.", path);
    if (!file.IsSet() || !file.FileExists()) {
        const bool closed = ::access(path.c_str(), F_OK) != 0 && errno == EACCES;
        throw Failure(FileFailure,
                      closed ? "No permission to enter the folder of the file." : "The file does not exist.", path);
    }
    if (!file.IsFile()) throw Failure(FileFailure, "This is not a regular file.", path);
    if (!file.FileAccessibleAndExists()) throw Failure(FileFailure, "No permission to read the file.", path);
}

} // namespace

void SetUpProcess(const Options& options)
{
    auto& environment = DeckManager::Environment::Instance();
    environment.SetPATHSSupport(true);
    environment.SetPreventEmptyFileCreation(true);
    using LineEnds = DeckManager::LineEnds;
    LineEnds::SetPolicy(options.crLf ? LineEnds::Policy::CrLf : LineEnds::Policy::Keep);
    if (options.simulator) environment.EnableSKIPENDSKIP(true, *options.simulator);
    // What is passed over without a word is what these two are asked for.
    if (options.verb != nullptr && (options.verb->name == "check" || options.verb->name == "read"))
        environment.LogWarningForPossibleIndentedKeywords(true);
    if (options.keywordTag) environment.SetCustomKeywordGeneratedTag(*options.keywordTag);
    if (options.fileTag) environment.SetCustomFileGeneratedTag(*options.fileTag);
}

Service::Directory ToDirectory(const std::string& path)
{
    try {
        Service::Directory directory(path);
        if (directory.IsSet() && directory.MakeComplete(Service::Directory::Current())) return directory;
    } catch (const std::exception&) {
        // Told below.
    }
    throw Failure(WrongUsage, "This is no name that a directory can have.", path);
}

Service::Directory ToProjectDirectory(const std::string& path)
{
    Service::Directory directory = ToDirectory(path);
    if (directory.IsDirectory()) return directory;
    const Service::FileStatus status = Service::FileStatus::Of(directory.Name());
    if (status.isUnknown) throw Failure(FileFailure, "No permission to enter the folder of the project.", path);
    if (status.Exists()) throw Failure(FileFailure, "This is a file, and not the directory of a project.", path);
    throw Failure(FileFailure, "The directory does not exist; deckman project init makes a project.", path);
}

DeckSession::DeckSession(const std::string& path, Messages& messages, const std::string& projectDir)
    : m_messages(messages)
{
    Open(path, projectDir);
}

DeckSession::~DeckSession() = default;

void DeckSession::Open(const std::string& path, const std::string& projectDir)
{
    const std::string project = projectDir.empty() ? std::string() : ToProjectDirectory(projectDir).Name();
    CheckTopFile(path);
    m_manager = DeckManager::DeckManagerFactory::Create(project);
    m_deck = &Import(path, deckName);
    m_keywords = m_deck->GetDeckKeywords();
    m_topFile = m_keywords->GetDataFile()->GetFileName();
    m_topFolder = m_topFile.Name();
    if (!m_topFolder.ends_with('/')) m_topFolder += '/';
}

DeckManager::IDeck& DeckSession::OpenBeside(const std::string& path)
{
    CheckTopFile(path);
    return Import(path, otherDeckName);
}

DeckManager::IDeck& DeckSession::Import(const std::string& path, const char* name)
{
    DeckManager::IDeck* deck = m_manager->ImportDeck(name, path, false, true, false);
    if (deck == nullptr) throw Failure(FileFailure, "The file cannot be opened.", path);
    return *deck;
}

DeckManager::IDeckKeywordsEditor& DeckSession::Editor()
{
    return *m_manager->GetEditor(m_deck);
}

std::vector<DeckManager::IKeywordFile*> DeckSession::FilesInDeckOrder() const
{
    // By the INCLUDE keywords, a file ahead of what it includes: no walk over all keywords is needed.
    std::vector<DeckManager::IKeywordFile*> files;
    std::unordered_set<const DeckManager::IKeywordFile*> seen;
    std::vector<DeckManager::IKeywordFile*> waiting{m_keywords->GetDataFile()};
    while (!waiting.empty()) {
        DeckManager::IKeywordFile* file = waiting.back();
        waiting.pop_back();
        if (!seen.insert(file).second) continue;
        files.push_back(file);
        const std::vector<DeckManager::KeywordFileIterator>& includes = file->GetINCLUDEKeywords();
        for (auto include = includes.rbegin(); include != includes.rend(); ++include) {
            if (DeckManager::IKeywordFile* included = m_keywords->GetIncludedFile(**include))
                waiting.push_back(included);
        }
    }
    return files;
}

PlaceIndex& DeckSession::Places(bool all)
{
    std::unique_ptr<PlaceIndex>& places = m_places[all ? 1 : 0];
    if (!places) places = std::make_unique<PlaceIndex>(*this, all);
    return *places;
}

void DeckSession::SaveCache()
{
    // The editor stores it when it lets go of a deck.
    Editor().Close();
}

int DeckSession::FileNumber(DeckManager::IKeywordFile* file)
{
    const auto [place, isNew] = m_fileNumbers.try_emplace(file, static_cast<int>(m_shownFiles.size()));
    if (isNew) m_shownFiles.push_back(file != nullptr ? Shown(file->GetFileName()) : std::string());
    return place->second;
}

std::string DeckSession::Shown(const Service::FileName& file) const
{
    return ShownName(file.GetFullName());
}

std::string DeckSession::ShownName(std::string_view name) const
{
    return std::string(name.starts_with(m_topFolder) ? name.substr(m_topFolder.size()) : name);
}

std::string DeckSession::PlaceOf(const DeckManager::IKeywordFile& file) const
{
    return m_messages.Shown(file.GetFileName().GetFullName());
}

std::string DeckSession::PlaceOf(const DeckManager::IKeyword& keyword) const
{
    return fmt::format("{}:{}", PlaceOf(*keyword.GetFile()), keyword.GetLine());
}

bool DeckSession::HasUnreadableFile() const
{
    for (const DeckManager::IKeywordFile* file : m_keywords->GetFiles()) {
        const Service::FileName& name = file->GetFileName();
        if (Service::FileStatus::Of(name).isUnknown || (name.IsFile() && !name.FileAccessibleAndExists())) return true;
    }
    return false;
}

void DeckSession::RequireReadable() const
{
    if (HasUnreadableFile())
        throw Failure(FileFailure, "Nothing is changed: not all files of the deck can be read.",
                      PlaceOf(*m_keywords->GetDataFile()));
}

} // namespace Deckman
