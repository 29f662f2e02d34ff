#pragma once

#include "keywords/Keyword.h"

namespace Tarn::Fjel::Core::DeckManager {

/// The class of all ordinary keywords.
class KeywordGeneric : public Keyword
{
public:
    KeywordGeneric(const Keywords::IKeywordSyntax& syntax, bool variablesAllowed, IKeywordOwner* owner,
                   std::shared_ptr<KeywordFileReader> reader, long long position, long long size, std::string_view name,
                   const KeywordMarks* marks);
    ~KeywordGeneric() override;

    ITagMgr& GetTagMgr() const override;
    bool HasTagMgr() const override { return m_tagMgr != nullptr; }

private:
    mutable std::unique_ptr<ITagMgr> m_tagMgr; ///< made on first use
};

} // namespace Tarn::Fjel::Core::DeckManager
