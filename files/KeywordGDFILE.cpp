#include "files/KeywordGDFILE.h"

#include <tarn/keywords/DataAccessUtils.h>
#include <tarn/service/FileName.h>
#include <tarn/service/FileUtils.h>

namespace Tarn::Fjel::Core::DeckManager {

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

std::optional<std::string> KeywordGDFILE::NameIn(const Keywords::IKeywordData* data) const
{
    return Keywords::DataAccessUtils::GetGDFILEName(data);
}

void KeywordGDFILE::PutName(Keywords::IKeywordData& data, const std::string& name) const
{
    Keywords::DataAccessUtils::SetGDFILEName(&data, name);
}

} // namespace Tarn::Fjel::Core::DeckManager
