#include "editing/EditRun.h"

#include <algorithm>
#include <iterator>
#include <unordered_set>
#include <utility>

#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <deckmanager/TextToCommit.h>
#include <tarn/service/FileStream.h>
#include <tarn/service/FileSystem.h>
#include <tarn/service/FileUtils.h>
#include <unistd.h>

#include "output/UnifiedDiff.h"
#include "session/DeckSession.h"

namespace Deckman {

namespace {

std::string WithLineFeeds(std::string text)
{
    std::erase(text, '\r');
    return text;
}

std::string TextOnDisk(const DeckManager::IKeywordFile& file)
{
    Service::FileInputStream stream(file.GetFileName().GetFullName());
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

bool IsSame(const Service::FileName& a, const Service::FileName& b)
{
    Service::FileInputStream first(a.GetFullName());
    Service::FileInputStream second(b.GetFullName());
    if (!first.good() || !second.good()) return false;
    std::vector<char> left(1 << 16);
    std::vector<char> right(left.size());
    while (first.good() && second.good()) {
        first.read(left.data(), static_cast<std::streamsize>(left.size()));
        second.read(right.data(), static_cast<std::streamsize>(right.size()));
        if (first.gcount() != second.gcount() ||
            !std::equal(left.begin(), left.begin() + first.gcount(), right.begin()))
            return false;
    }
    return first.eof() && second.eof();
}

} // namespace

EditRun::EditRun(DeckSession& session, const Options& options, const std::vector<DeckManager::IKeywordFile*>& before)
    : m_session(session), m_options(options)
{
    std::vector<DeckManager::IKeywordFile*> files = session.FilesInDeckOrder();
    const std::unordered_set<const DeckManager::IKeywordFile*> present(files.begin(), files.end());
    std::copy_if(before.begin(), before.end(), std::back_inserter(files),
                 [&present](const DeckManager::IKeywordFile* file) { return present.count(file) == 0; });
    std::copy_if(files.begin(), files.end(), std::back_inserter(m_changed),
                 [](const DeckManager::IKeywordFile* file) { return file->IsModified(); });
}

EditRun::EditRun(DeckSession& session, const Options& options, const std::vector<DeckManager::IKeywordFile*>& changed,
                 std::vector<Service::FileName> replaced)
    : m_session(session), m_options(options), m_changed(changed), m_replaced(std::move(replaced))
{
}

void EditRun::Finish()
{
    if (!m_options.dryRun) {
        Finish([this] { m_session.Editor().Commit(); });
        return;
    }
    try {
        MakeTexts();
    } catch (const Service::Exception& exception) {
        throw Failure(FileFailure, exception.what(), Place());
    }
}

const std::string& EditRun::Place() const
{
    const bool isMerge = !m_options.newDeck.empty();
    return isMerge ? m_options.newDeck : m_options.deck;
}

void EditRun::Finish(const std::function<void()>& commit)
{
    try {
        Commit(commit);
    } catch (const Service::Exception& exception) {
        throw Failure(FileFailure, exception.what(), Place());
    }
}

void EditRun::MakeTexts()
{
    for (const DeckManager::IKeywordFile* file : m_changed) {
        DeckManager::TextToCommit made = DeckManager::TextToCommit::Of(*file);
        auto line = made.lines.begin();
        for (DeckManager::KeywordFileIterator place = file->Begin(); place != file->End(); ++place)
            m_lines.emplace(*place, *line++);
        m_texts.push_back({file, std::move(made.text)});
    }
}

/// An older backup goes only when its file has changed: an edit that is refused must not cost it.
void EditRun::Commit(const std::function<void()>& commit)
{
    std::vector<Backup> backups;
    try {
        if (m_options.backup) MakeBackups(backups);
        commit();
    } catch (...) {
        Settle(backups, false);
        throw;
    }
    Settle(backups, true);
}

void EditRun::Settle(const std::vector<Backup>& backups, bool isDone) const
{
    Service::FileSystem& files = Service::FileSystem::Instance();
    Service::FileSystem::ErrorCode error;
    for (const Backup& backup : backups) {
        const std::string& copy = backup.copy.GetFullName();
        // What has been refused, or taken back, stands as it was.
        if (!isDone && IsSame(backup.file, backup.copy))
            files.Unlink(copy, error);
        else if (!files.Rename(copy, backup.name.GetFullName(), error))
            m_session.Log().Warning(m_session.Log().Shown(backup.file.GetFullName()),
                                    "The old file is kept as " + copy + ".");
    }
}

void EditRun::MakeBackups(std::vector<Backup>& backups) const
{
    for (const DeckManager::IKeywordFile* file : m_changed) {
        if (file->GetFileName().FileExists()) MakeBackup(file->GetFileName(), backups);
    }
    for (const Service::FileName& file : m_replaced) {
        if (file.IsFile()) MakeBackup(file, backups);
    }
}

void EditRun::MakeBackup(const Service::FileName& file, std::vector<Backup>& backups) const
{
    const Service::FileName backup(file.GetFullName() + "~");
    const Service::FileName copy =
        Service::FileUtils::ConstructUniqueName(Service::FileName(backup.GetFullName() + ".tmp"));
    const bool isBlocked = backup.FileExists() && !backup.IsFile();
    if (isBlocked || !Service::FileUtils::Copy(file, copy, false)) {
        throw Failure(FileFailure, "The file could not be copied for --backup; nothing is changed.",
                      m_session.Log().Shown(file.GetFullName()));
    }
    backups.push_back({file, copy, backup});
}

void EditRun::RequireWritable() const
{
    std::string closed;
    for (const DeckManager::IKeywordFile* file : m_changed) {
        const Service::FileName name(file->GetFileName().CanonicalName());
        const bool isOpen = ::access(name.GetDirectory().Name().c_str(), W_OK | X_OK) == 0 &&
                            (!name.FileExists() || ::access(name.GetFullName().c_str(), W_OK) == 0);
        if (!isOpen) closed += "\n" + m_session.PlaceOf(*file);
    }
    if (!closed.empty())
        throw Failure(FileFailure, "Nothing could be changed: no permission to write" + closed, m_options.deck);
}

int EditRun::NewLine(const DeckManager::IKeyword& keyword) const
{
    const auto found = m_lines.find(&keyword);
    return found != m_lines.end() ? found->second : keyword.GetLine();
}

void EditRun::PrintDiff(Output& out) const
{
    UnifiedDiff diff(out);
    for (const NewText& made : m_texts)
        diff.AddFile(m_session.PlaceOf(*made.file), WithLineFeeds(TextOnDisk(*made.file)), WithLineFeeds(made.text));
}

} // namespace Deckman
