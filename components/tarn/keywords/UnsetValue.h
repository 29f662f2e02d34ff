#pragma once

#include <limits>

namespace Tarn::Fjel::Core::Keywords {

/// What a value of each kind holds while it is unset. Strings have a flag of their own instead.
/// A value that equals its sentinel can't be told from an unset one.
struct UnsetValue
{
    static constexpr signed char YesNo = -1;
    static constexpr int Option = std::numeric_limits<int>::min();
    static constexpr int Integer = std::numeric_limits<int>::min();
    static constexpr int MapEntry = std::numeric_limits<int>::min();
    static constexpr double Real = std::numeric_limits<double>::min(); ///< 2.2250738585072014e-308
};

} // namespace Tarn::Fjel::Core::Keywords
