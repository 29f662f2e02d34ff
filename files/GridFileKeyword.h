#pragma once

#include <memory>
#include <string>
#include <vector>

#include "files/FileReferencingKeyword.h"

namespace Tarn::Fjel::Core::DeckManager {

/// A keyword that names a grid file, which is no file of keywords.
class GridFileKeyword : public FileReferencingKeyword
{
public:
    GridFileKeyword(const Keywords::IKeywordSyntax& syntax, bool variablesAllowed, IKeywordOwner* owner,
                    std::shared_ptr<KeywordFileReader> reader, long long position, long long size,
                    std::string_view name, const KeywordMarks* marks);
    ~GridFileKeyword() override;

    ITagMgr& GetTagMgr() const override;
    bool HasTagMgr() const override { return m_tagMgr != nullptr; }

    std::optional<std::string> NameInCopy(const Service::Directory& directory, const Context& context,
                                          ExportedFileMap& fileMap) const override;
    /// The files that the keyword stands for; none when they aren't there.
    virtual std::vector<Service::FileName> GridFiles(const Context& context) const = 0;

private:
    /// Lets the files come along, under their own leaf names, or with a number behind the root of each where another
    /// file has taken one of these. Returns what the leaf `leaf` becomes by that.
    static std::string TakeAlong(const std::vector<Service::FileName>& files, const std::string& leaf,
                                 const Service::Directory& directory, ExportedFileMap& fileMap);

    mutable std::unique_ptr<ITagMgr> m_tagMgr; ///< made on first use
};

} // namespace Tarn::Fjel::Core::DeckManager
