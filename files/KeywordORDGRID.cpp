#include "files/KeywordORDGRID.h"

#include <tarn/keywords/DataAccessUtils.h>
#include <tarn/service/FileName.h>

namespace Tarn::Fjel::Core::DeckManager {

std::vector<Service::FileName> KeywordORDGRID::GridFiles(const Context& context) const
{
    const Service::FileName name = NamedFile(context);
    if (!name.IsSet() || !name.IsComplete() || !name.IsFile()) return {};
    return {name};
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
