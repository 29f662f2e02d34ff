#pragma once

#include <list>

#include <tarn/keywords/IKeywordDataVariables.h>
#include <tarn/keywords/VariablesString.h>

namespace Tarn::Fjel::Core::Keywords {

/// The elements of a list that hold a variable reference in place of a value.
class IKeywordListDataVariables : public IKeywordDataVariables
{
public:
    /// The positions, ascending. Each call makes the list anew.
    virtual const std::list<int>& GetVariableIndices() const = 0;

    /// The text at that position; throws KeywordException where there is none.
    virtual const VariablesString& GetVariable(int index) const = 0;
};

} // namespace Tarn::Fjel::Core::Keywords
