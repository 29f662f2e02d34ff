#include "files/KeywordGDFILE.h"

#include "files/ExportedFileMap.h"
#include "keywords/TagMgrForKeyword.h"
#include "text/KeywordFileReader.h"
#include <tarn/keywords/DataAccessUtils.h>
#include <tarn/service/FileName.h>
#include <tarn/service/FileUtils.h>

namespace Tarn::Fjel::Core::DeckManager {

KeywordGDFILE::KeywordGDFILE(const Keywords::IKeywordSyntax& syntax, bool variablesAllowed, IKeywordOwner* owner,
                             std::shared_ptr<KeywordFileReader> reader, long long position, long long size,
                             std::string_view name, const KeywordMarks* marks)
    : FileReferencingKeyword(syntax, variablesAllowed, owner, std::move(reader), position, size, name, marks)
{
}

KeywordGDFILE::~KeywordGDFILE() = default;

ITagMgr& KeywordGDFILE::GetTagMgr() const
{
    if (!m_tagMgr) m_tagMgr = std::make_unique<TagMgrForKeyword>(*this);
    return *m_tagMgr;
}

std::vector<Service::FileName> KeywordGDFILE::GridFiles(const Context& context) const
{
    std::vector<Service::FileName> files;
    const Service::FileName name = NamedFile(context);
    if (!name.IsSet() || !name.IsComplete()) return files;
    if (!name.GetExtension().empty() && name.IsFile()) files.push_back(name);
    const std::string expression = "^" + Service::FileUtils::EscapeExpression(name.GetFileName()) + "\\.F?E?GRID$";
    for (const std::string& match : name.GetDirectory().FindFilesByExpression(expression))
        files.emplace_back(match);
    return files;
}

std::optional<std::string> KeywordGDFILE::NameInCopy(const Service::Directory& directory, const Context& context,
                                                     ExportedFileMap& fileMap) const
{
    const Service::FileName name = NamedFile(context);
    if (!name.IsSet()) return std::nullopt;
    const std::vector<Service::FileName> files = GridFiles(context);
    if (files.empty()) fileMap.NoteMissing(*this, name);
    return TakeAlong(files, name.GetFileName(), directory, fileMap);
}

std::optional<std::string> KeywordGDFILE::NameIn(const Keywords::IKeywordData* data) const
{
    return Keywords::DataAccessUtils::GetGDFILEName(data);
}

void KeywordGDFILE::PutName(Keywords::IKeywordData& data, const std::string& name) const
{
    Keywords::DataAccessUtils::SetGDFILEName(&data, name);
}

} // namespace Tarn::Fjel::Core::DeckManager
