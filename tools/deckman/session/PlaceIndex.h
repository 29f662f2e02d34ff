#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <deckmanager/KeywordIterator.h>
#include <tarn/keywords/SectionType.h>

namespace Tarn::Fjel::Core::DeckManager {
class IKeyword;
class IKeywordFile;
} // namespace Tarn::Fjel::Core::DeckManager

namespace Deckman {

class DeckSession;
class DeckWalk;

/// The keywords of a deck as `ls` lists them, noted as a walk comes to them, so that many places can be found in one.
///
/// Once it is complete it stands still: it goes on telling of the deck as it was, whatever is edited. What is inserted
/// by then can be entered behind all others, and what is removed struck out.
class PlaceIndex
{
public:
    struct Entry
    {
        const Tarn::Fjel::Core::DeckManager::IKeyword* keyword; ///< of one that is gone not to be used
        Tarn::Fjel::Core::Keywords::SectionType section;
        int file; ///< its number in the session; -1 for an inserted keyword
        bool isGone = false;
    };

    /// With `all`, of what stands behind the deck's end too.
    PlaceIndex(DeckSession& session, bool all);
    ~PlaceIndex();
    PlaceIndex(const PlaceIndex&) = delete;
    PlaceIndex& operator=(const PlaceIndex&) = delete;

    /// The entry of that index, from 1; walks on as far as that takes. Null behind the last.
    const Entry* At(int index);
    /// Walks to the end, and makes names and lines fast to find.
    void Complete();
    bool IsComplete() const { return m_isComplete; }
    /// How many keywords `ls` lists. Completes.
    int Count();

    /// The name of an entry, also of one that is gone.
    const std::string& NameAt(int index) const;
    /// Tells `take` the index and the entry of each keyword of that name (in capitals), in order, inserted ones last,
    /// until it gives false.
    template <class Take>
    void ForEachNamed(const std::string& name, const Take& take);

    /// The index of the `number`-th of that name, and how many there are of it; 0 for none. REQUIRES: complete.
    std::pair<int, int> Nth(const std::string& name, int number) const;

    /// The index of the keyword of a file whose extent holds the line; 0 for none. A file that is included more than
    /// once counts where it comes first. Completes.
    int OnLine(int file, int line);
    /// The line of the first keyword of a file, and whether that of the last is at or ahead of `line`.
    int FirstLineOf(int file) const { return m_lines[static_cast<std::size_t>(file)].front().line; }
    bool IsBehindLast(int file, int line) const { return m_lines[static_cast<std::size_t>(file)].back().line <= line; }
    /// Likewise of a file; 0 for one without keywords. Completes.
    int FirstLineIn(const Tarn::Fjel::Core::DeckManager::IKeywordFile& file);
    /// The keyword that stands ahead in the same file, as the deck was; null for the first. Completes.
    const Tarn::Fjel::Core::DeckManager::IKeyword* AheadOnDisk(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword);

    /// What `Where` has made of a name of a file. Not to be kept.
    std::unordered_map<std::string, int>& FilesByTyped() { return m_filesByTyped; }

    /// The numbers of the files in which there are keywords, in deck order. Completes.
    const std::vector<int>& Files();
    const Tarn::Fjel::Core::DeckManager::IKeywordFile& FileAt(int file) const
    {
        return *m_fileOf[static_cast<std::size_t>(file)];
    }

    /// The position of an entry of the deck as it stands.
    Tarn::Fjel::Core::DeckManager::KeywordIterator PositionOf(int index);

    /// REQUIRES: complete.
    void AddInserted(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword,
                     Tarn::Fjel::Core::Keywords::SectionType section);
    void MarkGone(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword);
    /// The index of a keyword; 0 when it has none. REQUIRES: complete.
    int IndexOf(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword);

private:
    struct Line
    {
        int line;
        int index;
    };

    bool Step();
    void NoteName(int index);

    DeckSession& m_session;
    bool m_all;
    bool m_isComplete = false;
    int m_count = 0; ///< without inserted ones
    std::unique_ptr<DeckWalk> m_walk;
    std::vector<Entry> m_entries;
    std::unordered_map<std::string, std::vector<int>> m_byName;               ///< once complete
    std::vector<const std::string*> m_names;                                  ///< likewise, for each entry
    std::vector<std::vector<Line>> m_lines;                                   ///< likewise, by file
    std::vector<const Tarn::Fjel::Core::DeckManager::IKeywordFile*> m_fileOf; ///< by number
    std::vector<int> m_files;
    std::unordered_map<std::string, int> m_filesByTyped;
    std::unordered_map<const Tarn::Fjel::Core::DeckManager::IKeyword*, int> m_indices; ///< when first asked for
};

template <class Take>
void PlaceIndex::ForEachNamed(const std::string& name, const Take& take)
{
    if (m_isComplete) {
        const auto found = m_byName.find(name);
        if (found == m_byName.end()) return;
        for (const int index : found->second) {
            if (!take(index, m_entries[static_cast<std::size_t>(index - 1)])) return;
        }
        return;
    }
    for (int index = 1; const Entry* entry = At(index); ++index) {
        if (NameAt(index) == name && !take(index, *entry)) return;
    }
}

} // namespace Deckman
