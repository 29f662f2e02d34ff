#include "files/CachedKeywords.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include <fmt/format.h>

#include "files/KeywordFile.h"
#include "text/KeywordFileReader.h"
#include "text/KeywordLine.h"
#include "text/LineStreamReader.h"
#include "text/ScannedKeyword.h"
#include "text/SectionNames.h"
#include <deckmanager/Environment.h>
#include <deckmanager/IKeywordFileManager.h>
#include <deckmanager/LibraryProperties.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>
#include <tarn/service/BinaryForm.h>
#include <tarn/service/FileStatus.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

/// A number that stands for what the table knows: the names, and which sections take them.
std::uint64_t HashOf(const Keywords::IKeywordSyntaxTable& table)
{
    std::string text;
    for (const Keywords::IKeywordSyntax* syntax : table.GetSyntaxes()) {
        for (const std::string& name : syntax->GetNames()) {
            text += name;
            text += ' ';
        }
        text += static_cast<char>('0' + syntax->GetKind());
        for (int section = 0; section < SectionCount; ++section) {
            const auto type = static_cast<Keywords::SectionType>(section);
            text += syntax->IsValidForSection(type, Keywords::SimulatorType::Any) ? 'y' : 'n';
        }
        text += '\n';
    }
    return Service::BinaryForm::Checksum(text);
}

std::string SyntaxMark()
{
    static std::uint64_t generation = 0;
    static std::string mark;
    if (generation != Environment::SyntaxTableGeneration()) {
        const char* key = nullptr;
        const char* version = nullptr;
        for (int i = 0; i < getNumLibProperties(); ++i) {
            getLibProperty(i, key, version);
            if (std::string_view(key) == "ProductVersion") break;
        }
        mark = fmt::format("{} {:016x}", version, HashOf(*Environment::Instance().GetSyntaxTable()));
        generation = Environment::SyntaxTableGeneration();
    }
    return mark;
}

/// All that shapes the list of a file besides its text and the other files.
std::string PresentSettings()
{
    const Environment& environment = Environment::Instance();
    std::string text = SyntaxMark();
    text += environment.KeywordSuppressionEnabled() ? " suppression" : "";
    text += environment.LogWarningForPossibleIndentedKeywords() ? " indented" : "";
    text += environment.PATHSSupport() ? " paths" : "";
    if (environment.SKIPENDSKIPEnabled()) {
        text += fmt::format(" skip{}", static_cast<int>(environment.SKIPENDSKIPSimulator()));
        text += environment.OrdaleLegacySkipHandlingEnabled() ? " legacy" : "";
    }
    return text;
}

bool IsSameText(const Service::FileStatus& left, const Service::FileStatus& right)
{
    return left.IsSameFileAs(right) && left.size == right.size && left.modifiedNanoseconds == right.modifiedNanoseconds;
}

CacheEntry EntryOf(const KeywordFile& file, const Service::FileStatus& status)
{
    CacheEntry entry;
    entry.stamp = status.TimeLastModified();
    entry.length = status.size;
    entry.values.reserve(file.DiskList().size());
    for (const std::shared_ptr<IKeyword>& keyword : file.DiskList()) {
        CacheEntry::CacheValue& value = entry.values.emplace_back();
        value.name = keyword->GetName();
        value.pos = KeywordFileContents::AsKeyword(keyword).Position();
        value.size = KeywordFileContents::AsKeyword(keyword).Size();
    }
    return entry;
}

/// Its text isn't read from a copy that is about to take its place.
bool ReadsItself(const KeywordFile& file)
{
    return file.FileReader()->GetPath() == file.GetFileName().GetFullName();
}

} // namespace

bool SectionAnswers::AgreesWith(std::string_view recorded) const
{
    if (m_code.size() > recorded.size()) return false;
    const auto agrees = [&](std::size_t i) {
        return m_code[i] == s_open || recorded[i] == s_open || m_code[i] == recorded[i];
    };
    return agrees(0) && agrees(m_code.size() - 1);
}

bool SectionAnswers::LacksLastOf(std::string_view recorded) const
{
    return m_code.size() == recorded.size() && m_code.back() == s_open && recorded.back() != s_open;
}

std::unique_ptr<CachedKeywords> CachedKeywords::Find(const KeywordFile& file, const Service::FileStatus& status)
{
    CacheEntry entry;
    if (!ReadsItself(file)) return nullptr;
    if (!file.Manager().GetCacheEntry(file, entry)) return nullptr;
    if (entry.length != status.size) return nullptr;
    if (!entry.settings.empty() && entry.settings != PresentSettings()) return nullptr;
    std::unique_ptr<CachedKeywords> cached(new CachedKeywords(std::move(entry)));
    return cached->IsInOrder() && cached->ReadDropped() ? std::move(cached) : nullptr;
}

void CachedKeywords::Store(const KeywordFile& file, const Service::FileStatus& status, const SectionAnswers& sections)
{
    if (!file.Manager().HasProjectDir() || !ReadsItself(file)) return;
    // The cache takes the time and the size of now: they must be those of the text that was read.
    if (!IsSameText(status, Service::FileStatus::Of(file.FileReader()->GetPath()))) return;
    CacheEntry entry = EntryOf(file, status);
    entry.settings = PresentSettings();
    entry.sections = sections.WholeCode();
    file.Manager().SetCacheEntry(file, entry);
}

bool CachedKeywords::StandAsListed(const KeywordFile& file, const Service::FileStatus& status)
{
    CachedKeywords list(EntryOf(file, status));
    return list.StandIn(file.FileReader()->OpenLineReader(false).get());
}

/// Extents follow each other and stay in the file.
bool CachedKeywords::IsInOrder() const
{
    long long end = 0;
    for (const CacheEntry::CacheValue& value : m_entry.values) {
        if (value.pos < end || value.size < 0 || value.size > m_entry.length - value.pos) return false;
        end = value.pos + value.size;
    }
    return true;
}

/// Cuts the dropped sections off the others. False where they can't be read.
bool CachedKeywords::ReadDropped()
{
    const std::size_t end = std::min(m_entry.sections.find(' '), m_entry.sections.size());
    const char* next = m_entry.sections.data() + end;
    const char* const last = m_entry.sections.data() + m_entry.sections.size();
    while (next != last) {
        std::size_t number = 0;
        const auto [stop, error] = std::from_chars(next + 1, last, number);
        if (error != std::errc() || stop == last) return false;
        const int section = *stop - SectionAnswers::s_first;
        if (section < 0 || section >= SectionCount) return false;
        m_dropped[number] = static_cast<Keywords::SectionType>(section);
        next = stop + 1;
    }
    m_entry.sections.resize(end);
    return true;
}

Keywords::SectionType CachedKeywords::DroppedSection() const
{
    const auto found = m_dropped.find(m_next - 1);
    return found == m_dropped.end() ? Keywords::SectionType::None : found->second;
}

bool CachedKeywords::Agrees(const SectionAnswers& sections, bool isLast) const
{
    if (m_entry.settings.empty()) return true;
    if (isLast && sections.Code().size() != m_entry.sections.size()) return false;
    return sections.AgreesWith(m_entry.sections);
}

bool CachedKeywords::StandIn(ILineReader* reader)
{
    LineStreamReader* const lines = reader != nullptr ? reader->Lines() : nullptr;
    if (lines == nullptr) return false;
    m_marks.reserve(m_entry.values.size());
    ScannedKeyword found;
    long long end = 0;
    for (const CacheEntry::CacheValue& value : m_entry.values) {
        // Extents hold whole lines; the next keyword's line is looked at anyway.
        if (end != value.pos && !MoveToLine(*lines, end)) return false;
        end = value.pos + value.size;
        if (!ReadKeywordLine(*lines, value.pos, value.name, found)) return false;
        KeywordMarks& marks = m_marks.emplace_back();
        marks.suppressed = found.suppressed;
        // A keyword of a skipped region has no text that could bear a tag.
        marks.tagKnown = value.size == 0 || found.tagKnown;
        marks.tagged = value.size != 0 && found.tagged;
    }
    return end == m_entry.length || MoveToLine(*lines, end);
}

} // namespace Tarn::Fjel::Core::DeckManager
