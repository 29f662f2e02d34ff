#include "files/KeywordORDGRID.h"

#include "files/ExportedFileMap.h"
#include "keywords/TagMgrForKeyword.h"
#include "text/KeywordFileReader.h"
#include <tarn/keywords/DataAccessUtils.h>
#include <tarn/service/FileName.h>

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

std::vector<Service::FileName> KeywordORDGRID::GridFiles(const Context& context) const
{
    const Service::FileName name = NamedFile(context);
    if (!name.IsSet() || !name.IsComplete() || !name.IsFile()) return {};
    return {name};
}

std::optional<std::string> KeywordORDGRID::NameInCopy(const Service::Directory& directory, const Context& context,
                                                      ExportedFileMap& fileMap) const
{
    const Service::FileName name = NamedFile(context);
    if (!name.IsSet()) return std::nullopt;
    const std::vector<Service::FileName> files = GridFiles(context);
    if (files.empty()) fileMap.NoteMissing(*this, name);
    return TakeAlong(files, name.GetFileName(), directory, fileMap);
}

std::optional<std::string> KeywordORDGRID::NameIn(const Keywords::IKeywordData* data) const
{
    return Keywords::DataAccessUtils::GetORDGRIDName(data);
}

void KeywordORDGRID::PutName(Keywords::IKeywordData& data, const std::string& name) const
{
    Keywords::DataAccessUtils::SetORDGRIDName(&data, name);
}

} // namespace Tarn::Fjel::Core::DeckManager
