#include <deckmanager/KeywordIdEqual.h>
#include <deckmanager/KeywordNameEqual.h>

#include "deck/Anchors.h"
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/IKeyword.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordIdentity.h>
#include <tarn/keywords/KeywordKind.h>

namespace Tarn::Fjel::Core::DeckManager {

bool IsAnchor(const IKeyword& keyword)
{
    switch (keyword.GetSyntax()->GetKind()) {
    case Keywords::KeywordKind::Section:
    case Keywords::KeywordKind::End:
    case Keywords::KeywordKind::EndInc:
        return true;
    default:
        return keyword.IsGenerated();
    }
}

bool KeywordNameEqual::operator()(const IKeyword* keyword) const
{
    return keyword->GetName() == m_name;
}

KeywordIdEqual::KeywordIdEqual(const IDeckKeywords& keywords, const std::string& name,
                               const Keywords::IKeywordData* data, bool generatedOnly)
    : m_keywords(keywords), m_name(name), m_data(data), m_generatedOnly(generatedOnly)
{
}

KeywordIdEqual::KeywordIdEqual(const KeywordIdEqual& other) = default;

KeywordIdEqual::~KeywordIdEqual() = default;

bool KeywordIdEqual::operator()(const IKeyword* keyword) const
{
    // The name tells most keywords off, and costs less than a tag.
    if (keyword->GetName() != m_name) return false;
    if (m_generatedOnly && !IsAnchor(*keyword)) return false;
    if (m_data == nullptr || !m_data->GetSyntax()->HasIdentity()) return true;
    if (!m_identity) m_identity = std::make_shared<Keywords::KeywordIdentity>(m_data);
    return m_identity->Compare(m_keywords.GetKeywordData(keyword));
}

} // namespace Tarn::Fjel::Core::DeckManager
