#include "merge/IncludeMap.h"

#include <optional>
#include <string>

#include <tarn/keywords/DataAccessUtils.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordDataFactory.h>
#include <tarn/keywords/KeywordKind.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::DataAccessUtils;

std::unique_ptr<Keywords::IKeywordData> MapIncludeData(const Keywords::IKeywordSyntax& syntax,
                                                       const Keywords::IKeywordData* data, const IncludeNames& names)
{
    if (data == nullptr || syntax.GetKind() != Keywords::KeywordKind::Include) return nullptr;
    const std::optional<std::string> name = DataAccessUtils::GetINCLUDEFileName(data);
    if (!name) return nullptr;
    auto entry = names.find(*name);
    if (entry == names.end()) {
        const bool isQuoted = name->size() >= 2 && name->front() == '\'' && name->back() == '\'';
        entry = names.find(isQuoted ? name->substr(1, name->size() - 2) : "'" + *name + "'");
    }
    if (entry == names.end()) return nullptr;
    std::unique_ptr<Keywords::IKeywordData> mapped = Keywords::KeywordDataFactory::Instance().ConstructSafely(syntax);
    std::string to = entry->second;
    // A tree holds a name without its quotes.
    if (to.size() >= 2 && to.front() == '\'' && to.back() == '\'') to = to.substr(1, to.size() - 2);
    DataAccessUtils::SetINCLUDEFileName(mapped.get(), to);
    return mapped;
}

} // namespace Tarn::Fjel::Core::DeckManager
