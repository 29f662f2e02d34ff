#include <string>
#include <string_view>
#include <vector>

#include <deckmanager/Environment.h>
#include <deckmanager/KeywordFormatter.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>

#include "command/Verbs.h"
#include "output/Json.h"
#include "output/Nearest.h"
#include "session/DeckSession.h"

namespace Deckman {

namespace Keywords = Tarn::Fjel::Core::Keywords;

ExitStatus RunTemplate(Messages&, const Options& options, Output& out)
{
    const Keywords::IKeywordSyntaxTable& table = *DeckManager::Environment::Instance().GetSyntaxTable();
    const Keywords::IKeywordSyntax* syntax = nullptr;
    for (const Keywords::IKeywordSyntax* candidate : table.FindSyntaxes(options.name)) {
        if (options.simulator && !candidate->IsNameValidForSimulator(*options.simulator, options.name)) continue;
        syntax = candidate;
        break;
    }
    if (syntax == nullptr) {
        throw Failure(NotThere,
                      fmt::format("The catalogue knows no keyword {}{}.{}", options.name,
                                  options.simulator ? " for that simulator" : "", NearestKeywordHint(options.name)));
    }
    const std::string text = DeckManager::KeywordFormatter::CreationTemplate(*syntax, options.name);
    if (options.json) {
        out.Append("{\"name\":");
        AppendJsonString(out, options.name);
        out.Append(",\"text\":");
        AppendJsonString(out, text);
        out.Append("}\n");
    } else {
        out.Append(text);
        if (!text.ends_with('\n')) out.Append('\n');
    }
    return Done;
}

} // namespace Deckman
