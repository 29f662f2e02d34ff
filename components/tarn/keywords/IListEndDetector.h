#pragma once

#include <string_view>

namespace Tarn::Fjel::Core::Keywords {

/// Tells by its next token where a list ends that has neither a size nor a terminator of its own.
class IListEndDetector
{
public:
    virtual ~IListEndDetector() = default;

    /// The list ends ahead of this token. consume then says whether the token belongs to the list and is to be taken;
    /// it is set in either case.
    virtual bool IsEnd(std::string_view token, bool& consume) const = 0;
};

} // namespace Tarn::Fjel::Core::Keywords
