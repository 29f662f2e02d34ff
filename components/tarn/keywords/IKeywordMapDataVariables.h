#pragma once

#include <list>
#include <string>

#include <tarn/keywords/IKeywordDataVariables.h>
#include <tarn/keywords/VariablesString.h>

namespace Tarn::Fjel::Core::Keywords {

/// The entries of a map that hold a variable reference in place of a value.
class IKeywordMapDataVariables : public IKeywordDataVariables
{
public:
    /// The names, ascending byte by byte. Each call makes the list anew.
    virtual const std::list<std::string>& GetVariableKeys() const = 0;

    /// The text under that name; throws KeywordException where there is none.
    virtual const VariablesString& GetVariable(const std::string& key) const = 0;
};

} // namespace Tarn::Fjel::Core::Keywords
