#include "files/ScanComparison.h"

#include <memory>

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

SectionType SectionBehind(const IKeyword& keyword, SectionType ahead)
{
    const SectionType begun = KeywordFile::SectionBegunBy(keyword);
    return begun != SectionType::None ? begun : ahead;
}

class KnownSection : public ISectionContextQuery
{
public:
    /// The section ahead of a keyword, or the one behind `above`. An included file is read for that when some word
    /// asks.
    explicit KnownSection(SectionType ahead, const IKeyword* above = nullptr) : m_ahead(ahead), m_above(above) {}
    SectionType GetSection() const override { return m_above ? SectionBehind(*m_above, m_ahead) : m_ahead; }

private:
    SectionType m_ahead;
    const IKeyword* m_above;
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
    bool Holds(const Keyword& keyword, SectionType ahead);
    const IKeywordSyntax* FindBetween(long long begin, long long end, const KnownSection& section,
                                      long long* pos = nullptr);
    bool Open();
    template <class Step>
    bool ForEach(SectionType start, const Step& step) const;

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

/// Goes through the keywords, each with the section ahead of it, as long as the step is true. As in a scan, an included
/// file is read only where something follows its INCLUDE.
template <class Step>
bool ComparedFile::ForEach(SectionType section, const Step& step) const
{
    Keyword* above = nullptr;
    for (const std::shared_ptr<IKeyword>& listed : m_file.DiskList()) {
        if (above != nullptr) section = SectionBehind(*above, section);
        above = &KeywordFileContents::AsKeyword(listed);
        if (!step(*above, section)) return false;
    }
    return true;
}

/// The first keyword from a place on; null when none stands ahead of `end`. Leaves the reader behind its line.
const IKeywordSyntax* ComparedFile::FindBetween(long long begin, long long end, const KnownSection& section,
                                                long long* pos)
{
    m_reader->Seek(begin, 0);
    ScannedKeyword found;
    while (LineReaderUtil::FindNextCandidate(*m_reader, m_takesIndented, nullptr, found) && found.pos < end) {
        const bool isKeyword = LineReaderUtil::ResolveCandidate(*m_reader, section, nullptr, found) && !found.indented;
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
    return FindBetween(0, end, KnownSection(section)) == nullptr;
}

bool ComparedFile::Holds(const Keyword& keyword, SectionType ahead)
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
    if (FindBetween(begin, end, KnownSection(ahead), &place) != keyword.GetSyntax() || place != begin) return false;
    LineReaderUtil::ConsumeDataLines(keyword.GetSyntax(), *m_reader);
    return m_reader->Tell() <= end && FindBetween(m_reader->Tell(), end, KnownSection(ahead, &keyword)) == nullptr;
}

bool ComparedFile::Holds(SectionType start)
{
    const KeywordFileContents::List& keywords = m_file.DiskList();
    const Keyword* first = keywords.empty() ? nullptr : &KeywordFileContents::AsKeyword(keywords.front());
    if (!HoldsAheadOfFirst(first, start)) return false;
    return ForEach(start, [this](Keyword& keyword, SectionType ahead) { return Holds(keyword, ahead); });
}

void ComparedFile::CountAsFound(SectionType start)
{
    ForEach(start, [](Keyword& keyword, SectionType ahead) {
        keyword.SetFoundIn(ahead);
        return true;
    });
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
