#include "keywords/KeywordGeneric.h"

#include "keywords/TagMgrForKeyword.h"
#include "text/KeywordFileReader.h"

namespace Tarn::Fjel::Core::DeckManager {

KeywordGeneric::KeywordGeneric(const Keywords::IKeywordSyntax& syntax, bool variablesAllowed, IKeywordOwner* owner,
                               std::shared_ptr<KeywordFileReader> reader, long long position, long long size,
                               std::string_view name, const KeywordMarks* marks)
    : Keyword(syntax, variablesAllowed, owner, std::move(reader), position, size, name, marks)
{
}

KeywordGeneric::~KeywordGeneric() = default;

ITagMgr& KeywordGeneric::GetTagMgr() const
{
    if (!m_tagMgr) m_tagMgr = std::make_unique<TagMgrForKeyword>(*this);
    return *m_tagMgr;
}

} // namespace Tarn::Fjel::Core::DeckManager
