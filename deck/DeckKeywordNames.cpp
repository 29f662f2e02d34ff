// Where the keywords of a name stand: what expressions ask for each list whose size they tell.

#include "deck/DeckKeywords.h"
#include "deck/KeywordNames.h"
#include "files/LinkCounter.h"
#include <deckmanager/Environment.h>
#include <deckmanager/IKeyword.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::SectionType;

const IKeyword* DeckKeywords::FirstOfName(SectionType section, std::string_view name) const
{
    DropWhatMissedMoves();
    const bool endedByEND = Environment::Instance().DeckTerminatedByENDKeyword();
    if (!m_names || m_names->links != LinkCounter::Now() || m_names->endedByEND != endedByEND) {
        // Reads what is not read yet, which may make links.
        GetSections();
        m_names = std::make_unique<KeywordNames>();
        m_names->links = LinkCounter::Now();
        m_names->endedByEND = endedByEND;
    }
    const bool lacksSection = SectionBegin(section) == End();
    std::optional<KeywordNames::Firsts>& firsts =
        lacksSection ? m_names->deck : m_names->sections.at(static_cast<std::size_t>(section));
    if (!firsts) {
        firsts.emplace();
        const KeywordIterator end = SectionEnd(section);
        KeywordIterator position = lacksSection ? Begin() : SectionBegin(section);
        for (; position != end && *position != nullptr; ++position) {
            firsts->try_emplace(position->GetName(), *position);
        }
    }
    const auto found = firsts->find(name);
    return found != firsts->end() ? found->second : nullptr;
}

} // namespace Tarn::Fjel::Core::DeckManager
