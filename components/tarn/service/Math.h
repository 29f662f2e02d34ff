#pragma once

#include <concepts>

namespace Tarn::Fjel::Core::Service {

/// Arithmetic helpers.
class Math
{
public:
    /// The number of decimal digits of value, without its sign; 1 for 0.
    template <std::integral Integer>
    static constexpr int NumOfDigits(Integer value)
    {
        int digits = 1;
        while ((value = static_cast<Integer>(value / 10)) != 0)
            ++digits;
        return digits;
    }
};

} // namespace Tarn::Fjel::Core::Service
