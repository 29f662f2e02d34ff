// The project verbs. A project is a directory in which each deck has a folder of its own, NAME/NAME.DATA, and which
// keeps what lets an unchanged deck open without a scan.

#include <algorithm>
#include <cerrno>
#include <optional>
#include <string>
#include <vector>

#include <deckmanager/DeckManagerFactory.h>
#include <deckmanager/Exporter.h>
#include <deckmanager/IDeckManager.h>
#include <fmt/format.h>
#include <tarn/service/FileSystem.h>
#include <tarn/service/Strings.h>

#include "command/Verbs.h"
#include "output/Json.h"
#include "output/Table.h"
#include "output/UnifiedDiff.h"
#include "session/DeckSession.h"
#include "session/DeckWalk.h"
#include "transfer/ExportRun.h"

namespace Deckman {

namespace {

using Service::Directory;
using Service::FileName;
using Service::FileSystem;

/// An empty file of this name in the project asks for the fast form of the cache.
constexpr const char* markerName = "deck_cache_xml.lock";
constexpr const char* cacheFileName = "DeckCache.ptd";
constexpr const char* cacheFolderName = "Cache__";

struct ProjectDeck
{
    std::string name;
    FileName file;
};

/// The top file of a deck of that name, as the library looks for it.
FileName TopFileOf(const Directory& project, const std::string& name)
{
    FileName file(name);
    if (file.GetExtension() != "VFP") file.SetExtension("DATA");
    Directory folder = project;
    file = folder.Append(name);
    return file;
}

std::vector<ProjectDeck> DecksIn(const Directory& project)
{
    std::vector<ProjectDeck> decks;
    for (const std::string& folder : project.FindSubdirectories()) {
        const std::string name = Directory(folder).LeafName();
        const FileName file = TopFileOf(project, name);
        if (!name.starts_with('.') && name != cacheFolderName && file.IsFile()) decks.push_back({name, file});
    }
    return decks;
}

/// Prints decks as rows of name, file and number of keywords.
class DeckRows
{
public:
    DeckRows(const Directory& project, Output& out, bool json) : m_out(out), m_json(json), m_folder(project.Name())
    {
        if (!m_folder.ends_with('/')) m_folder += '/';
    }

    /// `keywords` without a value: not known.
    void Add(const ProjectDeck& deck, std::optional<int> keywords)
    {
        const std::string& full = deck.file.GetFullName();
        const std::string file = full.starts_with(m_folder) ? full.substr(m_folder.size()) : full;
        if (m_json) {
            m_out.Append("{\"name\":");
            AppendJsonString(m_out, deck.name);
            m_out.Append(",\"file\":");
            AppendJsonString(m_out, file);
            m_out.Append(fmt::format(",\"keywords\":{}}}\n", keywords ? std::to_string(*keywords) : "null"));
            return;
        }
        m_table.Add(deck.name);
        m_table.Add(file);
        m_table.Add(keywords ? std::to_string(*keywords) : std::string());
    }

    void Finish() { m_table.Print(m_out); }

private:
    Output& m_out;
    bool m_json;
    std::string m_folder;
    Table m_table{{{"name"}, {"file"}, {"keywords", true}}};
};

/// Opens the decks one by one, which fills the cache of the project.
ExitStatus ListDecks(const Directory& project, const std::vector<ProjectDeck>& decks, Messages& messages, bool json,
                     Output& out)
{
    DeckRows rows(project, out, json);
    ExitStatus status = Done;
    for (const ProjectDeck& deck : decks) {
        std::optional<int> count;
        try {
            DeckSession session(messages.Shown(deck.file.GetFullName()), messages, project.Name());
            const int errors = messages.Errors();
            DeckWalk walk(session, false);
            while (walk.Next()) {
            }
            count = walk.Index();
            if (messages.Errors() > errors && session.HasUnreadableFile()) status = FileFailure;
        } catch (const Failure& failure) {
            messages.Error(failure.Place(), failure.what());
            status = std::max(status, failure.Status());
        } catch (const Service::Exception& exception) {
            messages.Error(messages.Shown(deck.file.GetFullName()), exception.what());
            status = std::max(status, NotThere);
        }
        rows.Add(deck, count);
    }
    rows.Finish();
    return status;
}

void MakeDirectories(const Directory& directory, const std::string& shown)
{
    std::vector<std::string> missing;
    for (Directory level = directory; level.IsSet() && !level.Exists(); level = level.Parent())
        missing.push_back(level.Name());
    for (; !missing.empty(); missing.pop_back()) {
        FileSystem::ErrorCode error;
        if (!FileSystem::Instance().MakeDirectory(missing.back(), error))
            throw Failure(FileFailure, fmt::format("The directory cannot be made: {}.", error.message()), shown);
    }
}

void MakeMarker(const Directory& project, const Messages& messages)
{
    FileSystem& files = FileSystem::Instance();
    const FileName marker(project, markerName);
    FileSystem::ErrorCode error;
    const int handle = files.Open(marker.GetFullName(), FileSystem::OpenMode::WriteNew, error);
    if (handle < 0 && error.value() == EEXIST) return;
    if (handle < 0 || !files.Close(handle, error)) {
        throw Failure(FileFailure, fmt::format("The file cannot be made: {}.", error.message()),
                      messages.Shown(marker.GetFullName()));
    }
}

/// The name is also that of a folder and a file.
void CheckDeckName(const std::string& name)
{
    const auto refuse = [&](const std::string& text) { throw Failure(WrongUsage, text, name); };
    if (Service::Trimmed(name).size() != name.size() || name.empty())
        refuse("A deck's name neither is empty nor begins or ends with a blank.");
    if (name.starts_with('.')) refuse("A deck's name does not begin with a dot.");
    if (name.find_first_of("/\\:") != std::string::npos) refuse("A deck's name holds no slash and no colon.");
    if (std::any_of(name.begin(), name.end(),
                    [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; }))
        refuse("A deck's name holds no control characters.");
    if (name == cacheFolderName) refuse("This is the name of a folder of every project.");
    ToDirectory(name);
}

bool IsEmptyDirectory(const Directory& directory)
{
    return directory.IsDirectory() && directory.Find({}, false, false, true, true, false).empty();
}

bool LiesIn(const Directory& directory, const Directory& outer)
{
    return Directory(directory.CanonicalName()).IsDescendantOf(Directory(outer.CanonicalName()));
}

/// What stands at the place to which a project moves, kept as `NEWDIR~`; it goes back when the project doesn't come.
class KeptDirectory
{
public:
    KeptDirectory(const Directory& place, const std::string& shown) : m_place(place), m_kept(place.Name() + "~")
    {
        FileSystem::ErrorCode error;
        if (FileSystem::Instance().Status(m_kept.Name(), false, error).Exists()) {
            throw Failure(FileFailure,
                          fmt::format("Something stands here already, where --backup would keep what is in {}.", shown),
                          shown + "~");
        }
        if (!FileSystem::Instance().Rename(m_place.Name(), m_kept.Name(), error))
            throw Failure(FileFailure, fmt::format("The directory cannot be kept: {}.", error.message()), shown);
    }
    ~KeptDirectory()
    {
        FileSystem::ErrorCode ignored;
        if (!m_place.Exists()) FileSystem::Instance().Rename(m_kept.Name(), m_place.Name(), ignored);
    }
    KeptDirectory(const KeptDirectory&) = delete;
    KeptDirectory& operator=(const KeptDirectory&) = delete;

private:
    Directory m_place;
    Directory m_kept;
};

/// The keywords that a move changes, as an export tells them.
void PrintChanges(const Directory& project, const DeckManager::ProjectMovePlan& plan, const Messages& messages,
                  bool json, Output& out)
{
    UnifiedDiff diff(out);
    for (const DeckManager::ProjectMovePlan::Change& change : plan.changes) {
        if (!json) {
            diff.Add(messages.Shown(change.file), change.line, change.before, change.after);
            continue;
        }
        const std::string folder = project.Name() + "/";
        out.Append("{\"action\":\"changed\",\"file\":");
        AppendJsonString(out, change.file.starts_with(folder) ? change.file.substr(folder.size()) : change.file);
        out.Append(fmt::format(",\"line\":{},\"name\":\"INCLUDE\",\"old\":", change.line));
        AppendJsonString(out, change.before);
        out.Append(",\"new\":");
        AppendJsonString(out, change.after);
        out.Append("}\n");
    }
}

/// Names that differ in case alone are one deck to the library.
void CheckIsFree(const Directory& project, const std::string& name, const Messages& messages)
{
    for (const std::string& entry : project.Find({}, false, false, true, true, false)) {
        const Directory folder(entry);
        if (!Service::NoCaseStringEqual(folder.LeafName(), name)) continue;
        if (folder.LeafName() == name && IsEmptyDirectory(folder)) continue;
        throw Failure(FileFailure, "Something of this name stands in the project already.", messages.Shown(entry));
    }
}

} // namespace

ExitStatus RunProjectInit(Messages& messages, const Options& options, Output& out)
{
    const Directory project = ToDirectory(options.projectDir);
    if (project.Exists()) ToProjectDirectory(options.projectDir);
    MakeDirectories(project, options.projectDir);
    MakeMarker(project, messages);
    return ListDecks(project, DecksIn(project), messages, options.json, out);
}

ExitStatus RunProjectLs(Messages& messages, const Options& options, Output& out)
{
    const Directory project = ToProjectDirectory(options.projectDir);
    const std::vector<ProjectDeck> decks = DecksIn(project);
    if (decks.empty()) messages.Note(options.projectDir, "There are no decks in this project.");
    return ListDecks(project, decks, messages, options.json, out);
}

ExitStatus RunProjectAdd(Messages& messages, const Options& options, Output& out)
{
    const Directory project = ToProjectDirectory(options.projectDir);
    CheckDeckName(options.deckName);
    CheckIsFree(project, options.deckName, messages);
    const ProjectDeck deck{options.deckName, TopFileOf(project, options.deckName)};
    {
        DeckSession session(options.deck, messages);
        const auto write = [&](DeckManager::ExportReport& report) {
            return DeckManager::Exporter::CopyToDirectory(session.Keywords(), deck.file.GetDirectory().Name(),
                                                          deck.file.GetFileName(), ToExportOptions(options), &report);
        };
        const auto report = RunExport(session, options, messages.Shown(deck.file.GetFullName()), write);
        if (!report) return FileFailure;
        if (options.dryRun) {
            DeckRows rows(project, out, options.json);
            rows.Add(deck, std::nullopt);
            rows.Finish();
            if (!options.json && !report->changes.empty()) out.Append('\n');
            PrintChanges(session, *report, options.json, out);
            return Done;
        }
    }
    return ListDecks(project, {deck}, messages, options.json, out);
}

ExitStatus RunProjectMove(Messages& messages, const Options& options, Output& out)
{
    const Directory project = ToProjectDirectory(options.projectDir);
    Directory target = ToDirectory(options.newProjectDir);
    if (target == project) throw Failure(WrongUsage, "The project lies there already.", options.newProjectDir);
    if (LiesIn(target, project) || LiesIn(project, target))
        throw Failure(FileFailure, "The project directory cannot be moved into itself.", options.projectDir);
    if (target.IsDirectory()) {
        if (!options.replace && !IsEmptyDirectory(target)) {
            throw Failure(FileFailure, "The directory is not empty; --replace deletes what is there.",
                          options.newProjectDir);
        }
        // What a link leads to is replaced, and the link stays.
        target = Directory(target.CanonicalName());
    }
    const auto manager = DeckManager::DeckManagerFactory::Create(project.Name());
    try {
        if (options.dryRun) {
            const DeckManager::ProjectMovePlan plan = manager->PlanProjectDirMove(target.Name());
            DeckRows rows(project, out, options.json);
            for (const ProjectDeck& deck : DecksIn(project))
                rows.Add(deck, std::nullopt);
            rows.Finish();
            if (!options.json && !plan.changes.empty()) out.Append('\n');
            PrintChanges(project, plan, messages, options.json, out);
            return Done;
        }
        std::optional<KeptDirectory> kept;
        if (options.backup && target.Exists() && !IsEmptyDirectory(target)) kept.emplace(target, options.newProjectDir);
        manager->MoveProjectDir(target.Name(), !options.backup);
    } catch (const Service::Exception& exception) {
        throw Failure(FileFailure, exception.what(), options.projectDir);
    }
    const ExitStatus status = ListDecks(target, DecksIn(target), messages, options.json, out);
    return messages.Errors() > 0 ? FileFailure : status;
}

ExitStatus RunProjectFlush(Messages& messages, const Options& options, Output& out)
{
    const Directory project = ToProjectDirectory(options.projectDir);
    DeckManager::DeckManagerFactory::Create(project.Name())->FlushCache();
    // The library empties the tables that it has read. Those that nobody has asked for are files, and no more.
    std::vector<std::string> folders = project.FindSubdirectories();
    folders.insert(folders.begin(), project.Name());
    for (const std::string& folder : folders) {
        const Directory directory(folder);
        for (const std::string& file : directory.FindFilesByPattern(std::string(cacheFileName) + "*")) {
            FileSystem::ErrorCode error;
            if (!FileSystem::Instance().Unlink(file, error)) {
                messages.Error(messages.Shown(file), fmt::format("The file cannot be removed: {}.", error.message()));
            }
        }
    }
    DeckRows rows(project, out, options.json);
    for (const ProjectDeck& deck : DecksIn(project))
        rows.Add(deck, std::nullopt);
    rows.Finish();
    return messages.Errors() > 0 ? FileFailure : Done;
}

} // namespace Deckman
