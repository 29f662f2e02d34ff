#include "session/PlaceIndex.h"

#include <algorithm>
#include <iterator>

#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>

#include "session/DeckSession.h"
#include "session/DeckWalk.h"

namespace Deckman {

PlaceIndex::PlaceIndex(DeckSession& session, bool all)
    : m_session(session), m_all(all), m_walk(std::make_unique<DeckWalk>(session, all))
{
}

PlaceIndex::~PlaceIndex() = default;

bool PlaceIndex::Step()
{
    if (m_isComplete || !m_walk->Next()) return false;
    m_entries.push_back({&m_walk->Keyword(), m_walk->Section(), m_walk->File()});
    m_count = m_walk->Index();
    return true;
}

const PlaceIndex::Entry* PlaceIndex::At(int index)
{
    while (index > static_cast<int>(m_entries.size())) {
        if (!Step()) return nullptr;
    }
    return &m_entries[static_cast<std::size_t>(index - 1)];
}

int PlaceIndex::Count()
{
    Complete();
    return m_count;
}

const std::string& PlaceIndex::NameAt(int index) const
{
    const auto place = static_cast<std::size_t>(index - 1);
    return m_isComplete ? *m_names[place] : m_entries[place].keyword->GetName();
}

void PlaceIndex::Complete()
{
    if (m_isComplete) return;
    while (Step()) {
    }
    m_isComplete = true;
    m_walk.reset();
    m_names.reserve(m_entries.size());
    for (int index = 1; index <= m_count; ++index) {
        NoteName(index);
        const Entry& entry = m_entries[static_cast<std::size_t>(index - 1)];
        const auto file = static_cast<std::size_t>(entry.file);
        if (file >= m_lines.size()) {
            m_lines.resize(file + 1);
            m_fileOf.resize(file + 1);
        }
        std::vector<Line>& lines = m_lines[file];
        if (lines.empty()) {
            m_files.push_back(entry.file);
            m_fileOf[file] = entry.keyword->GetFile();
        }
        // Those of a file that is included once more are there already.
        if (const int line = entry.keyword->GetLine(); lines.empty() || line > lines.back().line)
            lines.push_back({line, index});
    }
}

void PlaceIndex::NoteName(int index)
{
    const auto noted = m_byName.try_emplace(m_entries[static_cast<std::size_t>(index - 1)].keyword->GetName()).first;
    noted->second.push_back(index);
    m_names.push_back(&noted->first);
}

std::pair<int, int> PlaceIndex::Nth(const std::string& name, int number) const
{
    const auto found = m_byName.find(name);
    if (found == m_byName.end()) return {0, 0};
    const std::vector<int>& indices = found->second;
    const auto count = static_cast<int>(indices.size());
    return {number <= count ? indices[static_cast<std::size_t>(number - 1)] : 0, count};
}

int PlaceIndex::OnLine(int file, int line)
{
    Complete();
    if (static_cast<std::size_t>(file) >= m_lines.size()) return 0;
    const std::vector<Line>& lines = m_lines[static_cast<std::size_t>(file)];
    auto behind = std::upper_bound(lines.begin(), lines.end(), line,
                                   [](int value, const Line& entry) { return value < entry.line; });
    // A skipped keyword has no extent; what a skipped region holds belongs to the keyword ahead of it.
    while (behind != lines.begin()) {
        --behind;
        if (behind->line == line || m_entries[static_cast<std::size_t>(behind->index - 1)].keyword->GetSize() > 0)
            return behind->index;
    }
    return 0;
}

const std::vector<int>& PlaceIndex::Files()
{
    Complete();
    return m_files;
}

int PlaceIndex::FirstLineIn(const DeckManager::IKeywordFile& file)
{
    for (const int number : Files()) {
        if (&FileAt(number) == &file) return FirstLineOf(number);
    }
    return 0;
}

const DeckManager::IKeyword* PlaceIndex::AheadOnDisk(const DeckManager::IKeyword& keyword)
{
    Complete();
    const int index = IndexOf(keyword);
    if (index == 0) return nullptr;
    const int file = m_entries[static_cast<std::size_t>(index - 1)].file;
    if (file < 0) return nullptr;
    const std::vector<Line>& lines = m_lines[static_cast<std::size_t>(file)];
    const auto place = std::lower_bound(lines.begin(), lines.end(), keyword.GetLine(),
                                        [](const Line& entry, int value) { return entry.line < value; });
    if (place == lines.begin() || place == lines.end()) return nullptr;
    return m_entries[static_cast<std::size_t>(std::prev(place)->index - 1)].keyword;
}

DeckManager::KeywordIterator PlaceIndex::PositionOf(int index)
{
    if (m_walk && m_walk->Index() == index && *m_walk->Position() != nullptr) return m_walk->Position();
    DeckWalk walk(m_session, m_all);
    while (walk.Index() < index && walk.Next()) {
    }
    return walk.Position();
}

void PlaceIndex::AddInserted(const DeckManager::IKeyword& keyword, Tarn::Fjel::Core::Keywords::SectionType section)
{
    m_entries.push_back({&keyword, section, -1});
    const auto index = static_cast<int>(m_entries.size());
    NoteName(index);
    if (!m_indices.empty()) m_indices[&keyword] = index;
}

void PlaceIndex::MarkGone(const DeckManager::IKeyword& keyword)
{
    if (const int index = IndexOf(keyword); index > 0) m_entries[static_cast<std::size_t>(index - 1)].isGone = true;
}

int PlaceIndex::IndexOf(const DeckManager::IKeyword& keyword)
{
    if (m_indices.empty()) {
        m_indices.reserve(m_entries.size());
        for (std::size_t i = 0; i < m_entries.size(); ++i) {
            // What was there, and is no more, may have stood where this one does.
            if (!m_entries[i].isGone) m_indices.try_emplace(m_entries[i].keyword, static_cast<int>(i + 1));
        }
    }
    const auto found = m_indices.find(&keyword);
    return found != m_indices.end() ? found->second : 0;
}

} // namespace Deckman
