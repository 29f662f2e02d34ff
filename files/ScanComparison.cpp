#include "files/ScanComparison.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "files/KeywordFile.h"
#include "keywords/Keyword.h"
#include "text/KeywordFileReader.h"
#include "text/ScannedKeyword.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/Environment.h>
#include <deckmanager/ILineReader.h>
#include <deckmanager/ISectionContextQuery.h>
#include <deckmanager/LineReaderUtil.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/service/FileStream.h>
#include <tarn/service/Log.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::IKeywordSyntax;
using Keywords::KeywordKind;
using Keywords::SectionType;

namespace {

class KnownSection : public ISectionContextQuery
{
public:
    explicit KnownSection(SectionType section) : m_section(section) {}
    SectionType GetSection() const override { return m_section; }

private:
    SectionType m_section;
};

class ComparedFile
{
public:
    explicit ComparedFile(const KeywordFile& file)
        : m_file(file), m_takesIndented(Environment::Instance().LogWarningForPossibleIndentedKeywords())
    {
    }

    bool Holds(SectionType start);
    void CountAsFound(SectionType start);
    bool CannotBeOpened() const { return m_cannotBeOpened; }

private:
    bool HoldsAheadOfFirst(const Keyword* first, SectionType section);
    bool Holds(const Keyword& keyword, SectionType ahead, SectionType behind);
    const IKeywordSyntax* FindBetween(long long begin, long long end, SectionType section, long long* pos = nullptr);
    bool Open();
    static SectionType SectionBehind(const IKeyword& keyword, SectionType ahead);

    const KeywordFile& m_file;
    const bool m_takesIndented;
    std::unique_ptr<ILineReader> m_reader;
    bool m_cannotBeOpened = false;
};

bool ComparedFile::Open()
{
    if (!m_reader) m_reader = m_file.FileReader()->OpenLineReader(false);
    m_cannotBeOpened = !m_reader && !m_file.DiskList().empty();
    return m_reader != nullptr;
}

SectionType ComparedFile::SectionBehind(const IKeyword& keyword, SectionType ahead)
{
    const SectionType begun = KeywordFile::SectionBegunBy(keyword);
    return begun != SectionType::None ? begun : ahead;
}

/// The first keyword from a place on; null when none stands ahead of `end`. Leaves the reader behind its line.
const IKeywordSyntax* ComparedFile::FindBetween(long long begin, long long end, SectionType section, long long* pos)
{
    m_reader->Seek(begin, 0);
    ScannedKeyword found;
    while (LineReaderUtil::FindNextCandidate(*m_reader, m_takesIndented, nullptr, found) && found.pos < end) {
        const bool isKeyword =
            LineReaderUtil::ResolveCandidate(*m_reader, KnownSection(section), nullptr, found) && !found.indented;
        if (!isKeyword) continue;
        if (pos) *pos = found.pos;
        return found.syntax;
    }
    return nullptr;
}

bool ComparedFile::HoldsAheadOfFirst(const Keyword* first, SectionType section)
{
    if (first != nullptr && first->FoundIn() == section) return true;
    if (!Open()) return true;
    const long long end = first != nullptr ? first->Position() : m_file.FileSize();
    return FindBetween(0, end, section) == nullptr;
}

bool ComparedFile::Holds(const Keyword& keyword, SectionType ahead, SectionType behind)
{
    const int kind = keyword.GetSyntax()->GetKind();
    // Where an included file ended when the words behind the INCLUDE were looked at isn't known.
    if (keyword.FoundIn() == ahead && kind != KeywordKind::Include) return true;
    // What a region hides doesn't show in the list.
    if (keyword.IsSkipped()) return false;
    if (!keyword.HasValidExtent() || !Open()) return true;
    const long long begin = keyword.Position();
    const long long end = begin + keyword.Size();
    long long place = -1;
    if (FindBetween(begin, end, ahead, &place) != keyword.GetSyntax() || place != begin) return false;
    LineReaderUtil::ConsumeDataLines(keyword.GetSyntax(), *m_reader);
    return m_reader->Tell() <= end && FindBetween(m_reader->Tell(), end, behind) == nullptr;
}

bool ComparedFile::Holds(SectionType start)
{
    const KeywordFileContents::List& keywords = m_file.DiskList();
    const Keyword* first = keywords.empty() ? nullptr : &KeywordFileContents::AsKeyword(keywords.front());
    if (!HoldsAheadOfFirst(first, start)) return false;
    return std::all_of(keywords.begin(), keywords.end(), [&](const std::shared_ptr<IKeyword>& keyword) {
        const SectionType ahead = std::exchange(start, SectionBehind(*keyword, start));
        return Holds(KeywordFileContents::AsKeyword(keyword), ahead, start);
    });
}

void ComparedFile::CountAsFound(SectionType start)
{
    for (const std::shared_ptr<IKeyword>& keyword : m_file.DiskList()) {
        KeywordFileContents::AsKeyword(keyword).SetFoundIn(start);
        start = SectionBehind(*keyword, start);
    }
}

} // namespace

ScanComparison CompareWithScan(const KeywordFile& file, SectionType start)
{
    const Service::Log::Probe probe;
    const Service::ReadWatch reading;
    ComparedFile compared(file);
    try {
        const bool holds = compared.Holds(start);
        if (compared.CannotBeOpened() || reading.SawFailure()) return ScanComparison::Unreadable;
        if (!holds) return ScanComparison::Other;
    } catch (const DeckManagerException&) {
        // A scan would not get past it either.
        return ScanComparison::Unreadable;
    }
    compared.CountAsFound(start);
    return ScanComparison::Same;
}

} // namespace Tarn::Fjel::Core::DeckManager
