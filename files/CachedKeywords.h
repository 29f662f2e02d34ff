#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cache/CacheEntry.h"
#include "keywords/Keyword.h"
#include <tarn/keywords/SectionType.h>

namespace Tarn::Fjel::Core::Service {
struct FileStatus;
}

namespace Tarn::Fjel::Core::DeckManager {

class ILineReader;
class KeywordFile;

/// What decides the sections of a scan besides the list that it makes. Of other files: the section in force at the top
/// of its file, and for each INCLUDE that has a file the section which that ends in. A letter for each; one that nobody
/// asked for is open. Of the file itself: the sections that dropped duplicates have begun.
class SectionAnswers
{
public:
    SectionAnswers() = default;
    explicit SectionAnswers(std::string code) : m_code(std::move(code)) {}

    void StartIs(Keywords::SectionType section) { m_code.front() = Letter(section); }
    void AddInclude() { m_code += s_open; }
    void LastIncludeIs(Keywords::SectionType section) { m_code.back() = Letter(section); }

    /// A section keyword was dropped, ahead of the keyword of that number in the list.
    void AddDropped(std::size_t number, Keywords::SectionType section)
    {
        m_dropped += ' ' + std::to_string(number) + Letter(section);
    }

    const std::string& Code() const { return m_code; }
    /// With the dropped ones, as it is stored.
    std::string WholeCode() const { return m_code + m_dropped; }
    /// What was learnt first and last doesn't contradict the ones recorded, which may go on further.
    bool AgreesWith(std::string_view recorded) const;
    /// The last of those recorded is open here.
    bool LacksLastOf(std::string_view recorded) const;

private:
    friend class CachedKeywords;
    static constexpr char s_open = '-';
    static constexpr char s_first = 'a';
    static char Letter(Keywords::SectionType section) { return static_cast<char>(s_first + static_cast<int>(section)); }

    std::string m_code = std::string(1, s_open);
    std::string m_dropped;
};

/// The keywords of a file as an entry of the cache has them, for a load that needs no scan.
class CachedKeywords
{
public:
    /// What is stored of a file and may still hold; null when there is nothing. `status` is that of the file before it
    /// is opened. Reads no text.
    static std::unique_ptr<CachedKeywords> Find(const KeywordFile& file, const Service::FileStatus& status);

    /// Stores the present list of a file, unless the file has changed since it had that status.
    static void Store(const KeywordFile& file, const Service::FileStatus& status, const SectionAnswers& sections);

    /// Whether the keywords of a file that has that status still stand where its list says.
    static bool StandAsListed(const KeywordFile& file, const Service::FileStatus& status);

    /// Whether each keyword's line begins with its name and each extent holds whole lines, so that none leads astray.
    /// Learns the keywords' marks in passing. `reader` null: the file can't be opened, and nothing stands in it.
    bool StandIn(ILineReader* reader);

    /// Goes to the next keyword, at first to the first one. False behind the last.
    bool Next() { return ++m_next <= m_entry.values.size(); }
    const CacheEntry::CacheValue& Value() const { return m_entry.values[m_next - 1]; }
    const KeywordMarks& Marks() const { return m_marks[m_next - 1]; }
    /// The section that a duplicate has begun which was dropped ahead of the keyword; `None`: there was none.
    Keywords::SectionType DroppedSection() const;
    bool HasDroppedSections() const { return !m_dropped.empty(); }
    /// A load that meets other circumstances than the scan did can tell.
    bool TellsCircumstances() const { return !m_entry.settings.empty(); }
    /// The keyword's extent ends where the file does.
    bool EndsFile() const { return Value().pos + Value().size >= m_entry.length; }

    /// So far the load meets the sections that the scan met; behind the last keyword, just these.
    bool Agrees(const SectionAnswers& sections, bool isLast) const;
    /// Behind the last keyword: the scan went on and asked for a section.
    bool AsksOnceMore(const SectionAnswers& sections) const { return sections.LacksLastOf(m_entry.sections); }

private:
    explicit CachedKeywords(CacheEntry&& entry) : m_entry(std::move(entry)) {}
    bool IsInOrder() const;
    bool ReadDropped();

    CacheEntry m_entry;                                     ///< its sections without the dropped ones
    std::map<std::size_t, Keywords::SectionType> m_dropped; ///< by the number of the keyword behind
    std::vector<KeywordMarks> m_marks;
    std::size_t m_next = 0;
};

} // namespace Tarn::Fjel::Core::DeckManager
