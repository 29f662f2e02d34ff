#include "files/FileScan.h"

#include "files/KeywordFile.h"
#include "files/KeywordINCLUDE.h"
#include "text/KeywordFileReader.h"
#include "text/LineStreamReader.h"
#include "text/SectionNames.h"
#include <deckmanager/Environment.h>
#include <deckmanager/IKeywordFileManager.h>
#include <deckmanager/ILineReader.h>
#include <deckmanager/LineReaderUtil.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>
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
        if (section != SectionType::None) m_section = section;
    }
    if (m_section == SectionType::None && !m_startAsked) {
        m_startAsked = true;
        m_section = m_file.GetStartSection();
    }
    return m_section;
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
            if (!m_hasCandidate) break;
            ListInclude();
        }
        if (KeywordFile* needed = FileToLoad()) return needed;
        m_hasCandidate = false;
        if (!ResolveCandidate()) continue;
        if (m_cached) {
            TakeCached();
        } else {
            TakeFound();
        }
    }
    Finish();
    return nullptr;
}

bool FileScan::Open()
{
    Environment& environment = Environment::Instance();
    // A data file begins the book of sections anew, any other file takes its own out of it.
    const bool isDataFile = m_file.IsDataFile();
    for (std::weak_ptr<const KeywordFile>& bringer : m_file.DataFile().m_sectionsSeen) {
        if (isDataFile || bringer.lock().get() == &m_file) bringer.reset();
    }

    CacheEntry entry;
    if (m_file.m_manager.GetCacheEntry(m_file, entry)) {
        m_cached = std::move(entry);
        m_guard = std::make_unique<OpenReaderGuard>(m_file);
        return true;
    }

    if (!OpenReader()) return false;
    char head[3];
    m_byteOrderMark = m_reader->ReadRaw(head, 3) == 3 && std::string_view(head, 3) == "\xEF\xBB\xBF";
    m_reader->Seek(0, 0);

    m_warnIndented = environment.LogWarningForPossibleIndentedKeywords();
    m_skip.enabled = environment.SKIPENDSKIPEnabled();
    m_skip.simulator = environment.SKIPENDSKIPSimulator();
    return true;
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
    if (m_nextCached == m_cached->values.size()) return false;
    const CacheEntry::CacheValue& value = m_cached->values[m_nextCached++];
    m_found.name = value.name;
    m_found.pos = value.pos;
    return true;
}

bool FileScan::ResolveCandidate()
{
    if (!m_cached) return LineReaderUtil::ResolveCandidate(*m_reader, m_query, m_file.m_fileReader.get(), m_found);
    m_found.syntax = LineReaderUtil::FindSyntax(m_found.name, m_query);
    return m_found.syntax != nullptr;
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
    if (m_found.syntax != nullptr && m_found.syntax->GetKind() == KeywordKind::Section) {
        SectionType section = SectionType::None;
        if (FindSection(m_found.name, section)) m_query.SetSection(section);
    }

    AddSkipKeywords(skipped);
    LineReaderUtil::ConsumeDataLines(m_found.syntax, *m_reader);
}

void FileScan::TakeCached()
{
    const CacheEntry::CacheValue& value = m_cached->values[m_nextCached - 1];
    SectionType section = SectionType::None;
    if (m_found.syntax->GetKind() == KeywordKind::Section && FindSection(value.name, section)) {
        m_query.SetSection(section);
        m_file.DataFile().m_sectionsSeen[static_cast<std::size_t>(section)] = m_file.weak_from_this();
    }
    const KeywordMarks marks = ReadMarks(value.pos, value.size);
    Keyword& added = m_file.AddScannedKeyword(*m_found.syntax, value.pos, value.size, value.name, &marks);
    m_query.IncludeFound(KeywordFile::IncludedFileOf(&added));
}

/// What a scan would have learnt in passing, from the reader that the guard keeps open: the keywords come in the order
/// of the file, so it goes through the file once.
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
    KeywordFile& top = m_file.DataFile();
    std::weak_ptr<const KeywordFile>& seen = top.m_sectionsSeen[static_cast<std::size_t>(section)];
    // A file that was reset, or has left the deck, has taken its sections along.
    const std::shared_ptr<const KeywordFile> bringer = seen.lock();
    if (bringer && bringer->IsLoaded() && &bringer->DataFile() == &top) return true;
    seen = m_file.weak_from_this();
    return false;
}

void FileScan::AddPending(long long size)
{
    m_pending.listed =
        &m_file.AddScannedKeyword(*m_pending.syntax, m_pending.position, size, m_pending.name, &m_pending.marks);
    const KeywordFile* included = KeywordFile::IncludedFileOf(m_pending.listed);
    if (included == nullptr) return;

    // Known here, and a long way to ask for from there. A file that is included twice asks all its parents.
    if (included->m_links.size() == 1) included->PrimeStartSection(m_query.GetSection());
    m_query.IncludeFound(included);
}

void FileScan::AddSkipKeywords(const std::vector<SkippedKeyword>& skipped)
{
    if (skipped.empty() || Environment::Instance().OrdaleLegacySkipHandlingEnabled()) return;
    if (!m_guard) m_guard = std::make_unique<OpenReaderGuard>(m_file);
    for (const SkippedKeyword& keyword : skipped) {
        if (const Keywords::IKeywordSyntax* syntax = LineReaderUtil::FindSyntax(keyword.name, m_query)) {
            const KeywordMarks marks = ReadMarks(keyword.position, 0);
            m_file.AddScannedKeyword(*syntax, keyword.position, 0, keyword.name, &marks);
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
        m_file.SaveToCache(m_status);
    } else {
        const Log::Place place(Path(), -1);
        Log::SendLogMessage("Loading keyword file: Fails to read file:" + Path(), Log::Error);
        m_file.m_loadFailed = true;
    }
    m_file.FinishLoad(m_reader.get());
}

} // namespace Tarn::Fjel::Core::DeckManager
