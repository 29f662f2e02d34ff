#include "deck/FilePaths.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "files/IteratorAccess.h"
#include "files/KeywordFile.h"

namespace Tarn::Fjel::Core::DeckManager {

namespace {

bool IsAheadOfLogicalEnd(const KeywordFileIterator& place)
{
    const KeywordFileIterator end = IteratorAccess::File(place)->WalkEnd();
    return place < end || (place == end && end == IteratorAccess::File(place)->End());
}

} // namespace

FilePaths::FilePaths(KeywordFile& root) : m_root(&root)
{
    Visit(root, false);
    Visit(root, true);
}

/// Depth first in deck order, with a stack of its own: a deck may be a chain of a thousand files.
void FilePaths::Visit(KeywordFile& root, bool walkedOnly)
{
    struct Level
    {
        const std::vector<KeywordFileIterator>* includes;
        std::size_t next;
    };
    std::vector<Level> levels;
    const auto enter = [&](KeywordFile& file, const KeywordFileIterator& include) {
        const auto [entry, isNew] = m_entries.try_emplace(&file);
        if (walkedOnly) {
            if (std::exchange(entry->second.isWalked, true)) return;
            entry->second.walked = include;
        } else {
            if (!isNew) return;
            entry->second.first = include;
            m_files.push_back(&file);
        }
        levels.push_back({&file.GetINCLUDEKeywords(), 0});
    };

    enter(root, KeywordFileIterator());
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.next == level.includes->size()) {
            levels.pop_back();
            continue;
        }
        const KeywordFileIterator& include = (*level.includes)[level.next++];
        KeywordFile* file = KeywordFile::IncludedFileOf(*include);
        if (file != nullptr && (!walkedOnly || IsAheadOfLogicalEnd(include))) enter(*file, include);
    }
}

std::vector<KeywordFile*> FilePaths::ReadFromBelow(KeywordFile& root, bool withFormer)
{
    const auto below = [withFormer](const KeywordFile& file) {
        std::vector<KeywordFile*> files = file.IncludedFiles();
        if (withFormer) {
            for (const std::shared_ptr<KeywordFile>& former : file.FormerFiles())
                files.push_back(former.get());
        }
        return files;
    };
    struct Level
    {
        KeywordFile* file;
        std::vector<KeywordFile*> included;
        std::size_t next;
    };
    std::vector<KeywordFile*> files;
    std::unordered_set<KeywordFile*> seen{&root};
    std::vector<Level> levels;
    levels.push_back({&root, below(root), 0});
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.next == level.included.size()) {
            files.push_back(level.file);
            levels.pop_back();
            continue;
        }
        KeywordFile* file = level.included[level.next++];
        if (seen.insert(file).second) levels.push_back({file, below(*file), 0});
    }
    return files;
}

bool FilePaths::IsWalked(const KeywordFileIterator& place) const
{
    const auto entry = m_entries.find(IteratorAccess::File(place));
    return entry != m_entries.end() && entry->second.isWalked && IsAheadOfLogicalEnd(place);
}

IteratorPath::Places FilePaths::PathTo(const KeywordFileIterator& place) const
{
    IteratorPath::Places places;
    for (KeywordFileIterator step = place;;) {
        KeywordFile* file = IteratorAccess::File(step);
        const auto entry = m_entries.find(file);
        if (entry == m_entries.end()) return {};
        places.push_back(step);
        if (file == m_root) break;
        step = entry->second.isWalked ? entry->second.walked : entry->second.first;
    }
    std::reverse(places.begin(), places.end());
    return places;
}

} // namespace Tarn::Fjel::Core::DeckManager
