#pragma once

#include <algorithm>
#include <chrono>
#include <vector>

namespace Benchmarks {

/// The wall-clock seconds that `work` takes.
template <class Work>
double Seconds(const Work& work)
{
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

/// REQUIRES: not empty.
inline double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace Benchmarks
