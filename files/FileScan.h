#pragma once

#include <memory>
#include <optional>
#include <string>

#include "files/CachedKeywords.h"
#include "files/SkipRegion.h"
#include "keywords/Keyword.h"
#include "text/ScannedKeyword.h"
#include <deckmanager/ISectionContextQuery.h>
#include <tarn/keywords/SectionType.h>
#include <tarn/service/FileStatus.h>
#include <tarn/service/Log.h>

namespace Tarn::Fjel::Core::DeckManager {

class ILineReader;
class KeywordFile;
class OpenReaderGuard;

/// Tells the scanner of a file which section is in force behind the keywords found so far.
class SectionContextQuery : public ISectionContextQuery
{
public:
    explicit SectionContextQuery(const KeywordFile& file) : m_file(file) {}

    Keywords::SectionType GetSection() const override;

    void SetSection(Keywords::SectionType section)
    {
        m_section = section;
        m_included = nullptr;
    }
    /// The section of a file that the scan has met since the section was last asked counts from here on.
    void IncludeFound(const KeywordFile& file)
    {
        m_included = &file;
        m_answers.AddInclude();
    }
    /// The included file that the answer waits for; null when nothing is open.
    const KeywordFile* Included() const { return m_included; }
    /// What was learnt of other files so far.
    const SectionAnswers& Answers() const { return m_answers; }
    /// A duplicate of a section keyword was dropped ahead of the keyword of that number.
    void DroppedAhead(std::size_t number, Keywords::SectionType section) { m_answers.AddDropped(number, section); }
    /// Begins anew at the top of the file.
    void Restart();

private:
    const KeywordFile& m_file;
    mutable Keywords::SectionType m_section = Keywords::SectionType::None;
    mutable const KeywordFile* m_included = nullptr;
    mutable bool m_startAsked = false;
    mutable SectionAnswers m_answers;
};

/// The load of one file: finds its keywords, in the text or in a cache entry, and puts them into the list.
///
/// An object so that it can stop where it needs the section that an included file ends in, and go on once that file has
/// been loaded.
class FileScan
{
public:
    /// The file has an empty list. `status` is that of a regular file, from before the scan.
    FileScan(KeywordFile& file, const Service::FileStatus& status);
    ~FileScan();

    KeywordFile& File() const { return m_file; }

    /// Goes on to the end of the file, or to where another file must be loaded first, which it returns; null: done.
    /// Throws what the reader and the syntax rules throw.
    KeywordFile* Run();

    /// Gives the file back while the scan waits for another one; the next `Run` opens it again. From there on the scan
    /// knows no line numbers.
    void PutAside();

private:
    /// A keyword whose end isn't known yet.
    struct Pending
    {
        const Keywords::IKeywordSyntax* syntax = nullptr; ///< null: there is none
        long long position = -1;
        std::string name;
        Keywords::SectionType section = Keywords::SectionType::None; ///< ahead of it
        KeywordMarks marks;
        Keyword* listed = nullptr; ///< an INCLUDE stands in the list before its end is known
    };

    bool Open();
    bool OpenText();
    bool OpenReader();
    bool ScanAfterAll();
    bool Resume();
    bool NextCandidate();
    bool ResolveCandidate();
    static int LineOfFound(const void* scan);
    void ListInclude();
    void TakeFound();
    bool TakeCached();
    bool CachedSectionsHold(bool ask) const;
    KeywordMarks ReadMarks(long long position, long long size) const;
    void NoteUnread();
    void NoteActions(const std::string& name);
    void SettlePending(long long end);
    void AddPending(long long size);
    void AddSkipKeywords(const std::vector<SkippedKeyword>& skipped);
    void IncludeListed(const Keyword& keyword);
    bool IsDuplicateSection(const std::string& name);
    std::shared_ptr<const KeywordFile> NoteSection(Keywords::SectionType section);
    KeywordFile* FileToLoad() const;
    void Finish();
    const std::string& Path() const;

    KeywordFile& m_file;
    bool m_started = false;
    bool m_hasCandidate = false;
    bool m_putAside = false;
    long long m_resumeAt = 0;
    std::unique_ptr<ILineReader> m_reader;
    std::unique_ptr<OpenReaderGuard> m_guard;
    std::unique_ptr<CachedKeywords> m_cached; ///< what stands for the text
    Service::FileStatus m_status;             ///< of the file before it was read
    bool m_dependsOnOthers = false;           ///< a section was dropped because another file brought it
    bool m_byteOrderMark = false;
    bool m_warnIndented = false;
    SectionContextQuery m_query;
    SkipState m_skip;
    int m_skipDepth = 0; ///< SKIP regions around
    bool m_isBehindEnd = false;
    std::optional<Service::Log::Aside> m_unread; ///< while no run would read the text
    short m_actionDepth = 0;
    ScannedKeyword m_found;
    Pending m_pending;
};

} // namespace Tarn::Fjel::Core::DeckManager
