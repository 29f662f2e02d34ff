#pragma once

#include "files/FileReferencingKeyword.h"

namespace Tarn::Fjel::Core::DeckManager {

/// ORDGRID: names an auxiliary grid file of the modelling application.
class KeywordORDGRID : public FileReferencingKeyword
{
public:
    KeywordORDGRID(const Keywords::IKeywordSyntax& syntax, bool variablesAllowed, IKeywordOwner* owner,
                   std::shared_ptr<KeywordFileReader> reader, long long position, long long size, std::string_view name,
                   const KeywordMarks* marks);
    ~KeywordORDGRID() override;

    ITagMgr& GetTagMgr() const override;
    bool HasTagMgr() const override { return m_tagMgr != nullptr; }

private:
    mutable std::unique_ptr<ITagMgr> m_tagMgr; ///< made on first use
};

} // namespace Tarn::Fjel::Core::DeckManager
