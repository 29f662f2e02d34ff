#pragma once

#include <string>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
class IKeywordVariables;
} // namespace Tarn::Fjel::Core::Keywords

namespace Tarn::Fjel::Core::DeckManager {

/// What a host implements to replace the variable references of a keyword by values.
class IKeywordVariablesResolver
{
public:
    virtual ~IKeywordVariablesResolver() = default;

    /// `data` is the root of the keyword's data tree, `variables` tells which positions of which of its objects hold a
    /// reference, and with what text. `text` is a copy of the keyword's data text, which the host rewrites in place.
    /// True when it did; false leaves the keyword as it is. Neither pointer may be kept.
    virtual bool Resolve(const Keywords::IKeywordData* data, const Keywords::IKeywordVariables* variables,
                         std::string& text) = 0;
};

} // namespace Tarn::Fjel::Core::DeckManager
