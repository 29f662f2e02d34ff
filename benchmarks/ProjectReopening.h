#pragma once

#include <filesystem>

namespace Benchmarks {

struct ReopeningResult
{
    double scanSeconds = 0;
    double cachedSeconds = 0;
    long long keywords = 0;
    double bytesPerKeyword = 0; ///< of the cache file, without the names
};

/// Opens a deck in the project of its own folder and walks the names of its keywords: median of `repeats` with the
/// cache, each with a new manager, beside the same by a scan. Throws `std::runtime_error` when the deck can't be opened
/// or nothing was cached. Leaves nothing behind.
ReopeningResult MeasureReopening(const std::filesystem::path& deckFile, bool binary, int repeats);

} // namespace Benchmarks
