#pragma once

#include <tarn/keywords/IKeywordDataVariables.h>

namespace Tarn::Fjel::Core::Keywords {

class IKeywordData;

/// The variable references of one keyword's data tree.
class IKeywordVariables
{
public:
    virtual ~IKeywordVariables() = default;

    /// The references of that container; null if it holds none.
    virtual IKeywordDataVariables* GetDataVariables(const IKeywordData* data) const = 0;
};

} // namespace Tarn::Fjel::Core::Keywords
