#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "files/FileTagState.h"
#include "files/KeywordFileContents.h"
#include "files/KeywordFileEventArgs.h"
#include "files/LinkCounter.h"
#include "keywords/IKeywordOwner.h"
#include <deckmanager/Context.h>
#include <tarn/service/Delegate.h>
#include <tarn/service/FileName.h>
#include <tarn/service/FileStatus.h>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
class IKeywordSyntax;
} // namespace Tarn::Fjel::Core::Keywords

namespace Tarn::Fjel::Core::DeckManager {

class FileScan;
class IKeywordFileManager;
class KeywordINCLUDE;
struct FileWriteResult;
struct RestBehindText;
struct KeywordMarks;

/// The model of one text file of a deck: the ordered list of its keywords and the byte range of each.
///
/// A file on disk is read as four stretches: the tag block, the header above the first keyword, the keywords, and the
/// tail. A keyword's extent runs from its line to the next keyword line, so comment lines above a keyword lie in the
/// extent of the keyword before it. All positions are byte offsets; -1 means that there is no such place.
///
/// The list is loaded at its first use. Nothing watches the disk afterwards.
class KeywordFile : public IKeywordOwner, public std::enable_shared_from_this<KeywordFile>
{
public:
    /// Reads nothing. `manager` outlives the file.
    KeywordFile(const Service::FileName& name, IKeywordFileManager& manager, bool useVariables);
    ~KeywordFile() override;
    KeywordFile(const KeywordFile&) = delete;
    KeywordFile& operator=(const KeywordFile&) = delete;

    Service::Delegate<KeywordFileEventArgs> fileChanged;
    mutable Service::Delegate<KeywordFileSectionQueryEventArgs> sectionQuery;
    mutable Service::Delegate<KeywordFileDataFileQueryEventArgs> dataFileQuery;

    const Service::FileName& GetFileName() const override { return m_fileName; }
    KeywordFileIterator Begin() const override;
    KeywordFileIterator End() const override;
    KeywordFileIterator LogicalEnd() const override;
    KeywordFileIterator Find(const IKeyword* keyword) const override;
    const std::vector<KeywordFileIterator>& GetINCLUDEKeywords() const override;
    bool HasUserKeywords() const override;
    bool IsModified() const override;
    void Reload() override;
    /// The same, and the file is read at once, in the section that is in force at its top.
    void ReloadIn(Keywords::SectionType start);
    bool IsReadOnly() const override { return m_readOnly || m_loadFailed; }
    void SetReadOnly() override { m_readOnly = true; }
    KeywordFile* AsKeywordFile() override { return this; }
    Keywords::SectionType GetStartSection() const override;

    bool IsFileTagged() const override { return m_tagState.GetValue(); }
    KeywordFile* DiskFileOf(const KeywordFileReader& reader, bool useVariables) const override;
    std::shared_ptr<ILineReader> OpenedReader(const KeywordFileReader& reader) const override;
    const Context& RootContext() const override;
    void KeywordUpdated(Keyword& keyword) override;

    /// The text between the tag block and the first keyword, with "\n" line ends; empty in a file without keywords.
    std::string HeaderText() const;
    /// The text behind the last keyword's extent.
    std::string TailText() const;
    /// The bytes of the text on the disk in which the keywords stand; -1 when there is none.
    long long FileSize() const;
    /// Makes every keyword know its tag, with the file opened once.
    void LoadAllTags() const;

    /// Drops the list and every edit; the next use reads the file anew. Raises nothing.
    void ResetContents();
    // Edits in memory; see KeywordFileEditing.cpp. Each takes effect at once and is raised on `fileChanged`. They
    // refuse, with null or false, in a file that could not be read, at a place inside a region that is skipped, and for
    // the skip keywords of such a region.

    /// A new keyword ahead of `position`, with those data, which may be null. Null when the data are another keyword's
    /// or hold what can't be written, and when the keyword can't bear that name. The file owns the keyword.
    IKeyword* InsertKeyword(const Keywords::IKeywordSyntax& syntax, const KeywordFileIterator& position,
                            std::unique_ptr<Keywords::IKeywordData> data, const std::string& name);
    /// The same with data given as text, as it stands below the keyword line. Null, told at severity 3, when the text
    /// holds a further keyword, or data for a keyword that has none.
    IKeyword* InsertKeywordText(const Keywords::IKeywordSyntax& syntax, const KeywordFileIterator& position,
                                const std::string& dataText, const std::string& name);
    /// False at `End()`.
    bool RemoveKeyword(const KeywordFileIterator& position);
    /// Moves a keyword of this file ahead of a place of `target`, which may be this file. It stays the same object, and
    /// positions of it stay good. False at `End()`, when it stands there already, and for an INCLUDE that would close a
    /// ring of files. The event goes out on this file alone.
    bool MoveKeyword(const KeywordFileIterator& source, KeywordFile& target, const KeywordFileIterator& destination);
    /// Counts the moves from one file to another: who listens at the target alone has not heard of them.
    static unsigned long long MovesBetweenFiles() { return s_movesBetweenFiles; }
    /// Sets the generated tag of each keyword that is new or whose data have changed.
    void SetTagOnChangedKeywords(bool tagged);
    /// The tag of the file goes; the keywords keep those of their own.
    void DropFileTag() { m_tagState.Set(false); }

    /// The text goes ahead of the keywords and of the header that the file has, in the place of one that was set
    /// before. Each of its lines becomes a comment. A cancel leaves it to be written by the next commit. Always true.
    bool SetHeaderComment(const std::string& text);
    /// Replaces the comment straight ahead of a keyword, which for the first of the file is the comment at its head.
    /// Lines that are no comments become such; blank lines stay. A blank text takes the comment away. False at `End()`,
    /// and behind a region that is skipped.
    bool SetCommentAbove(const KeywordFileIterator& position, const std::string& text);

    /// What stands behind the last keyword's own text; of a file without keywords, behind its tag and header.
    std::string TextAtEnd();
    /// Puts whole lines behind that. `mayHoldKeywords`: the file is read anew when they have been written.
    void AddTextAtEnd(const std::string& text, bool mayHoldKeywords);

    /// Drops uncommitted edits, and raises the cancel event when there were any.
    void CancelChanges();

    // The commit; see KeywordFileCommit.cpp. What a commit of a deck does to each of its files comes in this order,
    // each step over all files: is it what was read, can it be written, write the new text beside it, take that over,
    // and put it in place. Up to the last step no file of the deck has changed, and up to the one before nothing else
    // has.

    /// The text on the disk is another than the one that was read.
    bool HasChangedOnDisk() const;
    /// Both the file and its temporary text can be written, or there is nothing to write. Nothing is left behind.
    bool CheckWritable() const;
    /// Writes the text as it is now beside the file, to be taken over. With `partial` it breaks off behind the last
    /// keyword's own text, for a later commit to go on. Throws `DeckManagerException` when it can't be written; the
    /// file then is as it was.
    void WriteToTemporary(bool partial);
    /// What was written is not wanted.
    void DropWritten();
    /// The keywords stand in the text that was written. Those that were commented out leave the list.
    void TakeOver();
    /// The two in one, for a file by itself.
    void CommitToTemporary(bool partial);
    /// Puts the text that was taken over in the place of the file. Throws `DeckManagerException`, which names the file
    /// with the new text, when that can't be done: the file then counts as modified, and can be committed again.
    void FinishCommit();
    /// Stores the list in the cache of the project, if there is one and a commit has put a new text in place since that
    /// was done last. For when it is known that a scan would find that list.
    void StoreList();
    /// The list tells another deck than the text that has been committed: the file is to be reloaded.
    bool IsToBeReadAnew() const { return m_isToBeReadAnew; }
    /// Counts what can change which words of a deck are keywords: a list that was committed, another text, and the
    /// edits of section and INCLUDE keywords, undone or not, since files may have been read meanwhile. Behind each a
    /// scan may find other keywords in any file of the deck.
    static unsigned long long ChangesOfSections() { return s_changesOfSections; }
    /// Of these the last one in this file.
    unsigned long long LastChangeOfSections() const { return m_lastChangeOfSections; }
    /// With that section in force at its top the text would be read as it was.
    void CountAsReadIn(Keywords::SectionType start) { m_readIn = start; }
    /// A file that is still to be read is read in the section that others tell.
    void ForgetSectionToReadIn() { m_toBeReadIn.reset(); }
    /// The text holds section keywords that are no keywords of the list, since the deck had them already.
    bool HasDroppedSections() const { return m_hasDroppedSections; }
    /// The file that has brought the section into the deck; null: none has it.
    std::shared_ptr<const KeywordFile> BringerOf(Keywords::SectionType section) const;

    /// Replaces the whole file by the rest of a stream; uncommitted edits are lost. With `replace` false an existing
    /// file is left alone, and only the edits go. `keepTag`: the file keeps its generated tag, whatever the stream
    /// bears. Throws `DeckManagerException` when it can't be written; then nothing has changed.
    void OverwriteFile(std::istream& stream, bool replace, bool keepTag);
    /// Renames the file on disk, where it exists. False when it has that name already. Throws `DeckManagerException`
    /// when something stands under the new name, and `boost::filesystem::filesystem_error` when it can't be renamed.
    bool MoveKeywordFile(const Service::FileName& target);
    /// The file lies under another name now.
    void SetFileName(const Service::FileName& name);
    /// The same where it is a copy that lies there. What was read is known to be its text, unless the file had changed
    /// since. Returns what was known of the text on the disk, for `GoBack`.
    Service::FileStatus FollowMove(const Service::FileName& name);
    /// Takes that back.
    void GoBack(const Service::FileName& name, const Service::FileStatus& status);

    /// The section in force at a position: a section keyword's own, else that of the nearest one ahead of it, looked
    /// for in included files too and, with `askParent`, in the including file; `None` when there is none.
    Keywords::SectionType SectionAt(const KeywordFileIterator& position, bool askParent) const;
    /// `SectionAt(End(), false)`.
    Keywords::SectionType EndSection() const;

    /// The section that a keyword leaves in force behind it; `None` when it says nothing about that.
    static Keywords::SectionType SectionBegunBy(const IKeyword& keyword);

    /// The top file of the deck.
    KeywordFile& DataFile() const;
    bool IsDataFile() const { return &DataFile() == this; }
    Context& OwnContext() const { return m_context; }

    IKeywordFileManager& Manager() const { return m_manager; }
    bool UsesVariables() const { return m_useVariables; }
    bool IsLoaded() const { return m_contents != nullptr; }
    bool LoadFailed() const { return m_loadFailed; }
    /// The file has been loaded at some time, and may have been reset since.
    bool WasLoaded() const { return m_wasLoaded; }
    /// Where a walk that heeds the ends of files stops: the first ENDINC, else `End()`.
    KeywordFileIterator WalkEnd() const;
    const std::shared_ptr<KeywordFileReader>& FileReader() const { return m_fileReader; }
    long long HeaderBegin() const { return m_headerBegin; }
    long long HeaderEnd() const { return m_headerEnd; }
    long long TailBegin() const { return m_tailBegin; }
    const FileTagState& TagState() const { return m_tagState; }
    /// The keywords as they stand on the disk: the list as it was before an edit changed it.
    const KeywordFileContents::List& DiskList() const;
    /// Those of them that are read from the file's own text.
    struct DiskPlaces
    {
        std::vector<std::int64_t> starts; ///< ascending
        std::vector<const Keyword*> keywords;
    };
    std::shared_ptr<const DiskPlaces> PlacesOnDisk() const;
    /// A piece of what stands ahead of a keyword of the list: what stood on the disk ahead of a keyword (null: at the
    /// end of the file), or a text that an edit has put there.
    struct Block
    {
        const IKeyword* below;
        const std::string* text; ///< null: what stood on the disk
    };
    /// What stands ahead of a keyword of the list (null: of its end): mostly what stood ahead of it on the disk, behind
    /// what stood ahead of those that were removed there.
    std::vector<Block> BlocksAhead(const IKeyword* keyword) const;
    /// The first `count` of those that stand ahead of the keyword behind `position` stand ahead of its own instead.
    void PullBlocksUp(const KeywordFileIterator& position, std::size_t count);
    /// The list is the one on the disk, and what stands between its keywords too.
    bool IsListUnchanged() const { return !m_snapshotTaken; }
    /// An edit has changed what stands ahead of the keyword.
    bool HasOtherBlocksAhead(const IKeyword* keyword) const { return m_blocksAhead.count(keyword) > 0; }

    /// The text that an edit has put ahead of a keyword; null: none.
    const std::string* TextSetAhead(const IKeyword* keyword) const;
    /// The text that an edit has put in the place of the comment at the head; null: none.
    const std::string* TextSetInHead() const { return m_textInHead.get(); }
    /// The lines of a header that no commit has written yet; empty: none.
    const std::string& HeaderBlockToWrite() const { return m_headerBlock; }
    /// A commit has written the file's text, and not put it in place.
    bool IsPending() const;
    /// The end of the file, where that text breaks off ahead of it; else null.
    const RestBehindText* Rest() const;

    /// The files that the INCLUDE keywords of the list name. None of a file that was never read.
    std::vector<KeywordFile*> IncludedFiles() const;
    /// Those that one has named since the last commit or cancel of the deck, and that none may name any more: what was
    /// edited in them is part of the deck's edits.
    const std::vector<std::shared_ptr<KeywordFile>>& FormerFiles() const { return m_formerFiles; }
    void NoteFormerFile(const std::shared_ptr<KeywordFile>& file);
    /// The deck has been committed.
    void ForgetFormerFiles();
    /// The list of INCLUDE positions exists already.
    bool HasIncludeIndex() const { return m_includeIndex != nullptr; }
    /// How many keywords stand ahead of a position of this file.
    std::size_t OrdinalOf(const KeywordFileIterator& position) const;

    /// The file that a keyword includes; null for a keyword of another class, and without such a file.
    static KeywordFile* IncludedFileOf(const IKeyword* keyword);

    /// Hears the changes of included files.
    void OnIncludedFileChanged(KeywordFileEventArgs& args);

    /// An INCLUDE keyword names this file from now on, or no longer.
    void LinkAdded(KeywordINCLUDE& keyword);
    void LinkDropped(KeywordINCLUDE& keyword);
    /// The files with an INCLUDE keyword that names this file, in the order of the links: a file stands there for each
    /// of its own.
    std::vector<KeywordFile*> IncludingFiles() const;

private:
    friend class FileScan;
    friend class SectionContextQuery;
    friend class OpenReaderGuard;
    friend struct IteratorAccess;

    KeywordFileContents& Contents() const;
    void Load() const;
    /// Stores the list in the cache of the project, if there is one. `status` is that of the text which the list
    /// describes; a file that has changed since is not stored.
    void SaveToCache(const Service::FileStatus& status) const;
    void FinishLoad(ILineReader* reader);
    void PlaceHeadAndTail();
    void AbandonLoad();
    void TellOfFailedOpen();
    Keyword& AddScannedKeyword(const Keywords::IKeywordSyntax& syntax, long long position, long long size,
                               std::string_view name, const KeywordMarks* marks);
    /// The section in force at the top, for a scan.
    Keywords::SectionType SectionToReadIn() const;
    /// The included file begins in that section: what the scan of this file knows, it need not ask.
    void PrimeStartSection(Keywords::SectionType section) const;
    KeywordFileIterator At(KeywordFileContents::List::iterator node) const;
    void DropPositions();
    struct KeptBlock
    {
        std::shared_ptr<IKeyword> below;
        std::shared_ptr<const std::string> text;
    };
    using Blocks = std::list<KeptBlock>;
    struct CommitState;

    bool IsEdited() const;
    bool HasMovedBlocks() const;
    static bool DecidesOfOthers(const Keyword& keyword);
    bool CanContinue() const;
    bool SharesKeywords() const;
    void AddToRest(const std::string& text);
    void TakeExtents(const FileWriteResult& result, const std::shared_ptr<KeywordFileReader>& reader, bool dropData);
    void RemoveCommentedOut();
    void NoteSections();
    void NoteChangeOfSections() { m_lastChangeOfSections = ++s_changesOfSections; }
    void NoteForeignText();
    void TakeSnapshot();
    void DropSnapshot();
    Blocks TakeBlocks(const std::shared_ptr<IKeyword>& keyword);
    void UndoMovesBetweenFiles();
    void DropBlocksOf(const KeywordFileReader& reader);
    void TakeHome(KeywordFile& other, const Keyword& keyword);
    bool TakesEditAt(const KeywordFileIterator& position) const;
    IKeyword* PutIn(const KeywordFileIterator& position, std::unique_ptr<Keyword> keyword);
    void DropAfterEdit(const Keyword& keyword);
    void RaiseOnce(KeywordFileEventArgs& args);
    std::vector<const KeywordFile*> ChainAbove() const;
    std::vector<const KeywordFile*> ChainBelow() const;

    inline static unsigned long long s_movesBetweenFiles = 0;

    IKeywordFileManager& m_manager;
    Service::FileName m_fileName;
    std::shared_ptr<KeywordFileReader> m_fileReader;
    mutable std::shared_ptr<ILineReader> m_openReader;
    mutable std::unique_ptr<KeywordFileContents> m_contents;
    long long m_headerBegin = -1;
    long long m_headerEnd = -1;
    long long m_tailBegin = -1;
    bool m_snapshotTaken = false;
    KeywordFileContents::List m_snapshot;
    mutable std::shared_ptr<const DiskPlaces> m_diskPlaces; ///< of the snapshot; null: not asked for
    /// Where the blocks ahead of a keyword are others than its own; of null: of the list's end.
    std::unordered_map<const IKeyword*, Blocks> m_blocksAhead;
    bool m_commentsSet = false; ///< one ahead of a keyword, or in the head
    std::shared_ptr<const std::string> m_textInHead;
    std::string m_headerBlock;
    /// An edit has changed which keywords a scan of the new text will find.
    bool m_scanWillDiffer = false;
    bool m_isToBeReadAnew = false;
    bool m_isToBeStored = false;
    unsigned long long m_lastChangeOfSections = 0;
    inline static unsigned long long s_changesOfSections = 0;
    /// The section in force at the top of the text when it was read; none as long as no scan has asked.
    mutable std::optional<Keywords::SectionType> m_readIn;
    /// What the scan of the including file has told, as long as only further files are read.
    struct ListedIn
    {
        Keywords::SectionType section = Keywords::SectionType::None;
        unsigned long long edits = 0;
    };
    mutable ListedIn m_listedIn;
    /// The section for the next scan, where others don't tell.
    std::optional<Keywords::SectionType> m_toBeReadIn;
    Service::FileStatus m_status; ///< of the text on the disk, from before it was read
    std::unique_ptr<CommitState> m_commit;
    mutable std::unique_ptr<std::vector<KeywordFileIterator>> m_includeIndex;
    mutable Context m_context;
    mutable std::unique_ptr<KeywordFileIterator> m_logicalEnd;
    mutable std::unique_ptr<KeywordFileIterator> m_walkEnd;
    FileTagState m_tagState;
    bool m_useVariables;
    bool m_readOnly = false;
    bool m_loadFailed = false;
    bool m_wasLoaded = false;
    bool m_hasDroppedSections = false;

    std::vector<KeywordINCLUDE*> m_links; ///< the INCLUDE keywords that name this file
    std::vector<std::shared_ptr<KeywordFile>> m_formerFiles;
    mutable LinkCached<Keywords::SectionType> m_startSection;
    mutable LinkCached<Keywords::SectionType> m_endSection;
    mutable LinkCached<KeywordFile*> m_dataFile;
    /// Of a top file: which file brought each section into the deck; empty: not seen so far.
    std::array<std::weak_ptr<const KeywordFile>, 9> m_sectionsSeen;
};

/// Keeps a file open for the length of a pass over its keywords.
class OpenReaderGuard
{
public:
    explicit OpenReaderGuard(const KeywordFile& file);
    ~OpenReaderGuard();
    OpenReaderGuard(const OpenReaderGuard&) = delete;
    OpenReaderGuard& operator=(const OpenReaderGuard&) = delete;

private:
    const KeywordFile& m_file;
    bool m_opened = false;
};

} // namespace Tarn::Fjel::Core::DeckManager
