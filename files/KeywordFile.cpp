#include "files/KeywordFile.h"

#include <algorithm>

#include "files/CachedKeywords.h"
#include "files/FileRing.h"
#include "files/FileScan.h"
#include "files/KeywordFactory.h"
#include "files/KeywordINCLUDE.h"
#include "text/KeywordFileReader.h"
#include "text/SectionNames.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/Environment.h>
#include <deckmanager/IKeywordFileManager.h>
#include <deckmanager/ILineReader.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/service/Directory.h>
#include <tarn/service/FileStatus.h>
#include <tarn/service/Log.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::KeywordKind;
using Keywords::SectionType;

// --- the list ------------------------------------------------------------------------------------

KeywordFileIterator KeywordFile::At(KeywordFileContents::List::iterator node) const
{
    return KeywordFileIterator(const_cast<KeywordFile*>(this), node);
}

KeywordFileIterator KeywordFile::Begin() const
{
    return At(Contents().Keywords().begin());
}

KeywordFileIterator KeywordFile::End() const
{
    return At(Contents().Keywords().end());
}

KeywordFileIterator KeywordFile::LogicalEnd() const
{
    if (!m_logicalEnd) {
        KeywordFileContents::List& keywords = Contents().Keywords();
        const bool endEnds = Environment::Instance().DeckTerminatedByENDKeyword();
        const auto ends = [endEnds](const std::shared_ptr<IKeyword>& keyword) {
            const int kind = keyword->GetSyntax()->GetKind();
            if (kind != KeywordKind::End && kind != KeywordKind::EndInc) return false;
            return endEnds || keyword->GetName() != "END";
        };
        m_logicalEnd = std::make_unique<KeywordFileIterator>(At(std::find_if(keywords.begin(), keywords.end(), ends)));
    }
    return *m_logicalEnd;
}

KeywordFileIterator KeywordFile::WalkEnd() const
{
    if (!m_walkEnd) {
        KeywordFileContents::List& keywords = Contents().Keywords();
        const auto ends = [](const std::shared_ptr<IKeyword>& keyword) {
            return keyword->GetSyntax()->GetKind() == KeywordKind::EndInc;
        };
        m_walkEnd = std::make_unique<KeywordFileIterator>(At(std::find_if(keywords.begin(), keywords.end(), ends)));
    }
    return *m_walkEnd;
}

KeywordFileIterator KeywordFile::Find(const IKeyword* keyword) const
{
    return At(Contents().Find(keyword));
}

std::size_t KeywordFile::OrdinalOf(const KeywordFileIterator& position) const
{
    return Contents().OrdinalOf(position.GetKeywordListIter());
}

const std::vector<KeywordFileIterator>& KeywordFile::GetINCLUDEKeywords() const
{
    if (!m_includeIndex) {
        auto index = std::make_unique<std::vector<KeywordFileIterator>>();
        KeywordFileContents::List& keywords = Contents().Keywords();
        for (auto node = keywords.begin(); node != keywords.end(); ++node) {
            if ((*node)->GetSyntax()->GetKind() == KeywordKind::Include) index->push_back(At(node));
        }
        m_includeIndex = std::move(index);
    }
    return *m_includeIndex;
}

bool KeywordFile::HasUserKeywords() const
{
    const KeywordFileContents::List& keywords = Contents().Keywords();
    const OpenReaderGuard guard(*this);
    return std::any_of(keywords.begin(), keywords.end(), [](const std::shared_ptr<IKeyword>& keyword) {
        return keyword->GetSyntax()->GetKind() != KeywordKind::Section && !keyword->IsGenerated();
    });
}

void KeywordFile::LoadAllTags() const
{
    const KeywordFileContents::List& keywords = Contents().Keywords();
    const OpenReaderGuard guard(*this);
    for (const std::shared_ptr<IKeyword>& keyword : keywords) {
        keyword->IsGenerated();
    }
}

bool KeywordFile::IsModified() const
{
    return IsPending() || !m_headerBlock.empty() || IsEdited();
}

/// What a cancel undoes.
bool KeywordFile::IsEdited() const
{
    if (m_tagState.IsChanged() || m_commentsSet) return true;
    if (!m_contents) return false;
    const KeywordFileContents::List& keywords = m_contents->Keywords();
    if (m_snapshotTaken && (keywords != m_snapshot || HasMovedBlocks())) return true;
    return std::any_of(keywords.begin(), keywords.end(), [](const std::shared_ptr<IKeyword>& keyword) {
        return KeywordFileContents::AsKeyword(keyword).IsDirty();
    });
}

/// A keyword that came and went again can have left what stood above it.
bool KeywordFile::HasMovedBlocks() const
{
    return std::any_of(m_blocksAhead.begin(), m_blocksAhead.end(), [](const auto& entry) {
        const auto& [keyword, blocks] = entry;
        return blocks.size() != 1 || blocks.front().below.get() != keyword || blocks.front().text;
    });
}

const KeywordFileContents::List& KeywordFile::DiskList() const
{
    const KeywordFileContents::List& present = Contents().Keywords();
    return m_snapshotTaken ? m_snapshot : present;
}

/// A thousand edits of comments ask for it a thousand times.
std::shared_ptr<const KeywordFile::DiskPlaces> KeywordFile::PlacesOnDisk() const
{
    if (m_diskPlaces) return m_diskPlaces;
    auto places = std::make_shared<DiskPlaces>();
    for (const std::shared_ptr<IKeyword>& listed : DiskList()) {
        const Keyword& keyword = KeywordFileContents::AsKeyword(listed);
        if (keyword.Reader() != m_fileReader) continue;
        places->starts.push_back(keyword.Position());
        places->keywords.push_back(&keyword);
    }
    if (m_snapshotTaken) m_diskPlaces = places;
    return places;
}

KeywordFile* KeywordFile::IncludedFileOf(const IKeyword* keyword)
{
    const KeywordINCLUDE* include = KeywordINCLUDE::From(keyword);
    return include != nullptr ? include->IncludedFile() : nullptr;
}

// --- loading -------------------------------------------------------------------------------------

KeywordFileContents& KeywordFile::Contents() const
{
    if (!m_contents) Load();
    return *m_contents;
}

/// Reading one file may need the section that a file ends in which it includes, and that file's text a further one.
/// The scans under way stand on a stack of their own, so that a long chain of files needs no deep recursion. Deep down
/// in a chain those that wait give their files back: a process may hold only so many open.
void KeywordFile::Load() const
{
    constexpr std::size_t mostOpenFiles = 32;
    std::vector<std::unique_ptr<FileScan>> scans;
    const auto begin = [&scans](KeywordFile& file) {
        file.m_contents = std::make_unique<KeywordFileContents>(&file);
        file.m_loadFailed = false;
        file.m_wasLoaded = true;
        file.m_status = {};
        const Service::FileStatus status = Service::FileStatus::Of(file.m_fileReader->GetPath());
        if (!status.IsRegularFile()) {
            if (status.isUnknown) file.TellOfFailedOpen();
            return;
        }
        file.m_status = status;
        file.DropPositions();
        scans.push_back(std::make_unique<FileScan>(file, status));
    };
    try {
        begin(const_cast<KeywordFile&>(*this));
        while (!scans.empty()) {
            if (KeywordFile* needed = scans.back()->Run()) {
                if (scans.size() > mostOpenFiles) scans.back()->PutAside();
                begin(*needed);
            } else {
                scans.pop_back();
            }
        }
    } catch (...) {
        for (const std::unique_ptr<FileScan>& scan : scans) {
            scan->File().AbandonLoad();
        }
        throw;
    }
}

/// The file is there, or may be: it must not be taken for an empty one.
void KeywordFile::TellOfFailedOpen()
{
    m_loadFailed = true;
    if (Environment::Instance().GetAllowIncompleteDeck()) return;
    const std::string& path = m_fileReader->GetPath();
    const Service::Log::Place place(path, -1);
    Service::Log::SendLogMessage("Loading keyword file: Fails to open file:" + path, Service::Log::Error);
}

void KeywordFile::AbandonLoad()
{
    DropPositions();
    m_contents.reset();
    m_loadFailed = true;
}

void KeywordFile::DropPositions()
{
    m_includeIndex.reset();
    m_logicalEnd.reset();
    m_walkEnd.reset();
}

void KeywordFile::FinishLoad(ILineReader* reader)
{
    m_toBeReadIn.reset();
    // A file that is included twice may have been asked where it ends while it was read, for where it begins.
    if (m_endSection.IsValid()) LinkCounter::Added();
    const bool tagWasChanged = m_tagState.IsChanged();
    const bool tag = m_tagState.GetValue();
    if (reader != nullptr) {
        m_tagState.Read(*reader);
        m_headerBegin = reader->Tell();
    }
    if (tagWasChanged && tag) m_tagState.Set(true);
    PlaceHeadAndTail();
}

/// The header ends where the keywords begin, and they where the tail does.
void KeywordFile::PlaceHeadAndTail()
{
    const KeywordFileContents::List& keywords = m_contents->Keywords();
    m_headerEnd = keywords.empty() ? -1 : KeywordFileContents::AsKeyword(keywords.front()).Position() - 1;
    m_tailBegin = -1;
    if (!keywords.empty()) {
        const Keyword& last = KeywordFileContents::AsKeyword(keywords.back());
        m_tailBegin = last.Position() + last.Size();
    }
}

Keyword& KeywordFile::AddScannedKeyword(const Keywords::IKeywordSyntax& syntax, long long position, long long size,
                                        std::string_view name, const KeywordMarks* marks)
{
    std::unique_ptr<Keyword> keyword =
        KeywordFactory::Create(syntax, m_useVariables, name, false, this, m_fileReader, position, size, marks);
    Keyword& added = *keyword;
    m_contents->Append(std::move(keyword));

    // Aliases serve the whole deck, wherever the keyword that brings them stands.
    m_context.NoteKeyword(&added);
    Context& root = DataFile().m_context;
    if (&root != &m_context) root.NoteKeyword(&added);
    return added;
}

void KeywordFile::SaveToCache(const Service::FileStatus& status) const
{
    // Which sections these begin only a scan can tell.
    if (m_hasDroppedSections) return;
    // A file that is included twice is read in the section of one of the two.
    if (m_links.size() > 1 && m_readIn != GetStartSection()) return;
    // What a scan of the text would learn of other files, as far as they are known.
    SectionAnswers sections;
    sections.StartIs(GetStartSection());
    for (const KeywordFileIterator& place : GetINCLUDEKeywords()) {
        const KeywordFile* included = IncludedFileOf(*place);
        if (included == nullptr) continue;
        sections.AddInclude();
        if (included->IsLoaded()) sections.LastIncludeIs(included->EndSection());
    }
    CachedKeywords::Store(*this, status, sections);
}

void KeywordFile::Reload()
{
    UndoMovesBetweenFiles();
    ResetContents();
    NoteChangeOfSections();
    KeywordFileOverwriteEventArgs args(*this);
    RaiseOnce(args);
}

void KeywordFile::ReloadIn(SectionType start)
{
    UndoMovesBetweenFiles();
    ResetContents();
    m_toBeReadIn = start;
    // Whoever keeps positions hears of it also where the file can't be read any more.
    KeywordFileOverwriteEventArgs args(*this);
    RaiseOnce(args);
    Contents();
}

void KeywordFile::CancelChanges()
{
    const std::vector<std::shared_ptr<KeywordFile>> formerFiles = std::move(m_formerFiles);
    if (IsPending()) {
        // The keywords stand in a text that is not the file's. That is read as it was before.
        const std::optional<SectionType> readIn = m_readIn;
        ResetContents();
        m_toBeReadIn = readIn;
        ForgetFormerFiles();
        NoteChangeOfSections();
        KeywordFileCancelEventArgs args(*this);
        RaiseOnce(args);
        return;
    }
    const bool undo = IsEdited();
    if (undo) {
        m_tagState.Restore();
        if (m_contents) {
            if (m_snapshotTaken && m_contents->Keywords() != m_snapshot) m_contents->Replace(m_snapshot);
            for (const std::shared_ptr<IKeyword>& keyword : m_contents->Keywords()) {
                KeywordFileContents::AsKeyword(keyword).Rollback();
                KeywordFileContents::AsKeyword(keyword).SetOwner(this);
                if (KeywordINCLUDE* include = KeywordINCLUDE::From(keyword.get())) include->ComeBack();
            }
        }
        DropPositions();
        LinkCounter::Changed();
    }
    DropSnapshot();
    ForgetFormerFiles();
    if (undo) {
        KeywordFileCancelEventArgs args(*this);
        RaiseOnce(args);
    }
}

bool KeywordFile::MoveKeywordFile(const Service::FileName& target)
{
    if (target == m_fileName) return false;
    if (target.FileExists()) {
        throw DeckManagerException("KeywordFile::MoveKeywordFile can not move to an existing file/directory");
    }
    if (m_fileName.FileExists()) Service::FileName::Rename(m_fileName, target);
    SetFileName(target);
    return true;
}

void KeywordFile::NoteFormerFile(const std::shared_ptr<KeywordFile>& file)
{
    // What was never read has not been edited.
    if (file->WasLoaded() && (m_formerFiles.empty() || m_formerFiles.back() != file)) m_formerFiles.push_back(file);
}

void KeywordFile::ForgetFormerFiles()
{
    m_formerFiles.clear();
}

Service::FileStatus KeywordFile::FollowMove(const Service::FileName& name)
{
    const Service::FileStatus former = m_status;
    const bool isSameText = !HasChangedOnDisk();
    SetFileName(name);
    if (isSameText && m_contents) m_status = Service::FileStatus::Of(name);
    return former;
}

void KeywordFile::GoBack(const Service::FileName& name, const Service::FileStatus& status)
{
    SetFileName(name);
    m_status = status;
}

// --- the text ------------------------------------------------------------------------------------

std::string KeywordFile::HeaderText() const
{
    Contents();
    if (!m_headerBlock.empty()) return m_headerBlock;
    std::string text;
    if (m_headerBegin < 0 || m_headerEnd < 0) return text;
    if (const std::unique_ptr<ILineReader> reader = m_fileReader->OpenLineReader(false)) {
        reader->ReadRange(m_headerBegin, m_headerEnd, text);
    }
    return text;
}

std::string KeywordFile::TailText() const
{
    Contents();
    std::string text;
    const long long size = FileSize();
    if (m_tailBegin < 0 || m_tailBegin >= size) return text;
    if (const std::unique_ptr<ILineReader> reader = m_fileReader->OpenLineReader(false)) {
        reader->ReadRange(m_tailBegin, size - 1, text);
    }
    return text;
}

KeywordFile* KeywordFile::DiskFileOf(const KeywordFileReader& reader, bool useVariables) const
{
    if (&reader == m_fileReader.get()) return const_cast<KeywordFile*>(this);
    return m_manager.GetKeywordFile(Service::FileName(reader.GetFile()), useVariables).get();
}

std::shared_ptr<ILineReader> KeywordFile::OpenedReader(const KeywordFileReader& reader) const
{
    return &reader == m_fileReader.get() ? m_openReader : nullptr;
}

OpenReaderGuard::OpenReaderGuard(const KeywordFile& file) : m_file(file)
{
    if (m_file.m_openReader) return;
    m_file.m_openReader = m_file.m_fileReader->OpenLineReader(false);
    m_opened = true;
}

OpenReaderGuard::~OpenReaderGuard()
{
    if (m_opened) m_file.m_openReader.reset();
}

// --- the place in the tree -----------------------------------------------------------------------

SectionType KeywordFile::SectionBegunBy(const IKeyword& keyword)
{
    const int kind = keyword.GetSyntax()->GetKind();
    SectionType section = SectionType::None;
    if (kind == KeywordKind::Section) {
        FindSection(keyword.GetName(), section);
    } else if (kind == KeywordKind::Include) {
        if (const KeywordFile* file = IncludedFileOf(&keyword)) section = file->EndSection();
    }
    return section;
}

SectionType KeywordFile::SectionAt(const KeywordFileIterator& position, bool askParent) const
{
    KeywordFileContents::List& keywords = Contents().Keywords();
    auto node = position.AtBeforeBegin() ? keywords.begin() : position.GetKeywordListIter();
    if (node != keywords.end() && (*node)->GetSyntax()->GetKind() == KeywordKind::Section) {
        return SectionBegunBy(**node);
    }
    while (node != keywords.begin()) {
        --node;
        const SectionType section = SectionBegunBy(**node);
        if (section != SectionType::None) return section;
    }
    return askParent ? GetStartSection() : SectionType::None;
}

namespace {

/// A question goes from file to file by a call for each. When it has come far, the files at the other end of the chain
/// are asked first: so an answer is never far from there on.
class FarQuestion
{
public:
    FarQuestion() { ++s_calls; }
    ~FarQuestion() { --s_calls; }
    FarQuestion(const FarQuestion&) = delete;
    FarQuestion& operator=(const FarQuestion&) = delete;

    /// `chain` gives the files that may be asked, the last of them to be asked first.
    template <class Chain, class Ask>
    static void AskFarEndFirst(const Chain& chain, const Ask& ask)
    {
        constexpr int far = 32;
        if (s_calls % far != 0) return;
        const std::vector<const KeywordFile*> files = chain();
        std::for_each(files.rbegin(), files.rend(), [&ask](const KeywordFile* file) { ask(*file); });
    }

private:
    inline static int s_calls = 0;
};

} // namespace

/// Of the files that include one the first.
std::vector<const KeywordFile*> KeywordFile::ChainAbove() const
{
    std::vector<const KeywordFile*> chain;
    for (const KeywordFile* file = this; !file->m_links.empty(); chain.push_back(file)) {
        IKeywordOwner* owner = file->m_links.front()->Owner();
        file = owner != nullptr ? owner->AsKeywordFile() : nullptr;
        if (file == nullptr) break;
    }
    return chain;
}

/// Of the files that one includes the last that can decide where it ends.
std::vector<const KeywordFile*> KeywordFile::ChainBelow() const
{
    std::vector<const KeywordFile*> chain;
    for (const KeywordFile* file = this; file->IsLoaded(); chain.push_back(file)) {
        const KeywordFileContents::List& keywords = file->m_contents->Keywords();
        const auto last =
            std::find_if(keywords.rbegin(), keywords.rend(), [](const std::shared_ptr<IKeyword>& keyword) {
                const int kind = keyword->GetSyntax()->GetKind();
                return kind == KeywordKind::Section || kind == KeywordKind::Include;
            });
        file = last != keywords.rend() ? IncludedFileOf(last->get()) : nullptr;
        if (file == nullptr || file->m_endSection.IsValid()) break;
    }
    return chain;
}

SectionType KeywordFile::EndSection() const
{
    if (!m_endSection.IsValid()) {
        const FarQuestion question;
        FarQuestion::AskFarEndFirst([this] { return ChainBelow(); },
                                    [](const KeywordFile& file) { file.EndSection(); });
        const SectionType section = SectionAt(End(), false);
        m_endSection.Set(section);
    }
    return m_endSection.Get();
}

SectionType KeywordFile::GetStartSection() const
{
    if (!m_startSection.IsValid()) {
        const FarQuestion question;
        FarQuestion::AskFarEndFirst([this] { return ChainAbove(); },
                                    [](const KeywordFile& file) { file.GetStartSection(); });
        KeywordFileSectionQueryEventArgs args;
        sectionQuery.Raise(args);
        m_startSection.Set(args.sections.empty() ? SectionType::None : args.sections.front());
    }
    return m_startSection.Get();
}

void KeywordFile::PrimeStartSection(SectionType section) const
{
    m_startSection.Set(section);
    m_listedIn = {section, LinkCounter::Edits()};
}

SectionType KeywordFile::SectionToReadIn() const
{
    if (m_toBeReadIn)
        m_readIn = m_toBeReadIn;
    else
        m_readIn = m_listedIn.edits == LinkCounter::Edits() ? m_listedIn.section : GetStartSection();
    return *m_readIn;
}

KeywordFile& KeywordFile::DataFile() const
{
    if (!m_dataFile.IsValid()) {
        const FarQuestion question;
        FarQuestion::AskFarEndFirst([this] { return ChainAbove(); }, [](const KeywordFile& file) { file.DataFile(); });
        KeywordFileDataFileQueryEventArgs args;
        dataFileQuery.Raise(args);
        m_dataFile.Set(args.dataFile != nullptr ? args.dataFile : const_cast<KeywordFile*>(this));
    }
    return *m_dataFile.Get();
}

const Context& KeywordFile::RootContext() const
{
    return DataFile().m_context;
}

void KeywordFile::LinkAdded(KeywordINCLUDE& keyword)
{
    // Nothing can have asked a file that is new to the tree and has not been loaded: what others know stays true.
    const bool isNew = m_links.empty() && !m_contents;
    m_links.push_back(&keyword);
    if (isNew) {
        m_startSection.Drop();
        m_endSection.Drop();
        m_dataFile.Drop();
    } else {
        LinkCounter::Added();
    }
}

void KeywordFile::LinkDropped(KeywordINCLUDE& keyword)
{
    const auto found = std::find(m_links.begin(), m_links.end(), &keyword);
    if (found != m_links.end()) m_links.erase(found);
    LinkCounter::Changed();
    FileRing::LinkDropped();
}

std::vector<KeywordFile*> KeywordFile::IncludingFiles() const
{
    std::vector<KeywordFile*> files;
    for (const KeywordINCLUDE* link : m_links) {
        KeywordFile* file = link->Owner() != nullptr ? link->Owner()->AsKeywordFile() : nullptr;
        if (file != nullptr) files.push_back(file);
    }
    return files;
}

// --- events --------------------------------------------------------------------------------------

void KeywordFile::RaiseOnce(KeywordFileEventArgs& args)
{
    // A file that is included twice from here passes each event up on both ways.
    if (args.ComesTo(*this)) fileChanged.Raise(args);
}

void KeywordFile::OnIncludedFileChanged(KeywordFileEventArgs& args)
{
    RaiseOnce(args);
}

void KeywordFile::KeywordUpdated(Keyword& keyword)
{
    LinkCounter::Changed();
    NoteChangeOfSections();
    KeywordFileSelectKeywordUpdatedEventArgs args(*this, keyword);
    RaiseOnce(args);
}

} // namespace Tarn::Fjel::Core::DeckManager
