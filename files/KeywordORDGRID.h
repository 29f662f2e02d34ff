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

    std::optional<std::string> NameInCopy(const Service::Directory& directory, const Context& context,
                                          ExportedFileMap& fileMap) const override;
    /// The file that the keyword stands for; none when it isn't there.
    std::vector<Service::FileName> GridFiles(const Context& context) const;

protected:
    std::optional<std::string> NameIn(const Keywords::IKeywordData* data) const override;
    void PutName(Keywords::IKeywordData& data, const std::string& name) const override;

private:
    mutable std::unique_ptr<ITagMgr> m_tagMgr; ///< made on first use
};

} // namespace Tarn::Fjel::Core::DeckManager
