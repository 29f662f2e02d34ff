#pragma once

#include <filesystem>

namespace Benchmarks {

struct RemovalResult
{
    double seconds = 0;
    double fewSeconds = 0; ///< of the fewer keywords
};

/// Removes a range of so many keywords in one go, in memory: median of `repeats`, beside a range of fewer. The decks
/// are made in `folder`, and removed. Throws `std::runtime_error` when a deck can't be written or keywords are left.
RemovalResult MeasureRemoval(const std::filesystem::path& folder, int keywords, int fewer, int repeats);

} // namespace Benchmarks
