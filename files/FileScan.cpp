#include "files/FileScan.h"

#include <algorithm>
#include <vector>

#include "files/KeywordFile.h"
#include "files/KeywordINCLUDE.h"
#include "text/KeywordFileReader.h"
#include "text/KeywordLine.h"
#include "text/LineStreamReader.h"
#include "text/SectionNames.h"
#include <deckmanager/Environment.h>
#include <deckmanager/IKeywordFileManager.h>
#include <deckmanager/ILineReader.h>
#include <deckmanager/LineReaderUtil.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/keywords/KeywordSyntaxUtils.h>
#include <tarn/service/Log.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::KeywordKind;
using Keywords::SectionType;
using Service::Log;

SectionType SectionContextQuery::GetSection() const
{
    if (m_included != nullptr) {
        const SectionType section = m_included->EndSection();
        m_included = nullptr;
        m_answers.LastIncludeIs(section);
        if (section != SectionType::None) m_section = section;
    }
    if (m_section == SectionType::None && !m_startAsked) {
        m_startAsked = true;
        m_section = m_file.SectionToReadIn();
        m_answers.StartIs(m_section);
    }
    return m_section;
}

void SectionContextQuery::Restart()
{
    m_section = SectionType::None;
    m_included = nullptr;
    m_startAsked = false;
    m_answers = SectionAnswers();
}

FileScan::FileScan(KeywordFile& file, const Service::FileStatus& status) : m_file(file), m_status(status), m_query(file)
{
}

FileScan::~FileScan() = default;

const std::string& FileScan::Path() const
{
    return m_file.m_fileReader->GetPath();
}

KeywordFile* FileScan::Run()
{
    if (!m_started) {
        m_started = true;
        if (!Open()) return nullptr;
    } else if (m_putAside && !Resume()) {
        return nullptr;
    }
    for (;;) {
        if (!m_hasCandidate) {
            m_hasCandidate = NextCandidate();
            if (m_hasCandidate) {
                ListInclude();
            } else if (!m_cached) {
                break;
            }
        }
        const bool asks = m_hasCandidate || m_cached->AsksOnceMore(m_query.Answers());
        if (KeywordFile* needed = asks ? FileToLoad() : nullptr) return needed;
        if (m_cached && !CachedSectionsHold(asks)) {
            if (!ScanAfterAll()) return nullptr;
            continue;
        }
        if (!m_hasCandidate) break;
        m_hasCandidate = false;
        const bool isKeyword = ResolveCandidate();
        if (!m_cached) {
            if (isKeyword) TakeFound();
        } else if (!(isKeyword ? TakeCached() : !m_cached->TellsCircumstances()) && !ScanAfterAll()) {
            return nullptr;
        }
    }
    Finish();
    return nullptr;
}

bool FileScan::Open()
{
    // A data file begins the book of sections anew, any other file takes its own out of it.
    const bool isDataFile = m_file.IsDataFile();
    for (std::weak_ptr<const KeywordFile>& bringer : m_file.DataFile().m_sectionsSeen) {
        if (isDataFile || bringer.lock().get() == &m_file) bringer.reset();
    }

    m_file.m_hasDroppedSections = false;
    m_cached = CachedKeywords::Find(m_file, m_status);
    if (m_cached) {
        m_guard = std::make_unique<OpenReaderGuard>(m_file);
        if (m_cached->StandIn(m_file.m_openReader.get())) {
            m_file.m_hasDroppedSections = m_cached->HasDroppedSections();
            return true;
        }
        m_cached.reset();
        m_guard.reset();
    }
    return OpenText();
}

bool FileScan::OpenText()
{
    Environment& environment = Environment::Instance();
    if (!OpenReader()) return false;
    char head[3];
    m_byteOrderMark = m_reader->ReadRaw(head, 3) == 3 && std::string_view(head, 3) == "\xEF\xBB\xBF";
    m_reader->Seek(0, 0);

    m_warnIndented = environment.LogWarningForPossibleIndentedKeywords();
    m_skip.enabled = environment.SKIPENDSKIPEnabled();
    m_skip.simulator = environment.SKIPENDSKIPSimulator();
    return true;
}

/// Another file of the deck has changed in a way that may change the list of this one. What was taken from the cache
/// goes; files that were loaded meanwhile stay.
bool FileScan::ScanAfterAll()
{
    m_cached.reset();
    m_guard.reset();
    m_hasCandidate = false;
    m_file.m_hasDroppedSections = false;
    m_actionDepth = 0;
    // With the list go links, and with these what is known of the files around.
    m_file.m_toBeReadIn = m_file.m_readIn;
    m_query.Restart();
    m_file.DropPositions();
    m_file.m_contents = std::make_unique<KeywordFileContents>(&m_file);
    for (std::weak_ptr<const KeywordFile>& bringer : m_file.DataFile().m_sectionsSeen) {
        if (bringer.lock().get() == &m_file) bringer.reset();
    }
    return OpenText();
}

bool FileScan::OpenReader()
{
    const bool required = !Environment::Instance().GetAllowIncompleteDeck();
    m_reader = m_file.m_fileReader->OpenLineReader(required);
    if (m_reader) return true;
    m_file.TellOfFailedOpen();
    return false;
}

void FileScan::PutAside()
{
    m_putAside = true;
    m_resumeAt = m_reader ? m_reader->Tell() : 0;
    m_reader.reset();
    m_guard.reset();
}

bool FileScan::Resume()
{
    m_putAside = false;
    if (m_cached) {
        m_guard = std::make_unique<OpenReaderGuard>(m_file);
        return true;
    }
    if (!OpenReader()) return false;
    m_reader->Seek(m_resumeAt, 0);
    return true;
}

bool FileScan::NextCandidate()
{
    if (!m_cached) {
        if (!LineReaderUtil::FindNextCandidate(*m_reader, m_warnIndented, m_file.m_fileReader.get(), m_found)) {
            return false;
        }
        // The byte order mark belongs to the file and not to its first keyword.
        if (m_byteOrderMark && m_found.pos == 0) m_found.pos = 3;
        return true;
    }
    if (!m_cached->Next()) return false;
    m_found.name = m_cached->Value().name;
    m_found.pos = m_cached->Value().pos;
    return true;
}

bool FileScan::ResolveCandidate()
{
    if (!m_cached) return LineReaderUtil::ResolveCandidate(*m_reader, m_query, m_file.m_fileReader.get(), m_found);
    const SectionType dropped = m_cached->DroppedSection();
    if (dropped != SectionType::None) m_query.SetSection(dropped);
    const Log::Place place(Path(), &FileScan::LineOfFound, this);
    // As the scan looks a word up: by its head first, which has cut it unless its syntax keeps long names.
    const std::string_view name = m_found.name;
    m_found.syntax = nullptr;
    if (name.size() > SignificantCharacters) {
        m_found.syntax = LineReaderUtil::FindSyntax(name.substr(0, SignificantCharacters), m_query);
        if (m_found.syntax != nullptr && !m_found.syntax->KeepsLongName()) m_found.syntax = nullptr;
    }
    if (m_found.syntax == nullptr) m_found.syntax = LineReaderUtil::FindSyntax(name, m_query);
    return m_found.syntax != nullptr;
}

int FileScan::LineOfFound(const void* scan)
{
    const auto& self = *static_cast<const FileScan*>(scan);
    return self.m_file.m_fileReader->LineNumberAt(self.m_found.pos);
}

/// The sections are those that the scan met, up to the keyword that comes next. `ask`: the scan asked here.
bool FileScan::CachedSectionsHold(bool ask) const
{
    if (ask) m_query.GetSection();
    return m_cached->Agrees(m_query.Answers(), !m_hasCandidate);
}

/// What follows an INCLUDE stands in the section that the included file ends in, so the keyword must be in the list
/// before the next one is looked at. Its end is where that one begins.
void FileScan::ListInclude()
{
    if (m_pending.syntax == nullptr || m_pending.listed != nullptr) return;
    if (m_pending.syntax->GetKind() != KeywordKind::Include) return;
    AddPending(m_found.pos - m_pending.position);
}

KeywordFile* FileScan::FileToLoad() const
{
    const KeywordFile* included = m_query.Included();
    return included != nullptr && !included->IsLoaded() ? const_cast<KeywordFile*>(included) : nullptr;
}

void FileScan::TakeFound()
{
    Environment& environment = Environment::Instance();
    if (m_found.indented && environment.LogWarningForPossibleIndentedKeywords()) {
        const int line = m_found.line > 0 ? m_found.line : m_file.m_fileReader->LineNumberAt(m_found.pos);
        const Log::Place place(Path(), line);
        Log::SendLogMessage(environment.getIndentedKeywordsWarningPrefix() + " " + m_found.name +
                                " will be ignored, at line " + std::to_string(line) + " in " + Path(),
                            Log::Warning);
        return;
    }

    const std::vector<SkippedKeyword> skipped = SkipRegion::Consume(m_skip, m_found.name, m_found.pos, m_found.syntax,
                                                                    *m_reader, m_query, *m_file.m_fileReader);
    if (!skipped.empty()) {
        // A keyword of the skip family never becomes an ordinary keyword.
        m_found.syntax = nullptr;
        m_found.name.clear();
    }
    NoteActions(m_found.name);
    SettlePending(m_found.pos);

    m_pending.syntax = m_found.syntax;
    m_pending.position = m_found.pos;
    m_pending.name = m_found.name;
    m_pending.marks.line = m_found.line > 0 ? m_found.line : 0;
    m_pending.marks.suppressed = m_found.suppressed;
    m_pending.marks.tagKnown = m_found.tagKnown;
    m_pending.marks.tagged = m_found.tagged;
    m_pending.listed = nullptr;
    if (m_found.syntax != nullptr) m_pending.section = m_query.GetSection();
    if (m_found.syntax != nullptr && m_found.syntax->GetKind() == KeywordKind::Section) {
        SectionType section = SectionType::None;
        if (FindSection(m_found.name, section)) m_query.SetSection(section);
    }

    NoteUnread();
    AddSkipKeywords(skipped);
    LineReaderUtil::ConsumeDataLines(m_found.syntax, *m_reader);
}

/// What no run reads: the text behind an end, and that of a region which is skipped whatever the simulator.
void FileScan::NoteUnread()
{
    if (m_found.syntax == nullptr || m_found.suppressed) return;
    const int kind = m_found.syntax->GetKind();
    const bool opens = Keywords::KeywordSyntaxUtils::IsSKIP(m_found.syntax) ||
                       (m_skipDepth > 0 && (Keywords::KeywordSyntaxUtils::IsSKIP100(m_found.syntax) ||
                                            Keywords::KeywordSyntaxUtils::IsSKIP300(m_found.syntax)));
    if (opens)
        ++m_skipDepth;
    else if (kind == KeywordKind::EndSkip && m_skipDepth > 0)
        --m_skipDepth;
    m_isBehindEnd =
        m_isBehindEnd ||
        (m_skipDepth == 0 && (kind == KeywordKind::EndInc ||
                              (kind == KeywordKind::End && Environment::Instance().DeckTerminatedByENDKeyword())));
    if (!m_isBehindEnd && m_skipDepth == 0)
        m_unread.reset();
    else if (!m_unread)
        m_unread.emplace();
}

/// False where a scan would do otherwise now.
bool FileScan::TakeCached()
{
    const CacheEntry::CacheValue& value = m_cached->Value();
    if (value.size == 0 && !SkipRegion::IsSkipKeyword(*m_found.syntax)) return false;
    const SectionType sectionAhead = m_query.GetSection();
    SectionType section = SectionType::None;
    if (m_found.syntax->GetKind() == KeywordKind::Section && FindSection(value.name, section)) {
        // A section in which the file ends is never a duplicate.
        if (!m_cached->EndsFile() && NoteSection(section)) return false;
        m_query.SetSection(section);
    }
    if (value.size > 0) NoteActions(value.name);
    Keyword& added = m_file.AddScannedKeyword(*m_found.syntax, value.pos, value.size, value.name, &m_cached->Marks());
    added.SetFoundIn(sectionAhead);
    IncludeListed(added);
    return true;
}

/// What a scan learns in passing of other keywords, from the reader that the guard keeps open.
KeywordMarks FileScan::ReadMarks(long long position, long long size) const
{
    KeywordMarks marks;
    ILineReader* const reader = m_file.m_openReader.get();
    marks.suppressed = LineReaderUtil::NextLineIsSuppressed(reader, position);
    marks.tagKnown = reader != nullptr;
    LineReaderUtil::AdvanceToNonTagLine(reader, position, size, &marks.tagged, true);
    return marks;
}

void FileScan::NoteActions(const std::string& name)
{
    Environment& environment = Environment::Instance();
    if (name == "ACTIONX" || name == "ACTIONW" || name == "ACTION") {
        ++m_actionDepth;
        environment.hasActionKeyword(true);
    } else if (name == "ENDACTIO") {
        if (m_actionDepth > 0) --m_actionDepth;
    } else if (m_actionDepth > 0 && !name.empty()) {
        environment.useNewActionX(name);
    }
}

void FileScan::SettlePending(long long end)
{
    if (m_pending.syntax == nullptr) return;
    if (m_pending.listed != nullptr) {
        m_pending.listed->SetSize(end - m_pending.position);
        return;
    }
    if (IsDuplicateSection(m_pending.name)) {
        const Log::Place place(Path(), m_pending.marks.line);
        Log::SendLogMessage(m_pending.name + " should only appear once, ignoring duplicate seen in " + Path(),
                            Log::Warning);
        return;
    }
    AddPending(end - m_pending.position);
}

/// Whether the section is in the deck already; from here on it is.
bool FileScan::IsDuplicateSection(const std::string& name)
{
    SectionType section = SectionType::None;
    if (m_pending.syntax->GetKind() != KeywordKind::Section || !FindSection(name, section)) return false;
    const std::shared_ptr<const KeywordFile> bringer = NoteSection(section);
    if (!bringer) return false;
    m_file.m_hasDroppedSections = true;
    if (bringer.get() != &m_file) m_dependsOnOthers = true;
    m_query.DroppedAhead(m_file.m_contents->Keywords().size(), section);
    return true;
}

/// Enters the section in the deck's book; where it stands there already, the result is the file that has brought it.
std::shared_ptr<const KeywordFile> FileScan::NoteSection(SectionType section)
{
    std::shared_ptr<const KeywordFile> bringer = m_file.BringerOf(section);
    if (!bringer) m_file.DataFile().m_sectionsSeen[static_cast<std::size_t>(section)] = m_file.weak_from_this();
    return bringer;
}

void FileScan::AddPending(long long size)
{
    m_pending.listed =
        &m_file.AddScannedKeyword(*m_pending.syntax, m_pending.position, size, m_pending.name, &m_pending.marks);
    m_pending.listed->SetFoundIn(m_pending.section);
    IncludeListed(*m_pending.listed);
}

void FileScan::IncludeListed(const Keyword& keyword)
{
    const KeywordFile* included = KeywordFile::IncludedFileOf(&keyword);
    if (included == nullptr) return;

    // Known here, and a long way to ask for from there. A file that the deck includes twice asks all its parents.
    const auto isOfDeck = [this](const KeywordFile* parent) { return &parent->DataFile() == &m_file.DataFile(); };
    const auto isOnlyOfDeck = [&] {
        const std::vector<KeywordFile*> parents = included->IncludingFiles();
        return std::count_if(parents.begin(), parents.end(), isOfDeck) == 1;
    };
    if (included->m_links.size() == 1 || (!included->IsLoaded() && isOnlyOfDeck()))
        included->PrimeStartSection(m_query.GetSection());
    m_query.IncludeFound(*included);
}

void FileScan::AddSkipKeywords(const std::vector<SkippedKeyword>& skipped)
{
    if (skipped.empty() || Environment::Instance().OrdaleLegacySkipHandlingEnabled()) return;
    if (!m_guard) m_guard = std::make_unique<OpenReaderGuard>(m_file);
    for (const SkippedKeyword& keyword : skipped) {
        if (const Keywords::IKeywordSyntax* syntax = LineReaderUtil::FindSyntax(keyword.name, m_query)) {
            const KeywordMarks marks = ReadMarks(keyword.position, 0);
            m_file.AddScannedKeyword(*syntax, keyword.position, 0, keyword.name, &marks)
                .SetFoundIn(m_query.GetSection());
        }
    }
}

void FileScan::Finish()
{
    if (m_pending.syntax != nullptr) {
        const long long end = m_reader->Tell();
        if (m_pending.listed != nullptr) {
            m_pending.listed->SetSize(end - m_pending.position);
        } else {
            AddPending(end - m_pending.position);
        }
    }
    if (m_cached) {
        m_reader = m_file.m_fileReader->OpenLineReader(!Environment::Instance().GetAllowIncompleteDeck());
    } else if (m_reader->Eof()) {
        if (!m_dependsOnOthers) CachedKeywords::Store(m_file, m_status, m_query.Answers());
    } else {
        const Log::Place place(Path(), -1);
        Log::SendLogMessage("Loading keyword file: Fails to read file:" + Path(), Log::Error);
        m_file.m_loadFailed = true;
    }
    m_file.FinishLoad(m_reader.get());
}

} // namespace Tarn::Fjel::Core::DeckManager
