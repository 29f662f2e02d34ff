#pragma once

namespace Tarn::Fjel::Core::Keywords {

/// The variable references of one data object; a dynamic_cast tells of which kind.
class IKeywordDataVariables
{
public:
    virtual ~IKeywordDataVariables() = default;
};

} // namespace Tarn::Fjel::Core::Keywords
