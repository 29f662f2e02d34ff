#include "keywords/TagMgrForKeyword.h"

#include <algorithm>

#include "keywords/IKeywordOwner.h"
#include "keywords/Keyword.h"
#include <deckmanager/Environment.h>

namespace Tarn::Fjel::Core::DeckManager {

TagMgrForKeyword::TagMgrForKeyword(const Keyword& keyword) : m_keyword(keyword), m_tagged(keyword.ReadTag()) {}

bool TagMgrForKeyword::SetTag(bool tagged)
{
    const bool before = m_tagged;
    if (tagged != before) {
        if (!m_changed) m_saved = before;
        m_changed = true;
        m_tagged = tagged;
    }
    return before;
}

bool TagMgrForKeyword::IsFileTagged() const
{
    const IKeywordOwner* owner = m_keyword.Owner();
    return owner != nullptr && owner->IsFileTagged();
}

void TagMgrForKeyword::RevertTag()
{
    if (!m_changed) return;
    m_tagged = m_saved;
    m_changed = false;
}

void TagMgrForKeyword::WriteTag(std::string& keywordLine) const
{
    constexpr std::size_t tagColumn = 37;
    const Environment& environment = Environment::Instance();
    if (!m_tagged || !environment.WriteGeneratedTags()) return;
    keywordLine.resize(std::max(keywordLine.size() + (keywordLine.size() < tagColumn ? 0 : 1), tagColumn), ' ');
    keywordLine += environment.GetKeywordGeneratedTag();
}

} // namespace Tarn::Fjel::Core::DeckManager
