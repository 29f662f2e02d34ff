#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <deckmanager/KeywordVariables.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/SectionType.h>
#include <tarn/keywords/SimulatorType.h>

#include "session/Schedule.h"

namespace Deckman {

class DeckSession;

/// One keyword of a deck that is compared.
struct DiffEntry
{
    const Tarn::Fjel::Core::DeckManager::IKeyword* keyword = nullptr;
    int index = 0;              ///< as `ls` counts
    int number = 1;             ///< among those of its name
    std::uint64_t nameHash = 0; ///< of name and syntax
    std::uint64_t textHash = 0; ///< of its text as well; 0 while it was not asked for
    std::uint64_t contentHash = 0;
    std::uint64_t identityHash = 0;

    /// As a place that finds it.
    std::string Where() const;
};

/// The keywords of a section, or of one moment of the schedule.
struct DiffGroup
{
    Tarn::Fjel::Core::Keywords::SectionType section = Tarn::Fjel::Core::Keywords::SectionType::None;
    const Schedule::Moment* moment = nullptr; ///< null for a section, and for the schedule ahead of its first time
    std::string timeWhere;                    ///< the place that gives the moment
    std::vector<DiffEntry> entries;
};

/// A keyword's data, read for a comparison and owned by it.
struct DiffData
{
    std::unique_ptr<Tarn::Fjel::Core::Keywords::IKeywordData> tree; ///< null for a keyword without data
    Tarn::Fjel::Core::DeckManager::KeywordVariables variables;
};

/// One of the two decks: its keywords in groups, and what they hold, read whenever it is asked for and not kept.
/// Left out are suppressed and skipped keywords, which count as comments, the keywords that only join files, and the
/// time keywords, which are the moments of the groups.
class DiffDeck
{
public:
    explicit DiffDeck(DeckSession& session);

    std::vector<DiffGroup>& Groups() { return m_groups; }

    DiffData Read(const DiffEntry& entry);
    void FillTextHash(DiffEntry& entry) const;
    /// The hashes of content and identity.
    void FillContentHash(DiffEntry& entry);

private:
    DeckSession& m_session;
    Schedule m_schedule;
    std::vector<DiffGroup> m_groups;
};

} // namespace Deckman
