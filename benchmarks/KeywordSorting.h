#pragma once

#include <filesystem>

namespace Benchmarks {

struct SortingResult
{
    double seconds = 0;
    double halfSeconds = 0; ///< of a deck with half the keywords
    double scanSeconds = 0; ///< of the whole deck
};

/// Sorts a deck of so many keywords, of which every second one must go ahead of all others: median of `repeats`, beside
/// the same of half the keywords, and the scan. The decks are made in `folder`, and removed. Throws
/// `std::runtime_error` when a deck can't be written or isn't sorted.
SortingResult MeasureSorting(const std::filesystem::path& folder, int keywords, int repeats);

} // namespace Benchmarks
