#pragma once

#include "files/FileReferencingKeyword.h"

namespace Tarn::Fjel::Core::DeckManager {

/// GDFILE: names a grid file.
class KeywordGDFILE : public FileReferencingKeyword
{
public:
    KeywordGDFILE(const Keywords::IKeywordSyntax& syntax, bool variablesAllowed, IKeywordOwner* owner,
                  std::shared_ptr<KeywordFileReader> reader, long long position, long long size, std::string_view name,
                  const KeywordMarks* marks);
    ~KeywordGDFILE() override;

    ITagMgr& GetTagMgr() const override;
    bool HasTagMgr() const override { return m_tagMgr != nullptr; }

    std::optional<std::string> NameInCopy(const Service::Directory& directory, const Context& context,
                                          ExportedFileMap& fileMap) const override;
    /// The files that the keyword stands for: that of its name, and those of its name with the extension of a grid
    /// file.
    std::vector<Service::FileName> GridFiles(const Context& context) const;

protected:
    std::optional<std::string> NameIn(const Keywords::IKeywordData* data) const override;
    void PutName(Keywords::IKeywordData& data, const std::string& name) const override;

private:
    mutable std::unique_ptr<ITagMgr> m_tagMgr; ///< made on first use
};

} // namespace Tarn::Fjel::Core::DeckManager
