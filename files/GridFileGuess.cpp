#include "files/GridFileGuess.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/filesystem/exception.hpp>

#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <tarn/keywords/DataAccessUtils.h>
#include <tarn/service/FileUtils.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::DataAccessUtils;

namespace {

struct GridKeyword
{
    std::string_view name;
    std::string_view extensionPattern;
    std::optional<std::string> (*getName)(const Keywords::IKeywordData*);
};

constexpr GridKeyword s_gridKeywords[] = {
    {"GDFILE", "F?E?GRID", &DataAccessUtils::GetGDFILEName},
    {"ORDGRID", "OPF", &DataAccessUtils::GetORDGRIDName},
};

/// The file that a value stands for; not set when that can't be told.
Service::FileName FileOf(const std::string& value, const Service::Directory& folder, std::string_view extensionPattern)
{
    Service::FileName name;
    try {
        name = Service::FileName(value);
    } catch (const boost::filesystem::filesystem_error&) {
        return {};
    }
    name.MakeComplete(folder);
    if (name.GetExtension().empty() && name.IsComplete()) {
        const std::string expression = "^" + Service::FileUtils::EscapeExpression(name.GetRootName()) + "\\." +
                                       std::string(extensionPattern) + "$";
        const std::vector<std::string> matches = name.GetDirectory().FindFilesByPattern(expression);
        if (!matches.empty()) name.SetFileName(matches.front());
    }
    return name.GetExtension().empty() || !name.IsComplete() ? Service::FileName() : name;
}

} // namespace

Service::FileName GridFileGuess::Find(const IDeckKeywords& keywords)
{
    for (const GridKeyword& grid : s_gridKeywords) {
        for (KeywordIterator position = keywords.Begin(); position != keywords.End(); ++position) {
            if (*position == nullptr) break;
            if (position->GetName() != grid.name) continue;
            const std::optional<std::string> value = grid.getName(keywords.GetKeywordData(*position));
            if (!value) continue;
            Service::FileName name =
                FileOf(*value, keywords.GetDataFile()->GetFileName().GetDirectory(), grid.extensionPattern);
            if (name.IsSet()) return name;
        }
    }
    return {};
}

} // namespace Tarn::Fjel::Core::DeckManager
