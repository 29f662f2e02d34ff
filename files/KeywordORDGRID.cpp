#include "files/KeywordORDGRID.h"

#include "keywords/TagMgrForKeyword.h"
#include "text/KeywordFileReader.h"

namespace Tarn::Fjel::Core::DeckManager {

KeywordORDGRID::KeywordORDGRID(const Keywords::IKeywordSyntax& syntax, bool variablesAllowed, IKeywordOwner* owner,
                               std::shared_ptr<KeywordFileReader> reader, long long position, long long size,
                               std::string_view name, const KeywordMarks* marks)
    : FileReferencingKeyword(syntax, variablesAllowed, owner, std::move(reader), position, size, name, marks)
{
}

KeywordORDGRID::~KeywordORDGRID() = default;

ITagMgr& KeywordORDGRID::GetTagMgr() const
{
    if (!m_tagMgr) m_tagMgr = std::make_unique<TagMgrForKeyword>(*this);
    return *m_tagMgr;
}

} // namespace Tarn::Fjel::Core::DeckManager
