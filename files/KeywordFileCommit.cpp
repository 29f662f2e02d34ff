// The part of `KeywordFile` that brings its changes to the disk.
//
// A text is never changed in place. The new one is written beside the file, from the old one and from memory; then the
// keywords go over to it; last it takes the file's place. Between the last two steps the file is pending: its keywords
// stand in a text that isn't the file's yet. A partial commit leaves it so, with a text that breaks off.

#include <algorithm>
#include <istream>
#include <iterator>
#include <optional>
#include <utility>

#include "files/CachedKeywords.h"
#include "files/HeaderBlock.h"
#include "files/KeywordFile.h"
#include "files/KeywordFileWriter.h"
#include "files/KeywordINCLUDE.h"
#include "files/MadeDirectories.h"
#include "files/TemporaryText.h"
#include "keywords/Keyword.h"
#include "text/KeywordFileReader.h"
#include "text/LineFileWriter.h"
#include "text/LineStreamReader.h"
#include "text/SectionNames.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/Environment.h>
#include <deckmanager/IKeywordFileManager.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/service/Directory.h>
#include <tarn/service/FileStream.h>
#include <tarn/service/FileSystem.h>
#include <tarn/service/FileUtils.h>
#include <tarn/service/Log.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::KeywordKind;
using Keywords::SectionType;
using Service::FileName;
using Service::FileStatus;
using Service::FileSystem;
using Service::Log;
using List = KeywordFileContents::List;

/// What commits of the file have written so far.
struct KeywordFile::CommitState
{
    /// The text in which the keywords stand, until it takes the file's place.
    TemporaryText pending;
    /// Of that text, in bytes. What stands behind it in its file is left of a try that failed.
    long long size = 0;
    /// It breaks off, and this is to follow.
    std::optional<RestBehindText> rest;
    /// The header that was set and stands in it.
    std::string headerBlock;
    /// It could not take the file's place, and its name has been told.
    bool isTold = false;

    /// A text that nothing knows of yet.
    struct Written
    {
        TemporaryText text; ///< none where it goes on in the pending one
        bool partial = false;
        long long size = 0; ///< in bytes
        FileWriteResult result;
    };
    std::optional<Written> written;
    MadeDirectories directories;
};

namespace {

bool IsSameText(const FileStatus& now, const FileStatus& then)
{
    if (now.Exists() != then.Exists()) return false;
    return !now.Exists() ||
           (now.IsSameFileAs(then) && now.size == then.size && now.modifiedNanoseconds == then.modifiedNanoseconds);
}

bool CanAppend(const FileName& file)
{
    FileSystem::ErrorCode error;
    const int handle = FileSystem::Instance().Open(file.GetFullName(), FileSystem::OpenMode::WriteExisting, error);
    return handle >= 0 && FileSystem::Instance().Close(handle, error);
}

/// Something stands there that is no file, or a file that can't be written.
bool IsBlocked(const FileName& file)
{
    const FileStatus status = FileStatus::Of(file);
    return status.isUnknown || (status.Exists() && !(status.IsRegularFile() && CanAppend(file)));
}

SectionType SectionOfKeyword(const IKeyword& keyword)
{
    SectionType section = SectionType::None;
    if (keyword.GetSyntax()->GetKind() == KeywordKind::Section) FindSection(keyword.GetName(), section);
    return section;
}

void Tell(const FileName& file, const std::string& text)
{
    const Log::Place place(file.GetFullName(), -1);
    Log::SendLogMessage(text, Log::Error);
}

} // namespace

KeywordFile::KeywordFile(const FileName& name, IKeywordFileManager& manager, bool useVariables)
    : m_manager(manager), m_fileName(name), m_fileReader(std::make_shared<KeywordFileReader>(name.GetFullName())),
      m_useVariables(useVariables)
{
}

KeywordFile::~KeywordFile()
{
    try {
        CancelChanges();
    } catch (...) {
        // A destructor has nobody to tell.
    }
}

bool KeywordFile::IsPending() const
{
    return m_commit && m_commit->pending.IsSet();
}

long long KeywordFile::FileSize() const
{
    const FileStatus status = FileStatus::Of(m_fileReader->GetPath());
    if (!status.IsRegularFile()) return -1;
    return IsPending() ? std::min<long long>(status.size, m_commit->size) : status.size;
}

const RestBehindText* KeywordFile::Rest() const
{
    return m_commit && m_commit->rest ? &*m_commit->rest : nullptr;
}

void KeywordFile::AddToRest(const std::string& text)
{
    RestOfFile piece;
    piece.text = text;
    m_commit->rest->pieces.push_back(std::move(piece));
}

std::vector<KeywordFile*> KeywordFile::IncludedFiles() const
{
    std::vector<KeywordFile*> files;
    if (!m_wasLoaded) return files;
    for (const KeywordFileIterator& include : GetINCLUDEKeywords()) {
        if (KeywordFile* file = IncludedFileOf(*include)) files.push_back(file);
    }
    return files;
}

void KeywordFile::ResetContents()
{
    if (m_commit && !m_commit->isTold) m_commit->pending.Remove();
    // A header outlives the edits, and is still to be written.
    if (m_commit && m_headerBlock.empty()) m_headerBlock = std::move(m_commit->headerBlock);
    m_commit.reset();
    DropPositions();
    DropSnapshot();
    m_contents.reset();
    m_tagState.Clear();
    m_headerBegin = m_headerEnd = m_tailBegin = -1;
    m_loadFailed = false;
    m_isToBeReadAnew = false;
    m_isToBeStored = false;
    m_readIn.reset();
    m_toBeReadIn.reset();
    m_fileReader = std::make_shared<KeywordFileReader>(m_fileName.GetFullName());
    LinkCounter::Changed();
}

void KeywordFile::SetFileName(const FileName& name)
{
    m_fileName = name;
    if (!IsPending()) {
        m_fileReader->SetPath(name.GetFullName());
        return;
    }
    m_fileReader->SetFile(name.GetFullName());
    // The end of the file is still to be read there.
    if (m_commit->rest) m_commit->rest->reader->SetPath(name.GetFullName());
}

bool KeywordFile::SetHeaderComment(const std::string& text)
{
    Contents();
    m_headerBlock = HeaderBlock::Of(text);
    return true;
}

// --- before anything is touched ------------------------------------------------------------------

bool KeywordFile::HasChangedOnDisk() const
{
    if (!m_contents) return false;
    const FileStatus status = FileStatus::Of(m_fileName);
    if (!IsSameText(status, m_status)) return true;
    // Who changes a text may set its time back, and can't hide that something has changed. A new mode or name, which
    // don't matter, leave every keyword where it stands.
    const bool isDoubtful = status.Exists() && status.changedNanoseconds != m_status.changedNanoseconds && !IsPending();
    return isDoubtful && !CachedKeywords::StandAsListed(*this, status);
}

bool KeywordFile::CheckWritable() const
{
    if (!IsModified()) return true;
    MadeDirectories directories;
    std::string unused;
    const bool isWritable = directories.Make(m_fileName.GetDirectory(), unused) && !IsBlocked(m_fileName) &&
                            TemporaryText::CanOpen(m_fileName) &&
                            (!IsPending() || CanAppend(FileName(m_commit->pending.Path())));
    directories.Remove();
    return isWritable;
}

// --- the new text --------------------------------------------------------------------------------

/// The pending text breaks off behind keywords that stand as it has them, with nothing new between: what is new can
/// follow.
bool KeywordFile::CanContinue() const
{
    if (Rest() == nullptr || m_tagState.IsChanged() || !m_headerBlock.empty() || m_textInHead) return false;
    const auto end = m_blocksAhead.find(nullptr);
    const bool hasOtherEnd = end != m_blocksAhead.end() &&
                             (end->second.size() != 1 || end->second.front().below || end->second.front().text);
    if (hasOtherEnd) return false;
    const List& keywords = m_contents->Keywords();
    auto present = keywords.begin();
    for (const std::shared_ptr<IKeyword>& written : DiskList()) {
        if (present == keywords.end() || *present != written || HasOtherBlocksAhead(written.get())) return false;
        if (KeywordFileContents::AsKeyword(written).IsDirty()) return false;
        ++present;
    }
    return FileStatus::Of(m_commit->pending.Path()).size == m_commit->size;
}

/// Moves between files tie their texts together: the one is written from the other.
bool KeywordFile::SharesKeywords() const
{
    const auto isForeign = [this](const std::shared_ptr<IKeyword>& keyword) {
        const auto& reader = KeywordFileContents::AsKeyword(keyword).Reader();
        return reader && reader != m_fileReader;
    };
    const auto isElsewhere = [this](const std::shared_ptr<IKeyword>& keyword) {
        return KeywordFileContents::AsKeyword(keyword).Owner() != this;
    };
    const List& keywords = m_contents->Keywords();
    if (std::any_of(keywords.begin(), keywords.end(), isForeign)) return true;
    if (std::any_of(m_snapshot.begin(), m_snapshot.end(), isElsewhere)) return true;
    return std::any_of(m_blocksAhead.begin(), m_blocksAhead.end(), [&](const auto& entry) {
        return std::any_of(entry.second.begin(), entry.second.end(),
                           [&](const KeptBlock& block) { return block.below && isForeign(block.below); });
    });
}

void KeywordFile::WriteToTemporary(bool partial)
{
    const bool exists = FileStatus::Of(m_fileName).Exists();
    const bool isModified = IsModified();
    if (!isModified && exists) {
        DropSnapshot();
        return;
    }
    if (!exists && Environment::Instance().GetPreventEmptyFileCreation() && Contents().Keywords().empty()) return;
    // Once whole, a text only waits for its place.
    const bool isNew = IsEdited() || !m_headerBlock.empty();
    if (IsPending() && !isNew && (partial || Rest() == nullptr)) return;
    if (partial && SharesKeywords()) return;
    // What would be left for later stands nowhere but in a whole text that waits for its place.
    if (IsPending() && Rest() == nullptr) partial = false;
    Contents();
    if (m_loadFailed) throw DeckManagerException("The file " + m_fileName.GetFullName() + " cannot be read.");

    if (Rest() != nullptr) m_commit->pending.CutBack(m_commit->size);
    const bool continuing = CanContinue();
    if (Rest() != nullptr && !continuing && Environment::Instance().LogWarningOnPartialCommitViolation()) {
        const Log::Place place(m_fileName.GetFullName(), -1);
        Log::SendLogMessage("File that was written in partial commit has been changed: " + m_fileName.GetFileName() +
                                ". This will cause the file to be re-written.",
                            Log::Warning);
    }
    if (partial && Rest() == nullptr) {
        // The comment at the end of the file stays behind whatever comes yet.
        TakeSnapshot();
        m_blocksAhead.try_emplace(nullptr, Blocks{{nullptr, nullptr}});
    }
    if (!m_commit) m_commit = std::make_unique<CommitState>();
    CommitState::Written& written = m_commit->written.emplace(CommitState::Written{});
    written.partial = partial;

    LineFileWriter writer;
    std::string reason;
    bool isOpen = m_commit->directories.Make(m_fileName.GetDirectory(), reason);
    if (isOpen && continuing) {
        isOpen = writer.Open(m_commit->pending.Path(), true);
    } else if (isOpen) {
        written.text = IsPending() ? m_commit->pending.OpenNext(writer) : TemporaryText::Open(writer, m_fileName);
        isOpen = written.text.IsSet();
    }
    bool isDone = false;
    // A read that fails looks like the end of a text to whoever asks where a keyword ends.
    const Service::ReadWatch reading;
    if (isOpen) {
        if (!partial) writer.StartSyncEarly();
        try {
            written.result = KeywordFileWriter::WriteForCommit(*this, writer, RootContext(), partial, continuing);
        } catch (...) {
            writer.Close();
            DropWritten();
            throw;
        }
        isDone = written.result.ok && (partial || writer.Sync());
        if (reading.SawFailure()) {
            isDone = false;
            reason = "a file of the deck cannot be read";
        }
    }
    if (reason.empty()) reason = writer.FailureReason();
    isDone = writer.Close() && isDone;
    if (isDone) {
        const FileStatus status = FileStatus::Of(continuing ? m_commit->pending.Path() : written.text.Path());
        written.size = status.size;
        if (status.Exists()) return;
    }
    if (reason.empty()) reason = writer.FailureReason();
    DropWritten();
    // Nobody has asked for a file that is missing.
    if (!isModified) return;
    if (!reason.empty())
        Tell(m_fileName, "The file " + m_fileName.GetFullName() + " cannot be written: " + reason + ".");
    throw DeckManagerException("Fails to commit editing because temporary file for " + m_fileName.GetFullName() + "\n" +
                               "cannot be created.");
}

void KeywordFile::DropWritten()
{
    if (!m_commit) return;
    if (m_commit->written) {
        if (m_commit->written->text.IsSet())
            m_commit->written->text.Remove();
        else if (m_commit->pending.IsSet())
            m_commit->pending.CutBack(m_commit->size);
        m_commit->written.reset();
    }
    m_commit->directories.Remove();
    if (!IsPending()) m_commit.reset();
}

// --- the keywords go over ------------------------------------------------------------------------

void KeywordFile::TakeOver()
{
    if (!m_commit || !m_commit->written) return;
    CommitState& commit = *m_commit;
    CommitState::Written written = std::move(*commit.written);
    commit.written.reset();
    commit.directories = {};
    const bool continues = !written.text.IsSet();
    if (!continues) {
        if (commit.pending.IsSet())
            commit.pending.Replace(std::move(written.text));
        else
            commit.pending = std::move(written.text);
    }
    commit.size = written.size;
    const std::shared_ptr<KeywordFileReader> old = m_fileReader;
    if (!continues) {
        m_fileReader = std::make_shared<KeywordFileReader>(commit.pending.Path(), m_fileName.GetFullName());
    }
    if (!written.partial)
        commit.rest.reset();
    else if (!commit.rest)
        commit.rest = RestBehindText{std::move(written.result.rest), old};
    const List& keywords = m_contents->Keywords();
    const bool listChanges =
        (m_snapshotTaken && keywords != m_snapshot) ||
        std::any_of(keywords.begin(), keywords.end(), [](const auto& keyword) { return keyword->IsCommentedOut(); });
    if (listChanges) NoteChangeOfSections();
    if (listChanges || !m_blocksAhead.empty()) NoteForeignText();
    TakeExtents(written.result, m_fileReader, written.partial);
    const bool scanWillDiffer = m_scanWillDiffer;
    DropSnapshot();
    m_scanWillDiffer = scanWillDiffer;
    if (!m_headerBlock.empty()) commit.headerBlock = std::exchange(m_headerBlock, {});

    m_tagState.Commit();
    if (!continues) {
        FileTagState tag;
        const std::unique_ptr<ILineReader> reader = m_fileReader->OpenLineReader(false);
        const Service::ReadWatch reading;
        if (reader) tag.Read(*reader);
        m_headerBegin = reader ? reader->Tell() : -1;
        // The mark of a header that was set may read as a tag.
        if (tag.GetValue()) m_tagState = tag;
        // Where the header begins is then found out by reading it anew, once it is in its place.
        if (!reader || reading.SawFailure()) m_scanWillDiffer = true;
    }
    RemoveCommentedOut();
    PlaceHeadAndTail();
    NoteSections();
    // Others may keep where keywords stand.
    LinkCounter::Changed();
}

/// A keyword behind which text has come to stand that was read in another section is not known to be read alike.
void KeywordFile::NoteForeignText()
{
    using Section = std::optional<SectionType>;
    const auto sectionBehind = [](const std::shared_ptr<IKeyword>& keyword) -> Section {
        if (keyword->GetSyntax()->GetKind() == KeywordKind::Include) return std::nullopt;
        const SectionType begun = SectionOfKeyword(*keyword);
        return begun != SectionType::None ? begun : KeywordFileContents::AsKeyword(keyword).FoundIn();
    };
    const List& former = DiskList();
    const Section atEnd = former.empty() ? Section() : sectionBehind(former.back());
    const auto sectionAhead = [&](const std::shared_ptr<IKeyword>& keyword) {
        return keyword ? KeywordFileContents::AsKeyword(keyword).FoundIn() : atEnd;
    };
    std::shared_ptr<IKeyword> above;
    const auto look = [&](const std::shared_ptr<IKeyword>& below) {
        if (!above) return;
        const Section section = sectionBehind(above);
        const auto found = m_blocksAhead.find(below.get());
        const bool isForeign =
            found == m_blocksAhead.end()
                ? sectionAhead(below) != section
                : std::any_of(found->second.begin(), found->second.end(), [&](const KeptBlock& block) {
                      // A text has been made of what stood there, and may have more than comments in it.
                      const Section read = sectionAhead(block.text ? below : block.below);
                      return read != section && (read || !block.text);
                  });
        if (isForeign) KeywordFileContents::AsKeyword(above).SetFoundIn(std::nullopt);
    };
    bool hasOtherHead = false;
    for (const std::shared_ptr<IKeyword>& keyword : m_contents->Keywords()) {
        look(keyword);
        // What is commented out leaves the text ahead of it.
        const bool isAsBefore =
            above || (!former.empty() && keyword == former.front() && m_blocksAhead.count(keyword.get()) == 0);
        hasOtherHead |= !isAsBefore;
        if (keyword->IsCommentedOut()) continue;
        if (!above && hasOtherHead) KeywordFileContents::AsKeyword(keyword).SetFoundIn(std::nullopt);
        above = keyword;
    }
    look(nullptr);
}

/// For whoever is read next, the deck has the sections that its texts have now. As in a scan, the last keyword of a
/// file brings none.
void KeywordFile::NoteSections()
{
    auto& seen = DataFile().m_sectionsSeen;
    for (std::weak_ptr<const KeywordFile>& bringer : seen) {
        if (bringer.lock().get() == this) bringer.reset();
    }
    const List& keywords = m_contents->Keywords();
    for (const std::shared_ptr<IKeyword>& keyword : keywords) {
        const SectionType section = SectionOfKeyword(*keyword);
        if (section != SectionType::None && keyword != keywords.back() && !BringerOf(section))
            seen[static_cast<std::size_t>(section)] = weak_from_this();
    }
}

std::shared_ptr<const KeywordFile> KeywordFile::BringerOf(SectionType section) const
{
    const KeywordFile& top = DataFile();
    std::shared_ptr<const KeywordFile> bringer = top.m_sectionsSeen[static_cast<std::size_t>(section)].lock();
    // A file that was reset, or has left the deck, has taken its sections along, and an edit may have taken one away.
    if (!bringer || !bringer->IsLoaded() || &bringer->DataFile() != &top) return nullptr;
    if (bringer->IsListUnchanged()) return bringer;
    const List& keywords = bringer->m_contents->Keywords();
    const auto isIt = [section](const auto& keyword) { return SectionOfKeyword(*keyword) == section; };
    return std::any_of(keywords.begin(), keywords.end(), isIt) ? bringer : nullptr;
}

void KeywordFile::TakeExtents(const FileWriteResult& result, const std::shared_ptr<KeywordFileReader>& reader,
                              bool dropData)
{
    auto extent = result.extents.begin();
    for (const std::shared_ptr<IKeyword>& listed : m_contents->Keywords()) {
        Keyword& keyword = KeywordFileContents::AsKeyword(listed);
        const bool marksChanged = keyword.IsCommentedOut() || keyword.IsSuppressionChanged();
        if (marksChanged && DecidesOfOthers(keyword)) m_scanWillDiffer = true;
        if (keyword.IsCommentedOut()) {
            keyword.Commit(nullptr, -1, -1, dropData);
        } else if (extent != result.extents.end() && extent->keyword == &keyword) {
            keyword.Commit(reader, extent->begin, extent->end - extent->begin, dropData);
            ++extent;
        }
    }
}

/// They are comments now.
void KeywordFile::RemoveCommentedOut()
{
    List& keywords = m_contents->Keywords();
    for (List::iterator node = keywords.begin(); node != keywords.end();) {
        const std::shared_ptr<IKeyword> hold = *node;
        const List::iterator next = std::next(node);
        if (hold->IsCommentedOut()) {
            Keyword& keyword = KeywordFileContents::AsKeyword(hold);
            m_contents->Erase(node);
            DropAfterEdit(keyword);
            KeywordFileRemoveEventArgs args(*this, keyword);
            RaiseOnce(args);
            if (KeywordINCLUDE* include = KeywordINCLUDE::From(hold.get())) include->LeaveList();
        }
        node = next;
    }
}

void KeywordFile::CommitToTemporary(bool partial)
{
    WriteToTemporary(partial);
    TakeOver();
}

// --- in its place --------------------------------------------------------------------------------

void KeywordFile::FinishCommit()
{
    if (!IsPending() || Rest() != nullptr) return;
    const std::string path = m_commit->pending.Path();
    std::string reason;
    const bool wasAsRead = IsSameText(FileStatus::Of(m_fileName), m_status);
    if (!m_commit->pending.PutInPlace(m_fileName, reason)) {
        m_commit->isTold = true;
        // A try that failed may have written the old text over itself.
        if (wasAsRead) m_status = FileStatus::Of(m_fileName);
        Tell(m_fileName, "The file " + m_fileName.GetFullName() + " cannot be modified: " + reason +
                             ". Its new text is kept in the file " + path + ".");
        throw DeckManagerException("Fails to commit editing because " + m_fileName.GetFullName() + "\n" +
                                   "cannot be modified.\nIts new text is kept in the file " + path + ".");
    }
    m_commit.reset();
    m_fileReader->SetPath(m_fileName.GetFullName());
    m_status = FileStatus::Of(m_fileName);
    m_manager.KeywordFileReplaced(*this);
    m_isToBeReadAnew = m_scanWillDiffer;
    m_isToBeStored = true;
    DropSnapshot();
}

void KeywordFile::StoreList()
{
    if (m_isToBeStored && !m_isToBeReadAnew && m_contents && !IsPending()) SaveToCache(m_status);
    m_isToBeStored = false;
}

void KeywordFile::OverwriteFile(std::istream& stream, bool replace, bool keepTag)
{
    const std::string& name = m_fileName.GetFullName();
    const std::string failure = "Fail to update keyword file by overwrite because the ";
    MadeDirectories directories;
    std::string reason;
    if (!directories.Make(m_fileName.GetDirectory(), reason)) {
        directories.Remove();
        Tell(m_fileName, reason);
        throw DeckManagerException(failure + "directory\n" + m_fileName.GetDirectory().Name() + "\ncannot be created.");
    }
    const auto refuse = [&]() {
        directories.Remove();
        if (!reason.empty()) Tell(m_fileName, "The file " + name + " cannot be written: " + reason + ".");
        throw DeckManagerException(failure + "file\n" + name + "\ncannot be modified/created.");
    };
    if (IsBlocked(m_fileName)) refuse();
    if (replace || keepTag || !m_fileName.FileExists()) {
        if (keepTag) Contents();
        LineFileWriter writer;
        TemporaryText text = TemporaryText::Open(writer, m_fileName);
        if (!text.IsSet()) {
            reason = writer.FailureReason();
            refuse();
        }
        stream.clear();
        stream.seekg(0);
        if (keepTag) {
            LineStreamReader lines;
            lines.Attach(&stream);
            const std::int64_t mark = LineStreamReader::MarkSize(lines);
            FileTagState unused;
            unused.Read(lines);
            const long long behindTag = std::max<long long>(lines.Tell(), mark);
            if (std::optional<LineEnd> lineEnd = FirstLineEnd(lines)) writer.SetLineEnd(*lineEnd);
            writer.SetLeavesLastLineOpen(true);
            writer.Copy(lines, 0, mark - 1);
            m_tagState.Write(writer);
            stream.clear();
            stream.seekg(behindTag);
        }
        const bool isGood = writer.Close();
        if (!isGood) reason = writer.FailureReason();
        if (!isGood || !Service::FileUtils::Copy(stream, FileName(text.Path()), true, true) || !text.Sync(reason) ||
            !text.PutInPlace(m_fileName, reason))
        {
            text.Remove();
            refuse();
        }
    }
    m_manager.KeywordFileReplaced(*this);
    Reload();
}

} // namespace Tarn::Fjel::Core::DeckManager
