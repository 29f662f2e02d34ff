#pragma once

#include <string>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordSyntax;
}

namespace Tarn::Fjel::Core::DeckManager {

/// Makes text that a user starts from. Touches no deck.
class KeywordFormatter
{
public:
    /// The template of a new keyword: what to do in comment lines, the name, and the data with everything unset.
    /// `name`: blank for the syntax's own.
    static std::string CreationTemplate(const Keywords::IKeywordSyntax& syntax, const std::string& name);
};

} // namespace Tarn::Fjel::Core::DeckManager
