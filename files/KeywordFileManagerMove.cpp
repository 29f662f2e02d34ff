// The part of `KeywordFileManager` that moves a project.
//
// What has to change in the files is known before anything happens. The project is copied beside its new place, the
// copies of files that nobody has open are corrected, and the copy goes to its place. Then the open files go over to
// it, and what is uncommitted in them is written there. The old directory goes last: up to then it is whole, and until
// something was committed the move can be taken back.

#include <algorithm>
#include <exception>

#include <boost/filesystem/exception.hpp>

#include "cache/CacheEntry.h"
#include "files/DirectoryManager.h"
#include "files/KeywordFile.h"
#include "files/KeywordFileWriter.h"
#include "files/KeywordINCLUDE.h"
#include "files/MovedPaths.h"
#include "files/ProjectCopy.h"
#include "files/ProjectIncludes.h"
#include "files/SourceFile.h"
#include "keywords/Keyword.h"
#include "text/KeywordFileReader.h"
#include "text/LineFileWriter.h"
#include "text/LineStringWriter.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/KeywordFileManager.h>
#include <deckmanager/KeywordText.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/service/FileStatus.h>
#include <tarn/service/FileSystem.h>
#include <tarn/service/FileUtils.h>
#include <tarn/service/Log.h>

namespace Tarn::Fjel::Core::DeckManager {

using Service::Directory;
using Service::FileName;
using Service::FileSystem;
using Service::Log;

namespace {

std::string ReasonOf(const std::exception& failure)
{
    const auto* ofFile = dynamic_cast<const boost::filesystem::filesystem_error*>(&failure);
    if (ofFile == nullptr) return failure.what();
    const boost::filesystem::path& path = ofFile->path2().empty() ? ofFile->path1() : ofFile->path2();
    return path.string() + ": " + ofFile->code().message() + ".";
}

std::string TextWith(const IncludeCorrection& correction, const Context& context)
{
    LineStringWriter writer;
    correction.keyword->WriteWithText(writer, correction.dataText, context);
    std::string text = writer.TakeText();
    std::erase(text, '\r');
    return text;
}

/// By how many bytes the extent of a keyword at a position of the old text has grown.
struct Growth
{
    long long position;
    long long bytes;
};

/// Writes the text of a file with its corrections over a copy of the file.
std::vector<Growth> WriteCorrected(const FileCorrections& corrections, const FileName& copy)
{
    // That a line has become long is nothing that the user could change.
    const Log::Probe probe;
    std::vector<Growth> growths;
    KeywordFile& file = *corrections.file;
    const std::string beside = copy.GetFullName() + ".moving";
    const auto fail = [&](const LineFileWriter& writer) {
        throw DeckManagerException("The file " + beside + " cannot be written: " + writer.FailureReason() + ".");
    };
    LineFileWriter writer;
    if (!writer.Open(beside, false)) fail(writer);
    const auto writeKeyword = [&](SourceFile& source, const Keyword& keyword) {
        const auto found =
            std::find_if(corrections.includes.begin(), corrections.includes.end(),
                         [&](const IncludeCorrection& correction) { return correction.keyword == &keyword; });
        if (found == corrections.includes.end()) {
            source.WriteKeyword(keyword, file.RootContext(), Keywords::SimulatorType::Any);
            return;
        }
        source.Flush();
        const std::int64_t begin = writer.Tell();
        source.WriteReference(*found->keyword, found->dataText, file.RootContext());
        source.Flush();
        growths.push_back({keyword.Position(), writer.Tell() - begin - keyword.Size()});
    };
    const bool isWritten = KeywordFileWriter::WriteFile(file, &writer, true, file.RootContext(), writeKeyword).ok;
    if (!writer.Close() || !isWritten) fail(writer);
    if (file.HasChangedOnDisk()) {
        throw DeckManagerException("The file " + file.GetFileName().GetFullName() +
                                   " has been changed on disk since it was read.");
    }
    FileSystem::ErrorCode error;
    const Service::FileStatus status = Service::FileStatus::Of(copy);
    if (!FileSystem::Instance().CopyModeAndOwner(status, beside, error) ||
        !FileSystem::Instance().Rename(beside, copy.GetFullName(), error))
    {
        throw boost::filesystem::filesystem_error("Moving a project failed", copy.GetFullName(), error);
    }
    return growths;
}

/// What is known of a file, for its text with the corrections. False when that differs in more than these.
bool Shift(CacheEntry& entry, const std::vector<Growth>& growths, long long newLength)
{
    long long grown = 0;
    auto next = growths.begin();
    for (CacheEntry::CacheValue& value : entry.values) {
        const bool isCorrected = next != growths.end() && next->position == value.pos;
        value.pos += grown;
        if (!isCorrected) continue;
        value.size += next->bytes;
        grown += next->bytes;
        ++next;
    }
    return next == growths.end() && entry.length + grown == newLength;
}

} // namespace

/// One move of a project.
class KeywordFileManager::Move
{
public:
    /// Finds out what has to change. Throws where the move must not begin.
    Move(KeywordFileManager& manager, const Directory& newDir)
        : m_manager(manager), m_paths(manager.ProjectDir(), newDir),
          m_includes(manager, *manager.m_directoryManager, m_paths), m_corrections(m_includes.Find())
    {
    }

    ProjectMovePlan Plan() const
    {
        ProjectMovePlan plan;
        for (const FileCorrections& corrections : m_corrections) {
            for (const IncludeCorrection& include : corrections.includes) {
                plan.changes.push_back({corrections.file->GetFileName().GetFullName(), include.keyword->GetLine(),
                                        KeywordText(*include.keyword).All(),
                                        TextWith(include, corrections.file->RootContext())});
            }
        }
        return plan;
    }

    void Run(bool deleteOld, const ICommitter& committer)
    {
        m_manager.SaveCacheTable();
        ProjectCopy copy(m_paths);
        try {
            copy.Make();
            RemoveTemporaryTexts(copy);
            CorrectClosedFiles(copy);
            if (deleteOld) copy.Flush();
            copy.PutInPlace();
        } catch (const std::exception& failure) {
            ThrowNotMoved(failure, copy);
        }
        try {
            GoOver();
            CorrectOpenFiles(committer);
        } catch (const std::exception& failure) {
            if (m_isCommitted) {
                copy.Settle();
                throw DeckManagerException(ReasonOf(failure) + "\nThe project has moved to " + m_paths.NewDir().Name() +
                                           " all the same. As it was before, it is kept in " + m_paths.OldDir().Name() +
                                           ".");
            }
            GoBack();
            ThrowNotMoved(failure, copy);
        }
        if (!copy.Settle())
            Tell("What stood in " + m_paths.NewDir().Name() + " cannot be deleted; it is " + copy.Aside().Name() + ".");
        // What can't be looked at may be there.
        const Service::FileStatus old = Service::FileStatus::Of(m_paths.OldDir().Name());
        if (deleteOld && (old.isUnknown || old.Exists())) DeleteOld(copy);
        CorrectCache();
    }

private:
    struct OpenFile
    {
        std::shared_ptr<KeywordFile> file;
        FileName oldName;
        Service::FileStatus oldStatus;
    };

    static void Tell(const std::string& text) { Log::SendLogMessage(text, Log::Error); }

    void DeleteOld(const ProjectCopy& copy) const
    {
        const std::string moved = "The project has moved to " + m_paths.NewDir().Name() + ", where it is whole. ";
        const Directory& old = m_paths.OldDir();
        const std::string left = "What cannot be deleted is left in " + old.Name() + ".";
        // Others may work there: what has come since is nobody's to delete.
        std::string changed;
        try {
            changed = copy.ChangedMeanwhile();
        } catch (const boost::filesystem::filesystem_error&) {
            Tell(moved + left);
            return;
        }
        if (!changed.empty()) {
            Tell(moved + old.Name() + " is kept, since the file " + changed + " has come or changed meanwhile.");
            return;
        }
        // A link to the project goes with it.
        const Directory place(old.CanonicalName());
        bool isGone = place.Delete();
        if (place.Name() != old.Name()) isGone = old.Delete() && isGone;
        if (!isGone) Tell(moved + left);
    }

    [[noreturn]] void ThrowNotMoved(const std::exception& failure, ProjectCopy& copy) const
    {
        const std::string reason = ReasonOf(failure);
        const std::string left = copy.TakeBack();
        throw DeckManagerException("The project cannot be moved to " + m_paths.NewDir().Name() + ".\n" + reason +
                                   "\nIt is whole in " + m_paths.OldDir().Name() + "." + left);
    }

    /// What partial commits have written lies beside its file, and goes to its place from there.
    void RemoveTemporaryTexts(const ProjectCopy& copy) const
    {
        for (const std::shared_ptr<KeywordFile>& file : m_manager.m_files) {
            const FileName text(file->FileReader()->GetPath());
            if (!file->IsPending() || !m_paths.IsInManagedArea(text.GetDirectory(), {})) continue;
            Service::FileUtils::Remove(copy.CopyOf(text));
        }
    }

    void CorrectClosedFiles(const ProjectCopy& copy)
    {
        for (const FileCorrections& corrections : m_corrections) {
            if (corrections.isOpen) continue;
            // Of a link, the file that it names.
            const FileName name = copy.CopyOf(FileName(corrections.file->GetFileName().CanonicalName()));
            CacheEntry entry;
            const bool isCached = m_manager.GetCacheEntry(*corrections.file, entry);
            const std::vector<Growth> growths = WriteCorrected(corrections, name);
            if (isCached && Shift(entry, growths, name.FileLength()))
                m_cached.emplace_back(corrections.file, std::move(entry));
        }
    }

    /// What the cache knows of the corrected files is what they were. Those that are open have seen to that.
    void CorrectCache()
    {
        for (auto& [file, entry] : m_cached) {
            file->SetFileName(m_paths.Moved(file->GetFileName()));
            m_manager.SetCacheEntry(*file, entry);
        }
        m_manager.SaveCacheTable();
    }

    void GoOver()
    {
        m_oldTempDir = m_manager.TempProjectDir();
        for (const std::shared_ptr<KeywordFile>& file : m_manager.m_files) {
            const FileName name = file->GetFileName();
            if (m_paths.IsInManagedArea(name.GetDirectory(), {}))
                m_gone.push_back({file, name, file->FollowMove(m_paths.Moved(name))});
        }
        m_manager.m_directoryManager->SetProjectDir(m_paths.NewDir());
        m_manager.FilesRenamed();
        if (m_oldTempDir.IsSet() && m_paths.IsInManagedArea(m_oldTempDir, {}))
            m_manager.SetTempProjectDir(m_paths.Moved(m_oldTempDir));
    }

    void GoBack()
    {
        for (const OpenFile& open : m_gone)
            open.file->GoBack(open.oldName, open.oldStatus);
        m_manager.m_directoryManager->SetProjectDir(m_paths.OldDir());
        m_manager.SetTempProjectDir(m_oldTempDir);
        m_manager.FilesRenamed();
        // Their keywords stand in a text that goes.
        for (const std::shared_ptr<KeywordFile>& file : m_rewritten)
            file->Reload();
    }

    static void Correct(const FileCorrections& corrections)
    {
        for (const IncludeCorrection& include : corrections.includes) {
            if (!include.keyword->SetDataText(include.dataText, true)) {
                throw DeckManagerException("KeywordFileManager::FixInclude: unexpected failure");
            }
        }
    }

    /// Files without uncommitted changes come first: nobody loses anything when it turns out that the move fails.
    void CorrectOpenFiles(const ICommitter& committer)
    {
        std::vector<const FileCorrections*> edited;
        for (const FileCorrections& corrections : m_corrections) {
            if (!corrections.isOpen) continue;
            if (corrections.file->IsModified()) {
                edited.push_back(&corrections);
                continue;
            }
            m_rewritten.push_back(corrections.file);
            Correct(corrections);
            CommitAlone(*corrections.file);
        }
        CommitEdits(edited, committer);
    }

    static void CommitAlone(KeywordFile& file)
    {
        file.CommitToTemporary(false);
        file.FinishCommit();
        if (file.IsToBeReadAnew()) file.Reload();
        file.StoreList();
    }

    /// All is written, and could not be put in its place.
    static bool WaitsForItsPlace(const KeywordFile& file) { return file.IsPending() && file.Rest() == nullptr; }

    struct FormerText
    {
        KeywordINCLUDE* keyword;
        bool isEdited;
        std::string dataText;
    };

    void CommitEdits(const std::vector<const FileCorrections*>& edited, const ICommitter& committer)
    {
        std::vector<FormerText> former;
        std::vector<std::shared_ptr<KeywordFile>> modified;
        for (const std::shared_ptr<KeywordFile>& file : m_manager.m_files) {
            if (file->IsModified() && !WaitsForItsPlace(*file)) modified.push_back(file);
        }
        try {
            for (const FileCorrections* corrections : edited) {
                for (const IncludeCorrection& include : corrections->includes) {
                    const std::shared_ptr<std::string> text = include.keyword->GetDataText();
                    former.push_back({include.keyword, include.keyword->IsDataChanged(), text ? *text : ""});
                }
                Correct(*corrections);
            }
            committer.Commit();
            m_isCommitted = !modified.empty();
            for (const FileCorrections* corrections : edited) {
                if (!corrections->file->IsModified()) continue;
                CommitAlone(*corrections->file);
            }
        } catch (...) {
            // Once a text stands in its place, there is no way back for those who have edited it.
            if (std::any_of(modified.begin(), modified.end(), [](const std::shared_ptr<KeywordFile>& file) {
                    return !file->IsModified() || WaitsForItsPlace(*file);
                }))
            {
                m_isCommitted = true;
            }
            if (!m_isCommitted) {
                for (const FormerText& text : former)
                    TakeBack(text);
            }
            throw;
        }
    }

    void TakeBack(const FormerText& former) const
    {
        if (former.isEdited || !former.keyword->HasValidExtent())
            former.keyword->SetDataText(former.dataText, true);
        else
            former.keyword->GetAndResetData(Context());
    }

    KeywordFileManager& m_manager;
    MovedPaths m_paths;
    ProjectIncludes m_includes;
    std::vector<FileCorrections> m_corrections;
    std::vector<std::pair<std::shared_ptr<KeywordFile>, CacheEntry>> m_cached; ///< what is known of corrected files
    Directory m_oldTempDir;
    std::vector<OpenFile> m_gone;                          ///< over to the new place
    std::vector<std::shared_ptr<KeywordFile>> m_rewritten; ///< open files that bear nothing but corrections
    bool m_isCommitted = false;                            ///< an edit is on the disk in the new place
};

bool KeywordFileManager::CanMoveTo(const Directory& directory) const
{
    if (!HasProjectDir() || directory == ProjectDir()) return false;
    return DirectoryManager::Validate(directory, true);
}

void KeywordFileManager::MoveProjectDir(const std::string& path, bool deleteOld, const ICommitter& committer)
{
    const Directory newDir(path);
    if (CanMoveTo(newDir)) Move(*this, newDir).Run(deleteOld, committer);
}

ProjectMovePlan KeywordFileManager::PlanProjectDirMove(const std::string& path)
{
    const Directory newDir(path);
    return CanMoveTo(newDir) ? Move(*this, newDir).Plan() : ProjectMovePlan();
}

} // namespace Tarn::Fjel::Core::DeckManager
